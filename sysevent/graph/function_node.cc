// FunctionNode: graph edits with their cycle check, the two phases of a
// propagation as seen by one node (shallBeUpdated, update), lazy evaluation
// (requestUpdate) and recompute with its error and time screening.
#include "sysevent/graph/function_node.h"

#include <unordered_set>

#include "host/runtime/clock.h"
#include "host/runtime/log.h"
#include "host/runtime/time.h"

namespace VX::SysEvent {

namespace {

// Sum of m_pendingUpdates over all function nodes; guarded by the engine lock.
uint64_t s_pendingUpdatesInGraph = 0;

// The value a failing compute() leaves in the node: the value of the subtype
// an engine code names (an error for errToXCode of an error, but any subtype
// counts), "#ERR!" for any other code and for an engine code beyond the
// subtypes, which has no value to stand for.
Value errorValueOf(const XCode& code) {
    const uint32_t c = code.getValue();
    if ((c & 0xFF000000u) == (ENGINE_ERROR_BASE & 0xFF000000u)) {
        const uint32_t st = c & 0x00FFFFFFu;
        if (st <= DST_ERR_GENERIC) return Value(static_cast<DataSubType>(st));
    }
    return Value(DST_ERR_GENERIC);
}

// The formatting of recompute's trace output lives out of line: recompute
// recurses once per dirty level of a lazily read chain, and the temporaries
// of the formatting would otherwise enlarge every one of those stack frames.
[[gnu::noinline]] void appendArgumentText(String& text, size_t index, const Value& v) {
    if (index) text += ", ";
    text += v.toString();
}

[[gnu::noinline, gnu::cold]] void traceRecompute(const FunctionNode& node,
                                                 const String& argumentText, const Event& result) {
    SYSEVENT_LOG(3, "[%s] %s(%s) -> %s (during %s on %s)", node.getLogName().c_str(),
                 node.getFunctionName().c_str(), argumentText.c_str(),
                 result.value.toString().c_str(),
                 Value(result.end - result.start, DST_REL_TIME).toString().c_str(),
                 VX::Clock(result.end, 0).toString(VX::Clock::FORMAT_LOG).c_str());
}

[[gnu::noinline]] void setErrorValue(Value& v, const Value& error) {
    v = error;
}

[[gnu::noinline]] void setErrorValue(Value& v, DataSubType st) {
    v = Value(st);
}

}  // namespace

[[gnu::noinline]] void FunctionNode::computeInto(Event& result) {
    // Reading an argument may recompute a dirty child, but never this node,
    // so the flag belongs to this compute alone.
    m_argumentMissing = false;
    const XCode rc = compute(result);
    if (m_argumentMissing) {
        m_argumentMissing = false;
        result.value = Value(DST_ERR_VAL);
    } else if (rc.isErr()) {
        result.value = errorValueOf(rc);
    }
}

const Event& FunctionNode::missingArgument() const {
    static const Event s_undefined;
    m_argumentMissing = true;
    return s_undefined;
}

FunctionNode::FunctionNode(const String& functionName, const String& parameterText)
    : Node(String()), m_functionName(functionName), m_parameterText(parameterText) {
    m_name = String::Formatted("%s(%p)", functionName.c_str(), static_cast<const void*>(this));
}

FunctionNode::~FunctionNode() {
    s_pendingUpdatesInGraph -= m_pendingUpdates;
    for (const VXLWPtr<Node>& child : m_children) child->removeParent(this);
    // m_children releases the children now, in argument order.
}

uint64_t FunctionNode::PENDING_UPDATES_IN_GRAPH() {
    return s_pendingUpdatesInGraph;
}

void FunctionNode::addInterest() {
    Node::addInterest();
    requestUpdate();
}

String FunctionNode::getNormalizedExpression() const {
    String text = m_functionName;
    text += '(';
    for (size_t i = 0; i < m_children.size(); ++i) {
        if (i) text += ',';
        text += m_children[i]->getNormalizedExpression();
    }
    text += ')';
    return text;
}

bool FunctionNode::triggerEvent(const Event& e) {
    SYSEVENT_LOG(3, "[%s]   clear dirty flag", getLogName().c_str());
    m_dirty = false;
    return Node::triggerEvent(e);
}

bool FunctionNode::isDescendant(Node* n) const {
    // Reachability over the children's closure. Iterative, and visiting each
    // shared node once: a walk of every path would be exponential in graphs
    // where names are used twice by the next expression up (IF(a>0,a,0)).
    VXVector<const FunctionNode*> toVisit{this};
    std::unordered_set<const FunctionNode*> visited;
    while (!toVisit.empty()) {
        const FunctionNode* f = toVisit.back();
        toVisit.pop_back();
        for (const VXLWPtr<Node>& child : f->m_children) {
            if (child.get() == n) return true;
            const auto* fc = dynamic_cast<const FunctionNode*>(child.get());
            if (fc && !fc->m_children.empty() && visited.insert(fc).second) toVisit.push_back(fc);
        }
    }
    return false;
}

void FunctionNode::requestUpdate() {
    if (!m_dirty) return;
    m_dirty = false;
    recompute(false);
}

XCode FunctionNode::addArgument(Node* child) {
    return addChild(child);
}

XCode FunctionNode::swapArgument(unsigned index, Node* child, VXLWPtr<Node>& oldChild) {
    return swapChild(index, child, oldChild);
}

XCode FunctionNode::verifyArguments() {
    return XCode();
}

bool FunctionNode::forceRecompute() {
    return recompute(true);
}

bool FunctionNode::wouldCloseCycle(Node* child) const {
    // This node lies below `child` only if some path leads up from it, so a
    // node without parents (every node the parser is still building) skips
    // the walk of child's subtree, which would make building a deep
    // expression quadratic.
    return child == this ||
           (!m_parents.empty() && child->isDescendant(const_cast<FunctionNode*>(this)));
}

XCode FunctionNode::addChild(Node* child) {
    if (!child) return XCode(XCode::GENERIC_FAILURE);
    if (wouldCloseCycle(child)) return XCode(XCode::GENERIC_FAILURE, "CIRCULAR REFERENCE");
    m_children.emplace_back(child);
    child->addParent(this);
    m_dirty = true;
    return XCode();
}

XCode FunctionNode::swapChild(unsigned index, Node* child, VXLWPtr<Node>& oldChild) {
    if (index >= m_children.size() || !child) return XCode(XCode::GENERIC_FAILURE);
    oldChild = m_children[index];
    if (wouldCloseCycle(child)) return XCode(XCode::GENERIC_FAILURE, "CIRCULAR REFERENCE");
    oldChild->removeParent(this);
    m_children[index] = child;
    // removeParent dropped every link to this node; the old child keeps one
    // for each other position in which it is still an argument, so that
    // every node has one link per position, also when it replaces itself.
    for (size_t i = 0; i < m_children.size(); ++i)
        if (i != index && m_children[i] == oldChild) oldChild->addParent(this);
    child->addParent(this);
    m_dirty = true;
    return XCode();
}

bool FunctionNode::handlesErrorsManually() const {
    return false;
}

bool FunctionNode::handlesTimeManually() const {
    return true;
}

bool FunctionNode::shallBeUpdated() {
    SYSEVENT_LOG(3, "[%s] Shall be updated?", getLogName().c_str());
    if (m_dirty) return false;
    SYSEVENT_LOG(3, "[%s]   Not dirty", getLogName().c_str());

    if (m_pendingUpdates > 0) {
        // Reached again along another path: our parents were asked already.
        SYSEVENT_LOG(3, "[%s]   yes, we already know", getLogName().c_str());
        ++m_pendingUpdates;
        ++s_pendingUpdatesInGraph;
        SYSEVENT_LOG(3, "[%s]   %u updates pending", getLogName().c_str(), m_pendingUpdates);
        return true;
    }

    bool interested = m_interestCount > 0;
    if (interested)
        SYSEVENT_LOG(3, "[%s]   yes, because there are %u interests", getLogName().c_str(),
                     m_interestCount);
    // Every parent is asked, so that each one counts its pending update or is
    // marked dirty; those that say yes expect an update from us.
    m_updatingParents.clear();
    for (FunctionNode* p : m_parents) {
        if (p->shallBeUpdated()) {
            m_updatingParents.push_back(p);
            SYSEVENT_LOG(3, "[%s]   yes, because a parent is interested", getLogName().c_str());
            interested = true;
        }
    }
    if (!interested) {
        m_dirty = true;
        SYSEVENT_LOG(3, "[%s]   no; marked dirty", getLogName().c_str());
        return false;
    }
    ++m_pendingUpdates;
    ++s_pendingUpdatesInGraph;
    SYSEVENT_LOG(3, "[%s]   %u updates pending", getLogName().c_str(), m_pendingUpdates);
    return true;
}

void FunctionNode::update(bool changed) {
    SYSEVENT_LOG(3, "[%s] update, child value %s changed", getLogName().c_str(),
                 changed ? "has" : "has not");
    --m_pendingUpdates;
    --s_pendingUpdatesInGraph;
    if (changed) ++m_changedUpdates;
    if (m_pendingUpdates > 0) {
        SYSEVENT_LOG(3, "[%s]   no recomputation yet, %u updates pending", getLogName().c_str(),
                     m_pendingUpdates);
        return;
    }

    bool result = false;
    if (m_changedUpdates > 0) {
        SYSEVENT_LOG(3, "[%s]   recomputation required (%u updates with value changes)",
                     getLogName().c_str(), m_changedUpdates);
        m_changedUpdates = 0;
        result = recompute(false);
    } else {
        SYSEVENT_LOG(3, "[%s]   no recomputation required (no update with value change)",
                     getLogName().c_str());
    }
    // Nothing edits this list before it is cleared: the parents' updates run
    // after the first phase is over, and no propagation can start while
    // this one runs.
    for (size_t i = 0; i < m_updatingParents.size(); ++i) m_updatingParents[i]->update(result);
    m_updatingParents.clear();
}

bool FunctionNode::recompute(bool force) {
    Event result;
    const bool manualErrors = handlesErrorsManually();
    const bool manualTime = handlesTimeManually();
    const bool withArgumentText = LOG_ADMITS(1);
    String argumentText;

    for (size_t i = 0; i < m_children.size(); ++i) {
        const Event& e = m_children[i]->getLastEvent();
        if (withArgumentText) appendArgumentText(argumentText, i, e.value);
        if (!manualTime) {
            if (i == 0)
                result.setTime(e);
            else
                result.embraceTime(e);
        }
        // The first error or undefined argument in order decides the result.
        if (!manualErrors && !result.value.isError()) {
            if (e.value.isError())
                setErrorValue(result.value, e.value);
            else if (e.value.getDataType() == DT_UNDEF)
                setErrorValue(result.value, DST_ERR_VAL);
        }
    }
    if (m_children.empty() && !manualTime) result.start = result.end = VX::Time::NOW(1);

    if (!result.value.isError()) computeInto(result);

    if (LOG_ADMITS(3)) traceRecompute(*this, argumentText, result);
    return force ? triggerEvent(result) : storeEvent(result);
}

}  // namespace VX::SysEvent
