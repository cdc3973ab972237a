// ReevaluationIndex: dependencies of formulas on names, and the stale marks
// that name changes leave.
#include "sysevent/repository/reevaluation_index.h"

#include <algorithm>

#include "host/component/driver_repository.h"
#include "host/component/driver_repository_observer.h"
#include "host/runtime/crit.h"
#include "sysevent/language/lexer.h"
#include "sysevent/repository/identifiers.h"

namespace VX::SysEvent {

// Told of every published object with a node ("var/" drivers offering
// INode) that is registered or unregistered.
class ReevaluationIndex::DriverWatch : public DriverRepositoryObserver {
public:
    explicit DriverWatch(ReevaluationIndex& index)
        : DriverRepositoryObserver(&LOCK()), m_index(index) {
        addRef();  // lives for ever, like the index
        DRIVER::ADD_REPOSITORY_OBSERVER("SysEvent::ReevaluationIndex", DID_Variable(), INode::IID(),
                                        DRIVER_NAME_PREFIX, 0, false, false, this);
    }

    XCode onDriverAdded(String& driverName, VXPPtr<IDriverRepository>&, VXPPtr<IDriver>&) override {
        m_index.nameChanged(NAME_OF(driverName));
        return XCode();
    }
    void onDriverRemoved(VXPPtr<IDriverRepository>&, VXPPtr<IDriver>& driver) override {
        m_index.nameChanged(NAME_OF(driver->getDriverName()));
    }

private:
    static String NAME_OF(const String& driverName) {
        static const size_t PREFIX_LENGTH = String(DRIVER_NAME_PREFIX).length();
        return driverName.substring(PREFIX_LENGTH);
    }
    ReevaluationIndex& m_index;
};

Reevaluable::Reevaluable(IExpression* self) : m_self(self) {
    VXAutoLock held(LOCK());
    m_sequence = ReevaluationIndex::INSTANCE()->m_nextSequence++;
}

ReevaluationIndex* ReevaluationIndex::INSTANCE() {
    // Callers hold the engine lock, so only one thread can get here first;
    // the watch registers under that same lock.
    static ReevaluationIndex* const s_instance = new ReevaluationIndex();
    return s_instance;
}

ReevaluationIndex::ReevaluationIndex() : m_watch(new DriverWatch(*this)) {}

void ReevaluationIndex::dropDependencies(Reevaluable& r) {
    if (r.m_names) {
        for (const String& name : *r.m_names) {
            auto it = m_byName.find(name);
            if (it == m_byName.end()) continue;
            VXVector<Reevaluable*>& users = it->second;
            users.erase(std::remove(users.begin(), users.end(), &r), users.end());
            if (users.empty()) m_byName.erase(it);
        }
        r.m_names.reset();
    }
    if (r.m_hasPatterns) {
        std::erase_if(m_patterns, [&r](const PatternUse& use) { return use.user == &r; });
        r.m_hasPatterns = false;
    }
}

void ReevaluationIndex::setDependencies(Reevaluable& r, Recording& recording) {
    dropDependencies(r);
    // The names are r's before any table entry points at r: running out of
    // memory half-way must leave forget() able to find every entry made.
    if (!recording.names.empty()) {
        r.m_names = std::make_unique<VXVector<String>>(std::move(recording.names));
        r.m_names->shrink_to_fit();
        for (const String& name : *r.m_names) m_byName[name].push_back(&r);
    }
    for (const String& pattern : recording.patterns) {
        // A pattern that does not compile matches nothing, now or later.
        if (VXPtr<VXRegEx::Pattern> regex = compile(Lexer::NAME_TO_REGEX(pattern, false))) {
            m_patterns.push_back(PatternUse{regex, &r});
            r.m_hasPatterns = true;
        }
    }
    clearStale(r);
}

void ReevaluationIndex::addPrefixDependency(Reevaluable& r, const String& context) {
    if (VXPtr<VXRegEx::Pattern> regex = compile(Lexer::NAME_TO_REGEX(context, true))) {
        m_patterns.push_back(PatternUse{regex, &r});
        r.m_hasPatterns = true;
    }
}

void ReevaluationIndex::forget(Reevaluable& r) {
    dropDependencies(r);
    clearStale(r);
}

void ReevaluationIndex::markStale(Reevaluable& r) {
    if (r.m_stale) return;
    r.m_stale = true;
    m_stale.emplace(r.m_sequence, &r);
}

void ReevaluationIndex::clearStale(Reevaluable& r) {
    if (!r.m_stale) return;
    r.m_stale = false;
    m_stale.erase(r.m_sequence);
}

void ReevaluationIndex::nameChanged(const String& name) {
    if (auto it = m_byName.find(name); it != m_byName.end()) {
        for (Reevaluable* r : it->second) markStale(*r);
    }
    for (const PatternUse& use : m_patterns) {
        if (!use.user->m_stale && use.regex->match(name)) markStale(*use.user);
    }
}

void ReevaluationIndex::collectStale(VXVector<VXPPtr<IExpression>>& out) const {
    out.clear();
    out.reserve(m_stale.size());
    for (const auto& [sequence, r] : m_stale) {
        // Only published formulas are re-evaluated; one that a client keeps
        // after its removal stays stale until it is set again.
        VXPPtr<IDriver> driver;
        if (r->m_self->queryIf(driver).isErr() || !driver->getDriverRepository()) continue;
        out.push_back(VXPPtr<IExpression>(r->m_self));
    }
}

VXPtr<VXRegEx::Pattern> ReevaluationIndex::compile(const String& regex) {
    auto it = m_compiled.find(regex);
    if (it != m_compiled.end()) return it->second;
    VXPtr<VXRegEx::Pattern> pattern = VXRegEx::COMPILE_EXPRESSION(regex);
    m_compiled.emplace(regex, pattern);
    return pattern;
}

}  // namespace VX::SysEvent
