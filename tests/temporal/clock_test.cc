// NOW and TODAY on the manual clock: the values they read, the shared
// 10-second tick per class (started by the first node, ended by the last),
// NOW's pushes every tick, TODAY's one change just after midnight.
#include <gtest/gtest.h>

#include "host/clock.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Clocks = TemporalTest;
using C = Watch::Change;

Value dateTimeAt(int64_t ms) {
    return Value(T0 + msTime(ms), DST_ABS_DATE_TIME);
}

TEST_F(Clocks, NowReadsTheClockWithItsOwnTimes) {
    VXLWPtr<FunctionNode> now = apply("NOW", {});
    advanceTo(1234);
    const Event& e = now->getLastEvent();  // first read: computed now
    EXPECT_EQ(e.value, dateTimeAt(1234));
    EXPECT_EQ(e.value.subtype, DST_ABS_DATE_TIME);
    EXPECT_EQ(e.start, T0 + msTime(1234));
    EXPECT_EQ(e.end, e.start);
}

TEST_F(Clocks, ObservedNowChangesEveryTenSeconds) {
    VXLWPtr<FunctionNode> now = apply("NOW", {});
    VXLWPtr<TPASS> expr = make<TPASS>({now.get()});
    Watch w(expr.get());
    advanceTo(35000);
    EXPECT_EQ(w.changes, (std::vector<C>{{10000, dateTimeAt(10000)},
                                         {20000, dateTimeAt(20000)},
                                         {30000, dateTimeAt(30000)}}));
}

TEST_F(Clocks, UnobservedExpressionOverNowIsOnlyMarkedDirty) {
    VXLWPtr<FunctionNode> now = apply("NOW", {});
    VXLWPtr<TPASS> expr = make<TPASS>({now.get()});
    EXPECT_EQ(expr->getValue(), dateTimeAt(0));
    const int computes = expr->computes;
    advanceTo(60000);
    EXPECT_EQ(expr->computes, computes);
    EXPECT_TRUE(expr->isDirty());
    EXPECT_EQ(expr->getValue(), dateTimeAt(60000));  // the last tick's reading
    EXPECT_EQ(expr->computes, computes + 1);
}

TEST_F(Clocks, EachClassSharesOneTickWhileItHasNodes) {
    EXPECT_TRUE(NOW::s_pTickEvent.isNull());
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
}

TEST_F(Clocks, LastNodeEndsTheTickAndTheNextStartsAnother) {
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
    const Value feb28(VX::Time(1709078400, 0), DST_ABS_DATE);
    const Value feb29(VX::Time(1709164800, 0), DST_ABS_DATE);
    EXPECT_EQ(w.value(), feb28);
    EXPECT_EQ(w.value().subtype, DST_ABS_DATE);
    EXPECT_EQ(today->getLastEvent().start, start);

    VX::ManualTime::ADVANCE(180000);
    ASSERT_EQ(w.changes.size(), 1u);
    EXPECT_EQ(w.changes[0].value, feb29);
    // Ticks at :45, :55, then 00:00:05: the first one after midnight.
    const VX::Time changedAt = start + VX::Time(30, 0);
    EXPECT_EQ(today->getLastEvent().start, changedAt);
    EXPECT_EQ(today->getLastEvent().end, changedAt);
}

}  // namespace
}  // namespace VX::SysEvent::testing
