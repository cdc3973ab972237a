// DELAY on the manual clock beyond the plain replay (formula_test.cc): queue
// order kept when the delay shrinks, records reused through the free list,
// trace lines and a timer that cannot start.
#include <gtest/gtest.h>

#include "sysevent/functions/delay.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Delay = TemporalTest;
using C = Watch::Change;

DELAY* asDelay(const VXLWPtr<FunctionNode>& f) {
    return static_cast<DELAY*>(f.get());
}

TEST_F(Delay, KeepsQueueOrderWhenTheDelayShrinks) {
    VXLWPtr<Node> x = leaf(num(0));
    VXLWPtr<Node> delay = leaf(duration(5000));
    VXLWPtr<FunctionNode> d = apply("DELAY", {x.get(), delay.get()});
    Watch w(d.get());
    x->setValue(num(1));  // due at 5000
    advanceTo(100);
    delay->setValue(duration(1000));  // the recompute queues 1 again, due at 1100
    advanceTo(200);
    x->setValue(num(2));  // due at 1200
    advanceTo(10000);
    // Whichever timer expires, the oldest value goes out: 1 at 1100, the
    // second 1 (no change) at 1200, and 2 only when the last timer expires.
    EXPECT_EQ(w.changes, (std::vector<C>{{1100, num(1)}, {5000, num(2)}}));
    EXPECT_EQ(asDelay(d)->getQueueLength(), 0u);
}

TEST_F(Delay, SteadyStreamReusesItsRecords) {
    VXLWPtr<Node> x = leaf(num(0));
    VXLWPtr<FunctionNode> d = apply("DELAY", {x.get(), leaf(duration(3000)).get()});
    Watch w(d.get());
    // One change a second with a delay of three seconds: at most three values
    // are queued (the expiry due at the same moment as a change runs first).
    size_t longest = 0;
    for (unsigned long long i = 1; i <= 100; ++i) {
        advanceTo(static_cast<int64_t>(i) * 1000);
        x->setValue(num(i));
        longest = std::max(longest, asDelay(d)->getQueueLength());
        EXPECT_EQ(asDelay(d)->getRecordCount(), std::min<size_t>(i, 3)) << i;
        EXPECT_EQ(asDelay(d)->getQueueLength() + asDelay(d)->getFreeRecordCount(),
                  asDelay(d)->getRecordCount());
    }
    EXPECT_EQ(longest, 3u);
    advanceTo(200000);
    ASSERT_EQ(w.changes.size(), 100u);
    for (size_t i = 0; i < w.changes.size(); ++i)
        EXPECT_EQ(w.changes[i], (C{static_cast<int64_t>(i + 4) * 1000, num(i + 1)}));
    EXPECT_EQ(asDelay(d)->getFreeRecordCount(), 3u);
}

TEST_F(Delay, TracesQueuedValues) {
    RTD::CaptureMonitor mon(3);
    MON = &mon;
    VXLWPtr<Node> x = leaf(num(0));
    VXLWPtr<FunctionNode> d = apply("DELAY", {x.get(), leaf(duration(1500)).get()});
    Watch w(d.get());
    x->setValue(num(9));
    EXPECT_TRUE(
        mon.contains(String::Formatted("[%s] Delaying 9 by 1500 ms", d->getName().c_str())));
    advanceTo(1500);
    EXPECT_EQ(w.value(), num(9));
}

TEST_F(Delay, ValueWhoseTimerCannotStartIsDropped) {
    RTD::CaptureMonitor mon(3);
    MON = &mon;
    VXLWPtr<Node> x = leaf(num(0));
    VXLWPtr<FunctionNode> d = apply("DELAY", {x.get(), leaf(duration(1000)).get()});
    Watch w(d.get());
    x->setValue(num(1));  // queued
    advanceTo(100);
    EventTimeouts::s_injectedStartFailure = XCode::Failure("NO LOOP");
    x->setValue(num(2));  // dropped: its record goes straight back
    EXPECT_TRUE(mon.contains(
        String::Formatted("[%s] CANNOT DELAY VALUE 2: 0x7FFFFFFF: NO LOOP", d->getName().c_str())));
    EXPECT_EQ(asDelay(d)->getQueueLength(), 1u);
    EXPECT_EQ(asDelay(d)->getFreeRecordCount(), 1u);
    EventTimeouts::s_injectedStartFailure = XCode();
    advanceTo(200);
    x->setValue(num(3));  // reuses the returned record
    EXPECT_EQ(asDelay(d)->getRecordCount(), 2u);
    advanceTo(5000);
    EXPECT_EQ(w.changes, (std::vector<C>{{1000, num(1)}, {1200, num(3)}}));
}

}  // namespace
}  // namespace VX::SysEvent::testing
