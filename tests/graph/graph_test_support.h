// Small function classes, an observer and a graph check shared by the graph
// tests. The function names (TSUM, TNEG, ...) stay clear of the catalogue.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <unordered_set>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "host/runtime/monitor.h"
#include "support/print.h"
#include "sysevent/graph/function_node.h"
#include "sysevent/graph/node.h"
#include "sysevent/value/event.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent::testing {

// Sum of unsigned arguments; counts its computations.
class TSUM : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode compute(Value& result) override {
        ++computes;
        unsigned long long sum = 0;
        for (unsigned i = 0; i < getChildCount(); ++i) sum += getArgument(i).data.uint;
        result = Value(sum);
        return XCode();
    }
    int computes = 0;
};

// 100 minus its first argument (there are no negative numbers).
class TNEG : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode compute(Value& result) override {
        ++computes;
        result = Value(100ULL - getArgument(0).data.uint);
        return XCode();
    }
    int computes = 0;
};

// Fails with a code the test chooses, after writing a value that must be
// discarded; with the success code it is the constant 7.
class TFAIL : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode compute(Value& result) override {
        result = Value(7ULL);
        return code;
    }
    XCode code;
};

// Sees error and undefined arguments itself: returns the subtype of its
// first argument as a number.
class TRAW : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    bool handlesErrorsManually() const override { return true; }
    XCode compute(Value& result) override {
        ++computes;
        result = Value(static_cast<unsigned long long>(getArgument(0).subtype));
        return XCode();
    }
    int computes = 0;
};

// Temporal: the value of its first argument (or true), times untouched.
class TTEMP : public FunctionNode {
public:
    using FunctionNode::FunctionNode;
    XCode compute(Event& result) override {
        result.value = getChildCount() ? getArgument(0) : Value(true);
        return XCode();
    }
};

template <typename F>
VXLWPtr<F> make(std::initializer_list<Node*> args, const char* name = "TFN") {
    VXLWPtr<F> f(new F(name, "[arg]*"));
    for (Node* a : args) EXPECT_TRUE(f->addArgument(a).isSuccess());
    return f;
}

inline VXLWPtr<Node> leaf(const char* name, unsigned long long v) {
    return VXLWPtr<Node>(new Node(name, Value(v)));
}

// `e` has the value and times of `expected`.
inline void expectEvent(const Event& e, const Event& expected) {
    EXPECT_EQ(e.value, expected.value);
    EXPECT_EQ(e.start, expected.start);
    EXPECT_EQ(e.end, expected.end);
}

// Records every change it is told of.
class RecordingObserver : public NodeObserver {
public:
    struct Change {
        Value oldValue, newValue;
    };
    void onValueChanged(const Value& o, const Value& n) override { changes.push_back({o, n}); }
    std::vector<Change> changes;
};

// Outside a propagation every function node reachable from `roots` (down
// through children, up through parents) has no pending and no changed
// updates, the process-wide count agrees, and no propagation is flagged.
inline void expectQuiescent(std::initializer_list<Node*> roots) {
    EXPECT_FALSE(Node::s_updateInProgress);
    EXPECT_EQ(FunctionNode::PENDING_UPDATES_IN_GRAPH(), 0u);
    std::vector<Node*> todo(roots);
    std::unordered_set<Node*> seen;
    while (!todo.empty()) {
        Node* n = todo.back();
        todo.pop_back();
        if (!seen.insert(n).second) continue;
        for (FunctionNode* p : n->getParents()) todo.push_back(p);
        if (auto* f = dynamic_cast<FunctionNode*>(n)) {
            EXPECT_EQ(f->getPendingUpdates(), 0u) << f->getNormalizedExpression().c_str();
            EXPECT_EQ(f->getChangedUpdates(), 0u) << f->getNormalizedExpression().c_str();
            for (const auto& c : f->getChildren()) todo.push_back(c.get());
        }
    }
}

// Sets `n` to `v` with `monitor` (verbosity 3) installed; the monitor is
// cleared first.
inline void setLogged(RTD::CaptureMonitor& monitor, Node* n, unsigned long long v) {
    monitor.clear();
    MON = &monitor;
    n->setValue(Value(v));
    MON = nullptr;
}

// Holds the engine lock for a test, as every caller of the graph does.
class GraphTest : public ::testing::Test {
protected:
    VXAutoLock lock_{LOCK()};
};

}  // namespace VX::SysEvent::testing
