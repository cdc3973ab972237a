// STABLE on the manual clock beyond the plain sequence (formula_test.cc):
// recomputes with an unchanged input, trace lines, timers that cannot start.
#include <gtest/gtest.h>

#include "sysevent/functions/stable.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Stable = TemporalTest;
using C = Watch::Change;

TEST_F(Stable, UnchangedInputLeavesOutputAndTimerAlone) {
    VXLWPtr<Node> x = leaf(num(1));
    VXLWPtr<Node> delay = leaf(duration(5000));
    VXLWPtr<FunctionNode> s = apply("STABLE", {x.get(), delay.get()});
    Watch w(s.get());
    advanceTo(2000);
    delay->setValue(duration(10000));  // recomputes with the same input
    EXPECT_EQ(w.value(), truth(false));
    advanceTo(7000);
    delay->setValue(duration(1000));
    advanceTo(20000);
    // The timer started at 0 with 5 s was neither restarted nor stopped.
    EXPECT_EQ(w.changes, (std::vector<C>{{5000, truth(true)}}));
}

TEST_F(Stable, TracesTheWait) {
    RTD::CaptureMonitor mon(3);
    MON = &mon;
    VXLWPtr<Node> x = leaf(text("on"));
    VXLWPtr<FunctionNode> s = apply("STABLE", {x.get(), leaf(duration(250)).get()});
    Watch w(s.get());
    EXPECT_TRUE(mon.contains(
        String::Formatted("[%s] Waiting 250 ms for 'on' to stabilize", s->getName().c_str())));
}

TEST_F(Stable, TimerThatCannotStartIsTheResult) {
    struct Case {
        XCode fault;
        DataSubType result;
    };
    for (const Case& c : {Case{XCode::Failure("NO LOOP"), DST_ERR_GENERIC},
                          Case{errToXCode(DST_ERR_NA), DST_ERR_NA}}) {
        RTD::CaptureMonitor mon(3);
        MON = &mon;
        VXLWPtr<Node> x = leaf(num(1));
        VXLWPtr<FunctionNode> s = apply("STABLE", {x.get(), leaf(duration(1000)).get()});
        Watch w(s.get());
        EventTimeouts::s_injectedStartFailure = c.fault;
        x->setValue(num(2));
        EXPECT_EQ(w.value().subtype, c.result);
        EXPECT_TRUE(
            mon.contains(String::Formatted("[%s] CANNOT STABILIZE VALUE 2: %s",
                                           s->getName().c_str(), c.fault.toString().c_str())));
        EventTimeouts::s_injectedStartFailure = XCode();
        MON = nullptr;
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
