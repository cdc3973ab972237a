// NOW and TODAY share one 10-second tick per class, started by the first
// node and ended by the last. (Their values over time are in the
// engine_temporal golden transcript.)
#include <gtest/gtest.h>

#include "host/runtime/clock.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Clocks = TemporalTest;
using C = Watch::Change;

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
