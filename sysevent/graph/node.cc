// Node: storing events, telling observers, and the outer frame of a
// propagation (collecting the parents that will be updated, then updating
// them). The per-node work of both phases lives in function_node.cc.
#include "sysevent/graph/node.h"

#include <algorithm>
#include <cassert>

#include "host/runtime/clock.h"
#include "host/runtime/crit.h"
#include "host/runtime/log.h"
#include "host/runtime/time.h"
#include "sysevent/graph/expression_repository.h"
#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

bool Node::s_updateInProgress = false;

Node::Node(const String& name) : VX::RefCounted(&LOCK()), m_name(name) {}

Node::Node(const String& name, const Value& value)
    : VX::RefCounted(&LOCK()), m_name(name), m_lastEvent(value) {}

Node::~Node() {
    // Function nodes leave their tables in ~FunctionNode, while their
    // children still give them their key.
    if (m_listings & LISTED_AS_EXPRESSION) ExpressionRepository::INSTANCE()->unlist(this, m_name);
}

void Node::addObserver(NodeObserver* o) {
    m_observers.push_back(o);
}

void Node::removeObserver(NodeObserver* o) {
    m_observers.erase(o);
}

void Node::addInterest() {
    ++m_interestCount;
}

void Node::removeInterest() {
    // Unbalanced removals must not turn into a near-infinite interest.
    if (m_interestCount > 0) --m_interestCount;
}

const String& Node::getName() const {
    return m_name;
}

String Node::getLogName() const {
    return String::Formatted("%s @ %p", getNormalizedExpression().c_str(),
                             static_cast<const void*>(this));
}

String Node::getNormalizedExpression() const {
    return m_name;
}

const Event& Node::getLastEvent() const {
    // Reading is what makes a lazily evaluated node current: the cached event
    // is logically part of the node's value, not of its observable state.
    const_cast<Node*>(this)->requestUpdate();
    return m_lastEvent;
}

bool Node::setValue(const Value& v) {
    return triggerEvent(Event(v));
}

bool Node::triggerEvent(const Event& e) {
    if (!storeEvent(e)) return false;
    if (s_updateInProgress) {
        SYSEVENT_LOG(3, "VALUE SET WHILE UPDATE IN PROGRESS");
        return true;
    }
    s_updateInProgress = true;
    // Running out of memory half-way must not leave the flag set: every
    // later change would then be taken for one made during this propagation
    // and go nowhere.
    struct EndOfUpdate {
        ~EndOfUpdate() { s_updateInProgress = false; }
    } endOfUpdate;
    // Parents that are dirty answer no and stay as they are; unless the
    // questions are traced they are not asked at all, so a change costs
    // nothing for dependents that nobody reads. The collected list is
    // bounded by the clean links.
    const bool traced = LOG_ADMITS(3);
    if (traced || m_cleanParents > 0) {
        VXVector<FunctionNode*> updating;
        updating.reserve(m_cleanParents);
        for (size_t i = 0; i < m_parents.size(); ++i) {
            FunctionNode* p = m_parents[i];
            if (!traced && p->m_dirty) continue;
            if (p->shallBeUpdated()) updating.push_back(p);
        }
        for (FunctionNode* p : updating) p->update(true);
    }
    assert(FunctionNode::PENDING_UPDATES_IN_GRAPH() == 0 &&
           "every update counted in the first phase is delivered in the second");
    return true;
}

bool Node::isDescendant(Node*) const {
    return false;
}

void Node::requestUpdate() {}

bool Node::storeEvent(const Event& e) {
    if (e.value == m_lastEvent.value) return false;
    if (m_observers.empty() && !LOG_ADMITS(3)) {
        // Nobody to tell: no copies of the two values are needed.
        m_lastEvent = e;
        return true;
    }
    // Copies: an observer may read or replace this node's event, and `e` may
    // be this node's own event.
    Value newValue = e.value;
    Value oldValue = std::move(m_lastEvent.value);
    SYSEVENT_LOG(3, "[%s] Update: %s -> %s (during %s on %s)", getLogName().c_str(),
                 oldValue.toString().c_str(), newValue.toString().c_str(),
                 Value(e.end - e.start, DST_REL_TIME).toString().c_str(),
                 VX::Clock(e.end, 0).toString(VX::Clock::FORMAT_LOG).c_str());
    m_lastEvent = e;
    // An observer may remove itself or others while being told. Walk a
    // snapshot and skip entries removed meanwhile (a removed observer may be
    // gone); observers added meanwhile hear of the next change. The common
    // case, one observer (the published object of a name), needs no copy.
    if (m_observers.size() == 1) {
        m_observers.front()->onValueChanged(oldValue, newValue);
    } else if (!m_observers.empty()) {
        const VXVector<NodeObserver*> snapshot = m_observers.toVector();
        for (NodeObserver* o : snapshot) {
            if (std::find(m_observers.begin(), m_observers.end(), o) != m_observers.end())
                o->onValueChanged(oldValue, newValue);
        }
    }
    return true;
}

void Node::addParent(FunctionNode* p) {
    m_parents.push_back(p);
    if (!p->m_dirty) ++m_cleanParents;
}

void Node::removeParent(FunctionNode* p) {
    const uint32_t gone = m_parents.erase(p);
    if (!p->m_dirty) m_cleanParents -= gone;
}

}  // namespace VX::SysEvent
