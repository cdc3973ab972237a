// Timers and clocks inside the graph, where a transcript cannot look: timers
// end with their owners (a timer firing for a dead node would read freed
// memory, which the AddressSanitizer build turns into a failure), DELAY's
// records are reused, a timer that cannot start, and the tick NOW and TODAY
// share per class. (The functions' values over time are in the temporal and
// engine_temporal golden transcripts; the lines traced at level three and a
// debounced change that comes back in engine_graph.)
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "host/runtime/clock.h"
#include "sysevent/functions/delay.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Timers = TemporalTest;
using C = Watch::Change;

struct Owner {
    void onTimeout() { ++fired; }
    int fired = 0;
};

TEST_F(Timers, WrapperStartsStopsRestartsRepeatsAndCancelsOnDestruction) {
    Owner owner;
    auto timer = std::make_unique<VXEventTimeout<Owner>>(&owner);
    EXPECT_FALSE(timer->isRunning());
    ASSERT_TRUE(timer->start(1000).isSuccess());
    EXPECT_TRUE(timer->isRunning());
    advanceTo(600);
    ASSERT_TRUE(timer->start(1000).isSuccess());  // counts from now: due at 1600
    advanceTo(1599);
    EXPECT_EQ(owner.fired, 0);
    advanceTo(1600);
    EXPECT_EQ(owner.fired, 1);
    EXPECT_FALSE(timer->isRunning());

    ASSERT_TRUE(timer->start(100).isSuccess());
    timer->stop();
    EXPECT_FALSE(timer->isRunning());
    advanceTo(2000);
    EXPECT_EQ(owner.fired, 1);

    clock_.refusal = XCode::Failure("NO LOOP");
    EXPECT_EQ(timer->start(100).getString(), "NO LOOP");
    EXPECT_FALSE(timer->isRunning());
    clock_.refusal = XCode();

    ASSERT_TRUE(timer->start(1000, true).isSuccess());  // repeating: stays running
    advanceTo(5500);
    EXPECT_EQ(owner.fired, 4);
    EXPECT_TRUE(timer->isRunning());
    timer.reset();
    advanceTo(10000);
    EXPECT_EQ(owner.fired, 4);
}

TEST_F(Timers, DestroyedNodesTimersNeverFire) {
    VXLWPtr<Node> x = leaf(num(1));
    VXLWPtr<Node> delay = leaf(duration(1000));
    VXLWPtr<FunctionNode> twin = apply("DEBOUNCE", {x.get(), delay.get()});
    Watch w(twin.get());
    const unsigned liveTimers = EVENT_LOOP().getTimerCount();
    {
        VXLWPtr<FunctionNode> debounce = apply("DEBOUNCE", {x.get(), delay.get()});
        VXLWPtr<FunctionNode> delayed = apply("DELAY", {x.get(), delay.get()});
        VXLWPtr<FunctionNode> stable = apply("STABLE", {x.get(), delay.get()});
        VXLWPtr<FunctionNode> now = apply("NOW", {});
        for (Node* n : {debounce.get(), delayed.get(), stable.get(), now.get()}) n->addInterest();
        x->setValue(num(2));
        advanceTo(400);
        x->setValue(num(3));  // DELAY now holds two queued records...
        advanceTo(1500);      // ...and, after one delivery, one free record
        x->setValue(num(4));
        EXPECT_EQ(static_cast<DELAY*>(delayed.get())->getRecordCount(), 2u);
        EXPECT_EQ(x->getParents().size(), 4u);
    }
    // Their links and timers are gone with them, and so is the NOW tick.
    EXPECT_EQ(EVENT_LOOP().getTimerCount(), liveTimers);
    EXPECT_EQ(x->getParents().size(), 1u);
    EXPECT_TRUE(NOW::s_pTickEvent.isNull());
    advanceTo(60000);
    EXPECT_EQ(w.changes, (std::vector<C>{{1400, num(3)}, {2500, num(4)}}));
}

TEST_F(Timers, DelayReusesItsRecordsUnderASteadyStream) {
    VXLWPtr<Node> x = leaf(num(0));
    VXLWPtr<FunctionNode> f = apply("DELAY", {x.get(), leaf(duration(3000)).get()});
    DELAY* d = static_cast<DELAY*>(f.get());
    Watch w(f.get());
    // One change a second with a delay of three seconds: at most three values
    // are queued (the expiry due at the same moment as a change runs first).
    size_t longest = 0;
    for (unsigned long long i = 1; i <= 100; ++i) {
        advanceTo(static_cast<int64_t>(i) * 1000);
        x->setValue(num(i));
        longest = std::max(longest, d->getQueueLength());
        EXPECT_EQ(d->getRecordCount(), std::min<size_t>(i, 3)) << i;
        EXPECT_EQ(d->getQueueLength() + d->getFreeRecordCount(), d->getRecordCount());
    }
    EXPECT_EQ(longest, 3u);
    advanceTo(200000);
    ASSERT_EQ(w.changes.size(), 100u);
    for (size_t i = 0; i < w.changes.size(); ++i)
        EXPECT_EQ(w.changes[i], (C{static_cast<int64_t>(i + 4) * 1000, num(i + 1)}));
    EXPECT_EQ(d->getFreeRecordCount(), 3u);
}

// No formula can give DEBOUNCEIF an empty condition: it is the result, and
// the pending value still arrives.
TEST_F(Timers, DebounceIfConditionThatIsNoBooleanIsTheResult) {
    VXLWPtr<Node> x = leaf(num(1)), c = leaf(Value(true));
    VXLWPtr<FunctionNode> d = apply("DEBOUNCEIF", {x.get(), leaf(duration(2000)).get(), c.get()});
    Watch w(d.get());
    x->setValue(num(2));
    advanceTo(100);
    c->setValue(Value(DST_EMPTY));
    advanceTo(30000);
    EXPECT_EQ(w.changes, (std::vector<Watch::Change>{{100, Value(DST_ERR_VAL)}, {2000, num(2)}}));
}

TEST_F(Timers, TimerThatCannotStart) {
    const XCode noLoop = XCode::Failure("NO LOOP");
    const struct {
        const char* fn;
        XCode fault;
        const char* verb;
        Value result;  // after the failure, and still 5 s later
    } rows[] = {
        {"DEBOUNCE", noLoop, "DEBOUNCE", num(1)},
        {"DELAY", noLoop, "DELAY", num(1)},
        {"STABLE", noLoop, "STABILIZE", Value(DST_ERR_GENERIC)},
        {"STABLE", errToXCode(DST_ERR_NA), "STABILIZE", Value(DST_ERR_NA)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fn);
        RTD::CaptureMonitor mon(3);
        MON = &mon;
        VXLWPtr<Node> x = leaf(num(1));
        VXLWPtr<FunctionNode> f = apply(row.fn, {x.get(), leaf(duration(1000)).get()});
        Watch w(f.get());
        clock_.refusal = row.fault;
        x->setValue(num(2));
        clock_.refusal = XCode();
        EXPECT_TRUE(
            mon.contains(String::Formatted("[%s] CANNOT %s VALUE 2: %s", f->getName().c_str(),
                                           row.verb, row.fault.toString().c_str())));
        EXPECT_EQ(w.value(), row.result);
        advanceTo(nowMs() + 5000);
        EXPECT_EQ(w.value(), row.result);
        EXPECT_EQ(w.changes.size(), row.result.isError() ? 1u : 0u);
        if (DELAY* d = dynamic_cast<DELAY*>(f.get())) {
            EXPECT_EQ(d->getQueueLength(), 0u);
            EXPECT_EQ(d->getFreeRecordCount(), 1u);
            x->setValue(num(3));  // reuses the returned record
            EXPECT_EQ(d->getRecordCount(), 1u);
        }
        MON = nullptr;
    }
}

TEST_F(Timers, NowAndTodayShareOneTickPerClassWhileTheyHaveNodes) {
    VXLWPtr<FunctionNode> first = apply("NOW", {});
    ASSERT_FALSE(NOW::s_pTickEvent.isNull());
    _VXTimeoutEvent* tick = NOW::s_pTickEvent.get();
    EXPECT_TRUE(tick->isRunning());
    VXLWPtr<FunctionNode> second = apply("NOW", {});
    EXPECT_EQ(NOW::s_pTickEvent.get(), tick);
    EXPECT_EQ(NOW::s_instances,
              (VXVector<NOW*>{static_cast<NOW*>(first.get()), static_cast<NOW*>(second.get())}));
    EXPECT_TRUE(TODAY::s_pTickEvent.isNull());  // not shared across classes

    first = nullptr;
    EXPECT_EQ(NOW::s_pTickEvent.get(), tick);
    EXPECT_EQ(NOW::s_instances.size(), 1u);
    // The tick keeps serving the remaining node.
    Watch w(second.get());
    advanceTo(10000);
    EXPECT_EQ(w.changes, (std::vector<C>{{10000, Value(T0 + VX::Time(10, 0), DST_ABS_DATE_TIME)}}));

    // The last node of a class ends its tick, and the next starts another.
    for (int round = 0; round < 2; ++round) {
        VXLWPtr<FunctionNode> today = apply("TODAY", {});
        EXPECT_FALSE(TODAY::s_pTickEvent.isNull());
        today = nullptr;
        EXPECT_TRUE(TODAY::s_pTickEvent.isNull());
        EXPECT_TRUE(TODAY::s_instances.empty());
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
