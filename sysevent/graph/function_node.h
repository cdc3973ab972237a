// FunctionNode: a node whose event is computed from the last events of its
// children (its arguments, in order). It owns its children; each child keeps
// a plain back-link to it. It takes part in propagation through
// shallBeUpdated (first phase: count the updates that will arrive, or mark
// the node dirty when nobody is interested) and update (second phase:
// recompute once, after the last pending update, if any update reported a
// change).
//
// NonTemporalFunctionNode: the base of functions whose result time is the
// span of their arguments' times; they compute a Value only.
//
// A function class derives from one of the two, has the constructor
// (const String& functionName, const String& parameterText) that the function
// factory calls, and overrides verifyArguments with its arity check.
#pragma once

#include <cstdint>

#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/graph/node.h"
#include "sysevent/value/event.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

// One item of the inner state by which a timer-driven or latching function
// decides its future output (a held-back value and when it falls due, a
// latch, a span), read for explaining a value without touching the graph.
struct FunctionState {
    explicit FunctionState(const String& w, const Value& v = Value()) : what(w), value(v) {}
    // An item with a time: when it falls due (`due`) or when it happened.
    FunctionState(const String& w, const Value& v, bool due, const VX::Time& t)
        : what(w), value(v), hasTime(true), isDue(due), time(t) {}

    String what;  // "pending", "queued", "watching", "latched", "span", ...
    Value value;  // DST_UNDEF when the item carries no value
    bool hasTime = false;
    bool isDue = false;  // `time` is when a timer falls due (else: when it happened)
    VX::Time time;
};

class FunctionNode : public Node {
public:
    // Node name "FN(address)"; the node starts dirty, without children.
    FunctionNode(const String& functionName, const String& parameterText);

    // Node: see node.h. FunctionNode::addInterest also recomputes a dirty node.
    void addInterest() override;
    // "FN(address)".
    const String& getName() const override;
    // FN(child,child,...) of the children's normalized expressions, no blanks.
    String getNormalizedExpression() const override;
    // Clears the dirty flag, then stores and propagates like Node.
    bool triggerEvent(const Event& e) override;
    // Depth first over the children in argument order.
    bool isDescendant(Node* n) const override;
    // If dirty: clears the flag and recompute(false).
    void requestUpdate() override;

    // The parser's way to add an argument: addChild.
    virtual XCode addArgument(Node* child);
    // swapChild, under the name the proxy nodes use.
    virtual XCode swapArgument(unsigned index, Node* child, VXLWPtr<Node>& oldChild);
    // Arity check, called by the parser after the last argument was added.
    // Success by default (any number of arguments).
    virtual XCode verifyArguments();
    // recompute(true): recompute, store and propagate like a value set at a
    // leaf. Returns true if the value changed.
    virtual bool forceRecompute();
    // Appends `child`. Fails with the generic failure code for null, and with
    // "CIRCULAR REFERENCE" when `child` is this node or lies above it; a
    // failed call changes nothing. Success marks the node dirty.
    virtual XCode addChild(Node* child);
    // Replaces child `index` by `child`; `oldChild` receives the child that
    // was at `index` (also when the cycle check fails). Fails with the generic
    // failure code for a bad index or a null child, with "CIRCULAR REFERENCE"
    // for a cycle; a failed call changes nothing in the graph. Success marks
    // the node dirty.
    virtual XCode swapChild(unsigned index, Node* child, VXLWPtr<Node>& oldChild);
    // True: the function sees error and undefined arguments itself instead
    // of the graph making the result the first such argument's error.
    virtual bool handlesErrorsManually() const;
    // True: the function sets its result's times itself (compute(Event&));
    // false: the graph sets them to the span of the arguments' times.
    virtual bool handlesTimeManually() const;
    // First phase of a propagation: answers whether this node will receive an
    // update, counting one pending update if so, or marks it dirty when
    // neither it nor any parent is interested. Asks every parent.
    virtual bool shallBeUpdated();
    // Second phase: one of the updates counted by shallBeUpdated arrives;
    // `changed` tells whether the reporting child's value changed. After the
    // last one, recomputes if some update reported a change and passes the
    // outcome to the parents that answered yes to this node's shallBeUpdated.
    virtual void update(bool changed);
    // Computes the event from the children's last events (screening errors
    // and undefined arguments unless handlesErrorsManually, merging times
    // unless handlesTimeManually) and a failing compute into an error value.
    // force: store and propagate (triggerEvent); else store only (storeEvent).
    // Returns true if the value changed.
    virtual bool recompute(bool force);
    // Writes the result into `result`, which starts as the default event
    // (value DST_UNDEF; for non-temporal nodes already carrying the argument
    // span). A failure code becomes an error value: an engine code
    // (errToXCode) that error, any other code "#ERR!".
    virtual XCode compute(Event& result) = 0;
    // Appends the items of the node's inner state to `out`; nothing for
    // functions without one. Reads only: never recomputes, starts or stops
    // anything.
    virtual void describeState(VXVector<FunctionState>& out) const { (void)out; }

    const String& getFunctionName() const { return m_functionName; }
    const String& getParameterText() const { return *m_parameterText; }
    // A copy, for callers outside the graph.
    VXVector<VXLWPtr<Node>> getChildren() const { return m_children.toVector(); }
    unsigned getChildCount() const { return static_cast<unsigned>(m_children.size()); }
    // Child `i` (i < getChildCount()).
    Node* getChild(unsigned i) const { return m_children[i].get(); }
    // The current event and value of argument `i`, brought up to date if it
    // is dirty. A function may be given fewer arguments than it reads (an
    // operator whose operand is a pattern matching nothing): reading one that
    // is not there gives an undefined event and makes the computation's
    // result "#VAL!", whatever compute returns.
    const Event& getArgumentEvent(unsigned i) const {
        if (i < m_children.size()) return m_children[i]->currentEvent();
        return missingArgument();
    }
    const Value& getArgument(unsigned i) const { return getArgumentEvent(i).value; }

    bool isDirty() const { return m_dirty; }
    uint32_t getPendingUpdates() const { return m_pendingUpdates; }
    uint32_t getChangedUpdates() const { return m_changedUpdates; }

    // Sum of the pending updates of every function node in the process.
    // Zero whenever no propagation runs; a cheap global check of the
    // invariant that each node's pending and changed counts are back to zero
    // (a node's changed count is non-zero only while its pending count is).
    static uint64_t PENDING_UPDATES_IN_GRAPH();

protected:
    // Releases the children after removing this node's links from them, in
    // argument order.
    ~FunctionNode() override;

    // Sets the dirty flag and keeps the children's counts of clean parents
    // in step with it.
    void setDirty(bool dirty);

    String m_functionName;
    // Kept once per distinct text for the process: every node of one
    // function shares its factory's text.
    const String* m_parameterText;
    SmallList<VXLWPtr<Node>> m_children;
    uint32_t m_pendingUpdates = 0;
    uint32_t m_changedUpdates = 0;

private:
    // The walks over the graph's depth run on explicit stacks (a chain of
    // any length fits any thread's stack); each node's part of a walk is one
    // of the steps below.
    enum AskStep { ANSWER_NO, ANSWER_YES, ASK_PARENTS, ASK_PARENTS_INTERESTED };
    // First phase, from this node upwards.
    static bool ASK(FunctionNode* start);
    AskStep beginAsk();
    bool finishAsk(bool interested);
    // Second phase, from this node upwards.
    static void DELIVER(FunctionNode* start, bool changed);
    // True when this was the last pending update; `result` then tells the
    // parents whether this node's value changed.
    bool receiveUpdate(bool changed, bool& result);
    // Lazy evaluation: recomputes the dirty nodes below this one, children
    // before parents, in the order a recursive read would reach them.
    void bringUpToDate();

    // compute(), with a failure, or a read past the argument list, turned
    // into an error value.
    void computeInto(Event& result);
    // True when taking `child` as an argument would make this node its own
    // descendant.
    bool wouldCloseCycle(Node* child) const;
    // Notes that compute read past the argument list; the undefined event.
    const Event& missingArgument() const;

    // The parents that answered yes to this node's shallBeUpdated in the
    // running propagation, once per yes; they, and only they, expect an
    // update from this node. Filled on the first visit of a propagation and
    // consumed by the last update.
    SmallList<FunctionNode*> m_updatingParents;
};

class NonTemporalFunctionNode : public FunctionNode {
public:
    NonTemporalFunctionNode(const String& functionName, const String& parameterText)
        : FunctionNode(functionName, parameterText) {}

    // False: the graph gives the result the span of the arguments' times.
    bool handlesTimeManually() const override;
    // compute(result.value).
    XCode compute(Event& result) override;
    // Writes the result value into `result` (starts as DST_UNDEF). Argument
    // values are read with getArgument(i). Without handlesErrorsManually the
    // arguments are never errors nor undefined.
    virtual XCode compute(Value& result) = 0;
};

}  // namespace VX::SysEvent
