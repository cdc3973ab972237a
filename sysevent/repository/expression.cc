// CExpression: setting, re-evaluating and observing the formula of a
// published expression.
#include "sysevent/repository/expression.h"

#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "host/runtime/log.h"
#include "sysevent/language/parser.h"
#include "sysevent/repository/name_lookup.h"

namespace VX::SysEvent {

namespace {

// Clears a flag when the scope ends.
class BusyScope {
public:
    explicit BusyScope(bool& flag) : m_flag(flag) { m_flag = true; }
    ~BusyScope() { m_flag = false; }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

private:
    bool& m_flag;
};

}  // namespace

CExpression::CExpression(const String& context, const String& name)
    : CInherit(FULL_NAME(context, name), String()),
      Reevaluable(static_cast<IExpression*>(this)),
      m_context(context) {}

String CExpression::FULL_NAME(const String& context, const String& name) {
    return context.isEmpty() ? name : context + "." + name;
}

XCode CExpression::addExpressionObserver(IExpressionObserver* observer, bool notifyNow) {
    m_expressionObservers.add(observer);
    if (notifyNow) {
        ObserverEvent<IExpression> event(VXPPtr<IExpression>(static_cast<IExpression*>(this)));
        observer->onExpressionChanged(event);
    }
    return XCode();
}

void CExpression::removeExpressionObserver(IExpressionObserver* observer) {
    m_expressionObservers.remove(observer);
}

String CExpression::getContext() const {
    return m_context.get();
}

String CExpression::description() const {
    if (!m_descriptionDerived) return m_description.get();
    // As "%s := %s" would print it (up to a NUL in either), without the
    // formatter.
    String text(name().c_str());
    text += " := ";
    text += m_text.c_str();
    return text;
}

String CExpression::getExpression() const {
    return description();
}

String CExpression::getDescription() const {
    return description();
}

void CExpression::updateDescription(const String& description) {
    CConstant::updateDescription(description);
    m_descriptionDerived = false;
}

String CExpression::getType() const {
    return "expression";
}

XCode CExpression::bind(const String& text) {
    ReevaluationIndex& index = *ReevaluationIndex::INSTANCE();
    VXLWPtr<Node> root;
    ReevaluationIndex::Recording recording;
    const bool reparse = text != m_text || isStale() || !m_target;
    if (reparse) {
        RepositoryNameResolver names;
        Parser parser(&names);
        XCode rc = parser.parse(m_context, text);
        if (rc.isErr()) return rc;
        recording = std::move(names.recording());
        if (parser.getRoots().empty() || !parser.getRoots()[0])
            return XCode(XCode::GENERIC_FAILURE);
        root = parser.getRoots()[0];
    } else {
        root = m_target;
    }
    // The graph in force is bound again if the name was dropped meanwhile.
    if (XCode rc = bindName(root.get()); rc.isErr()) return rc;
    if (reparse) {
        // Without a context a plain name always resolves to its own proxy
        // node, whether or not an object has it: its coming and going moves
        // no graph, so only database names (made again on the fly when
        // looked up) and patterns are dependencies.
        if (m_context.isEmpty()) {
            std::erase_if(recording.names, [](const String& n) { return !n.startsWith("db."); });
        }
        index.setDependencies(*this, recording);
    }
    return XCode();
}

XCode CExpression::setExpression(const String& text) {
    if (text.isEmpty()) return XCode();
    SYSEVENT_LOG_AT_VERBOSITY(3, "[%s] Update expression: %s", name().c_str(), text.c_str());
    XCode rc;
    {
        BusyScope busy(m_busy);
        rc = bind(text);
    }
    if (rc.isErr()) {
        SYSEVENT_LOG(4, "[%s] Updating expression failed: %s", name().c_str(),
                     rc.toString().c_str());
        return rc;
    }
    m_text = text;
    m_description.clear();
    m_descriptionDerived = true;
    if (!m_expressionObservers.empty()) {
        ObserverEvent<IExpression> event(VXPPtr<IExpression>(static_cast<IExpression*>(this)));
        m_expressionObservers.notify([&event](IExpressionObserver* observer) {
            ObserverEvent<IExpression> copy = event;
            observer->onExpressionChanged(copy);
        });
    }
    return XCode();
}

XCode CExpression::reevaluateExpression() {
    // A re-evaluation reached from inside this object's own parse (a
    // database variable made on the fly) is the parse already running.
    if (m_busy) return XCode();
    if (m_text.isEmpty()) {
        ReevaluationIndex::INSTANCE()->clearStale(*this);
        return XCode();
    }
    return setExpression(m_text);
}

void CExpression::dropNode() {
    CConstant::dropNode();
    // The next re-evaluation binds the name to the formula again.
    if (!m_text.isEmpty()) ReevaluationIndex::INSTANCE()->markStale(*this);
}

InfoContainer& CExpression::getInfo(InfoContainer& info, unsigned depthLimit, unsigned depth,
                                    unsigned columnLimit, unsigned column,
                                    const String& prefix) const {
    addInfoRows(info, depthLimit, depth, columnLimit, column, prefix + "Expression",
                {{"Context", m_context},
                 {"Expression", description()},
                 {"Value", proxy()->getLastEvent().value.toString()}});
    return info;
}

void CExpression::callDtor() {
    {
        VXAutoLock held(LOCK());
        ReevaluationIndex::INSTANCE()->forget(*this);
    }
    CConstant::callDtor();
}

}  // namespace VX::SysEvent
