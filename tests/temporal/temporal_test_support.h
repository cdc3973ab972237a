// Shared by the tests of the timer- and clock-driven functions: a fixture on
// the manual clock that holds the engine lock, builders for leaves and
// function nodes (made through the function factory, so each test owns its
// nodes and their timers die with them), and a watcher that observes a node
// the way a published object does and records each change with the time.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "host/runtime/manual_time.h"
#include "host/runtime/monitor.h"
#include "host/runtime/time.h"
#include "support/print.h"
#include "sysevent/functions/event_timeout.h"
#include "sysevent/functions/now_today.h"
#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/function_node.h"
#include "sysevent/graph/node.h"
#include "sysevent/value/event.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent::testing {

// 2023-11-14T22:13:20, where the manual clock starts.
const VX::Time T0(1700000000, 0);

// Milliseconds of the manual clock since T0.
inline int64_t nowMs() {
    const VX::Time d = VX::ManualTime::CURRENT() - T0;
    return static_cast<int64_t>(d.getSeconds()) * 1000 + d.getNanoseconds() / 1000000;
}

// A duration of `ms` milliseconds.
inline Value duration(int64_t ms) {
    return Value(
        VX::Time(static_cast<int32_t>(ms / 1000), static_cast<int32_t>(ms % 1000 * 1000000)),
        DST_REL_TIME);
}
inline Value num(unsigned long long u) {
    return Value(u);
}

// A leaf holding `v`, like a variable's value node.
inline VXLWPtr<Node> leaf(const Value& v, const char* name = "x") {
    return VXLWPtr<Node>(new Node(name, v));
}

// A fresh node of the catalogue function `name` over `args`, checked by its
// arity test as the parser would.
inline VXLWPtr<FunctionNode> apply(const char* name, std::initializer_list<Node*> args) {
    VXLWPtr<FunctionNode> f = FunctionFactory::CREATE(name);
    EXPECT_TRUE(f) << name;
    if (!f) return f;
    for (Node* a : args) EXPECT_TRUE(f->addArgument(a).isSuccess()) << name;
    EXPECT_TRUE(f->verifyArguments().isSuccess()) << name;
    return f;
}

// Observes a node as a published object does (an observer plus interest)
// and records each later change with the manual clock's reading.
class Watch : public NodeObserver {
public:
    struct Change {
        int64_t atMs;
        Value value;
        friend bool operator==(const Change& a, const Change& b) {
            return a.atMs == b.atMs && a.value == b.value && a.value.subtype == b.value.subtype;
        }
        friend void PrintTo(const Change& c, std::ostream* os) {
            *os << c.value.toString().str() << " at " << c.atMs << " ms";
        }
    };

    // Starts watching; the computation that the interest brings about is not
    // counted as a change.
    explicit Watch(Node* node) : node_(node) {
        node_->addObserver(this);
        node_->addInterest();
        changes.clear();
    }
    ~Watch() override {
        node_->removeObserver(this);
        node_->removeInterest();
    }
    void onValueChanged(const Value&, const Value& v) override { changes.push_back({nowMs(), v}); }

    Value value() const { return node_->getValue(); }
    std::vector<Change> changes;

private:
    VXLWPtr<Node> node_;
};

// The manual clock of these tests; while `refusal` is a failure it refuses
// every timer start with it, as a host that cannot run timers does.
struct TestClock : VX::ManualScheduler {
    XCode admitTimerStart() override { return refusal; }
    XCode refusal;
};

// Every test runs on the manual clock, from T0, holding the engine lock as
// every caller of the graph does (ADVANCE takes it again for the handlers).
class TemporalTest : public ::testing::Test {
protected:
    void SetUp() override { VX::ManualTime::ENABLE(clock_, T0); }
    void TearDown() override {
        MON = nullptr;
        // Each test's nodes are gone by now; so must be the shared ticks.
        EXPECT_TRUE(NOW::s_instances.empty());
        EXPECT_TRUE(NOW::s_pTickEvent.isNull());
        EXPECT_TRUE(TODAY::s_instances.empty());
        EXPECT_TRUE(TODAY::s_pTickEvent.isNull());
        VX::ManualTime::DISABLE();
    }
    // Moves the manual clock to `ms` after T0, running every timer due by then.
    static void advanceTo(int64_t ms) {
        const int64_t now = nowMs();
        ASSERT_GE(ms, now);
        VX::ManualTime::ADVANCE(static_cast<unsigned>(ms - now));
    }

    TestClock clock_;
    VXAutoLock lock_{LOCK()};
};

}  // namespace VX::SysEvent::testing
