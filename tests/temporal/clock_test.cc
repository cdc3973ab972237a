// NOW and TODAY on the manual clock: the values and times they read, the
// shared 10-second tick per class (started by the first node, ended by the
// last), NOW's pushes every tick while observed and only dirty marks while
// not, TODAY's one change just after midnight.
#include <gtest/gtest.h>

#include "host/runtime/clock.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Clocks = TemporalTest;
using C = Watch::Change;

Value dateTimeAt(int64_t ms) {
    return Value(T0 + msTime(ms), DST_ABS_DATE_TIME);
}

TEST_F(Clocks, NowChangesEveryTenSecondsWhereObservedWithItsOwnTimes) {
    VXLWPtr<FunctionNode> now = apply("NOW", {});
    advanceTo(1234);
    const Event first = now->getLastEvent();  // first read: computed now
    EXPECT_EQ(first.value, dateTimeAt(1234));
    EXPECT_EQ(first.value.subtype, DST_ABS_DATE_TIME);
    EXPECT_EQ(first.start, T0 + msTime(1234));
    EXPECT_EQ(first.end, first.start);

    // An expression that nobody observes is only marked dirty by the ticks.
    VXLWPtr<TPASS> expr = make<TPASS>({now.get()}), unobserved = make<TPASS>({now.get()});
    EXPECT_EQ(unobserved->getValue(), dateTimeAt(1234));
    const int computes = unobserved->computes;
    Watch w(expr.get());
    advanceTo(35000);
    EXPECT_EQ(w.changes, (std::vector<C>{{10000, dateTimeAt(10000)},
                                         {20000, dateTimeAt(20000)},
                                         {30000, dateTimeAt(30000)}}));
    EXPECT_EQ(unobserved->computes, computes);
    EXPECT_TRUE(unobserved->isDirty());
    EXPECT_EQ(unobserved->getValue(), dateTimeAt(30000));  // the last tick's reading
    EXPECT_EQ(unobserved->computes, computes + 1);
}

TEST_F(Clocks, EachClassSharesOneTickWhileItHasNodes) {
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
    EXPECT_EQ(w.changes, (std::vector<C>{{10000, dateTimeAt(10000)}}));

    // The last node of a class ends its tick, and the next starts another.
    for (int round = 0; round < 2; ++round) {
        VXLWPtr<FunctionNode> today = apply("TODAY", {});
        EXPECT_FALSE(TODAY::s_pTickEvent.isNull());
        today = nullptr;
        EXPECT_TRUE(TODAY::s_pTickEvent.isNull());
        EXPECT_TRUE(TODAY::s_instances.empty());
    }
}

TEST_F(Clocks, TodayChangesOnceJustAfterMidnight) {
    const VX::Time start(1709164775, 0);  // 2024-02-28T23:59:35
    VX::ManualTime::ENABLE(start);
    VXLWPtr<FunctionNode> today = apply("TODAY", {});
    Watch w(today.get());
    EXPECT_EQ(w.value(), Value(VX::Time(1709078400, 0), DST_ABS_DATE));  // Feb 28
    EXPECT_EQ(w.value().subtype, DST_ABS_DATE);
    EXPECT_EQ(today->getLastEvent().start, start);

    VX::ManualTime::ADVANCE(180000);
    // Ticks at :45, :55, then 00:00:05: the first one after midnight.
    const VX::Time changedAt = start + VX::Time(30, 0);
    ASSERT_EQ(w.changes.size(), 1u);
    EXPECT_EQ(w.changes[0].value, Value(VX::Time(1709164800, 0), DST_ABS_DATE));  // Feb 29
    EXPECT_EQ(today->getLastEvent().start, changedAt);
    EXPECT_EQ(today->getLastEvent().end, changedAt);
}

}  // namespace
}  // namespace VX::SysEvent::testing
