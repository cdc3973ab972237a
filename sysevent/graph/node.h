// Node: the unit of the evaluation graph. Every value the engine knows (a
// literal, a variable's value, a named reference, the result of a function
// application) is the last event of one node. A node's parents are the
// function nodes that use it as an argument; changes travel from a node to
// its parents in the two-phase propagation that triggerEvent starts.
//
// NodeObserver: the interface through which published objects learn of a
// node's value changes.
//
// Threading: nodes take no lock of their own. Every call into the graph runs
// under the engine lock (VX::SysEvent::LOCK()), which is also every node's
// reference-count lock. s_updateInProgress is a plain flag for that reason.
#pragma once

#include <cstdint>

#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "sysevent/graph/small_list.h"
#include "sysevent/value/event.h"
#include "sysevent/value/text.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

class FunctionNode;
class ExpressionRepository;
class ProxyRepository;

// Told of every change of a node's value, synchronously, from inside
// storeEvent and with the engine lock held. Not owned by the node: whoever
// registers an observer removes it before the observer dies.
class NodeObserver {
public:
    virtual ~NodeObserver() = default;
    // Called after the node stored a new event whose value differs from the
    // previous one; receives the old value, then the new one.
    virtual void onValueChanged(const Value& oldValue, const Value& newValue) = 0;
};

class Node : public VX::RefCounted {
public:
    // A node with the default event (zero times, DST_UNDEF).
    explicit Node(const String& name);
    // A node holding `value` since now (start = end = VX::Time::NOW(1)). Used
    // for literals, variable values and the "#N/A!" placeholders of names.
    Node(const String& name, const Value& value);

    // Appends `o` (duplicates allowed; each is called once per registration).
    virtual void addObserver(NodeObserver* o);
    // Removes every registration of `o`.
    virtual void removeObserver(NodeObserver* o);
    // Increments the interest count. On a function node it also brings a dirty
    // node up to date at once (requestUpdate).
    virtual void addInterest();
    // Decrements the interest count and does nothing else: the node falls
    // back to lazy evaluation at the next propagation that reaches it.
    virtual void removeInterest();
    virtual const String& getName() const;
    // "<normalized expression> @ <address>": the prefix of every trace line.
    // Costly for deep expressions; build it only when a line will be written.
    virtual String getLogName() const;
    // The sharing key of the node: its name for a plain node, FN(arg,arg,...)
    // for a function node, the referenced name for a proxy node.
    virtual String getNormalizedExpression() const;
    // The last event, brought up to date first if the node is dirty (which
    // may recompute it and, recursively, its dirty children).
    virtual const Event& getLastEvent() const;
    // triggerEvent(Event(v)): stores `v` stamped now and propagates it.
    // Returns true if the value changed.
    virtual bool setValue(const Value& v);
    // Stores `e` and, if its value differs from the current one and no
    // propagation is running, carries the change to every parent (both
    // phases). Returns true if the value changed. During a running
    // propagation the event is stored and observed but not propagated.
    virtual bool triggerEvent(const Event& e);
    // True if `n` lies below this node (never for a plain node).
    virtual bool isDescendant(Node* n) const;
    // Brings a dirty node up to date; nothing on a plain node.
    virtual void requestUpdate();
    // Stores `e` and tells the observers, unless its value equals the current
    // one: then nothing is stored (the old times stay) and false is returned.
    virtual bool storeEvent(const Event& e);

    // The value of getLastEvent().
    const Value& getValue() const { return getLastEvent().value; }
    // getLastEvent() as the graph's own reads take it: a node that is not
    // dirty has nothing to bring up to date, so its stored event is read
    // without a call.
    const Event& currentEvent() const {
        if (m_dirty) return getLastEvent();
        return m_lastEvent;
    }
    // The last event as stored, without bringing a dirty node up to date.
    const Event& peekLastEvent() const { return m_lastEvent; }

    // Parent links are plain back-pointers kept by the function nodes
    // themselves: a parent appears once per argument position using this node.
    void addParent(FunctionNode* p);
    // Removes every link to `p`.
    void removeParent(FunctionNode* p);
    // How many parent links lead to a parent that is not dirty. A change of
    // this node has nothing to ask when it is zero.
    uint32_t getCleanParentCount() const { return m_cleanParents; }
    // Copies, for callers outside the graph.
    VXVector<FunctionNode*> getParents() const { return m_parents.toVector(); }
    VXVector<NodeObserver*> getObservers() const { return m_observers.toVector(); }
    uint32_t getInterestCount() const { return m_interestCount; }

    // True while a propagation runs, process-wide. Guarded by the engine lock.
    static bool s_updateInProgress;

protected:
    friend class FunctionNode;
    friend class ExpressionRepository;
    friend class ProxyRepository;

    // What the graph's walks need to know of a node without a virtual call.
    enum Kind : uint8_t { KIND_PLAIN, KIND_FUNCTION, KIND_PROXY };
    // The sharing tables that list this node; each drops its entry when the
    // node dies, so an entry lives exactly as long as somebody holds the node.
    enum Listing : uint8_t { LISTED_AS_EXPRESSION = 1, LISTED_AS_PROXY = 2 };

    ~Node() override;

    // One word: a function node's name is made only when asked for.
    Text m_name;
    SmallList<NodeObserver*> m_observers;  // not owned
    uint32_t m_interestCount = 0;
    uint32_t m_cleanParents = 0;  // parent links whose parent is not dirty
    Kind m_kind = KIND_PLAIN;
    // Only function nodes are ever dirty; kept here so that a walk can test a
    // child or parent without knowing its class.
    bool m_dirty = false;
    uint8_t m_listings = 0;  // Listing bits
    // A function node's: set when the running compute read an argument that
    // is not there (kept here, in what would be padding).
    mutable bool m_argumentMissing = false;
    SmallList<FunctionNode*> m_parents;  // not owned; each parent owns us
    Event m_lastEvent;
};

}  // namespace VX::SysEvent
