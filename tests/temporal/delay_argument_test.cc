// The delay argument of the six timer-driven functions: which values are
// refused with which error, and that a refused delay leaves running timers
// alone, as does an error arriving at the input.
#include <gtest/gtest.h>

#include <cstdint>

#include "sysevent/functions/delay_argument.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using DelayArgument = TemporalTest;
using C = Watch::Change;

const char* const TIMED[] = {"DEBOUNCE",    "DEBOUNCEIF", "DEBOUNCEINC",
                             "DEBOUNCEDEC", "DELAY",      "STABLE"};

VXLWPtr<FunctionNode> timed(const char* fn, Node* x, Node* delay) {
    VXLWPtr<Node> condition = leaf(truth(true));
    return String(fn) == "DEBOUNCEIF" ? apply(fn, {x, delay, condition.get()})
                                      : apply(fn, {x, delay});
}

TEST(DelayMilliseconds, ReadsDurationsAndRefusesEverythingElse) {
    struct Case {
        Value delay;
        DataSubType error;  // DST_UNDEF: accepted
        unsigned ms;
    };
    const VX::Time t(1700000000, 0);
    const Case cases[] = {
        {duration(0), DST_UNDEF, 0},
        {duration(2500), DST_UNDEF, 2500},
        {Value(VX::Time(1, 1999999), DST_REL_TIME), DST_UNDEF, 1001},  // truncated
        {Value(VX::Time(2147483, 647999999), DST_REL_TIME), DST_UNDEF, 2147483647u},
        {Value(VX::Time(2147483, 648000000), DST_REL_TIME), DST_ERR_NUM, 0},
        {duration(-1), DST_ERR_NUM, 0},
        {duration(-1000), DST_ERR_NUM, 0},
        {Value(VX::Time(-1, 999999999), DST_REL_TIME), DST_ERR_NUM, 0},  // -1 ns is -1 ms
        {Value(t, DST_ABS_DATE_TIME), DST_ERR_NUM, 0},
        {Value(t, DST_ABS_DATE), DST_ERR_NUM, 0},
        {Value(VX::Time(3600, 0), DST_ABS_TIME), DST_ERR_NUM, 0},
        {num(5), DST_ERR_VAL, 0},
        {flp(0.5), DST_ERR_VAL, 0},
        {text("5s"), DST_ERR_VAL, 0},
        {truth(true), DST_ERR_VAL, 0},
        {Value(DST_EMPTY), DST_ERR_VAL, 0},
    };
    for (const Case& c : cases) {
        unsigned ms = 4242;
        const XCode rc = delayMilliseconds(c.delay, ms);
        if (c.error == DST_UNDEF) {
            EXPECT_TRUE(rc.isSuccess()) << c.delay.toString().str();
            EXPECT_EQ(ms, c.ms) << c.delay.toString().str();
        } else {
            EXPECT_EQ(rc.getValue(), ENGINE_ERROR_BASE + c.error) << c.delay.toString().str();
            EXPECT_EQ(ms, 4242u) << c.delay.toString().str();
        }
    }
}

TEST_F(DelayArgument, ZeroDelayDeliversOnTheNextAdvance) {
    for (const char* fn : TIMED) {
        VXLWPtr<Node> x = leaf(num(1));
        VXLWPtr<Node> delay = leaf(duration(0));
        VXLWPtr<FunctionNode> f = timed(fn, x.get(), delay.get());
        Watch w(f.get());
        x->setValue(num(2));
        VX::ManualTime::ADVANCE(0);
        EXPECT_EQ(w.value(), String(fn) == "STABLE" ? truth(true) : num(2)) << fn;
    }
}

// While the delay or the input is refused, a running timer keeps running and
// its expiry still sets the node: the pending value, the oldest queued value,
// or true.
TEST_F(DelayArgument, RefusedArgumentsLeaveRunningTimersAlone) {
    for (const char* fn : TIMED) {
        for (bool breakInput : {false, true}) {
            const int64_t base = nowMs();
            VXLWPtr<Node> x = leaf(num(1));
            VXLWPtr<Node> delay = leaf(duration(2000));
            VXLWPtr<FunctionNode> f = timed(fn, x.get(), delay.get());
            Watch w(f.get());
            // A change that starts a timer in every variant.
            const Value next = num(String(fn) == "DEBOUNCEDEC" ? 0 : 2);
            x->setValue(next);
            advanceTo(base + 500);
            if (breakInput)
                x->setValue(Value(DST_ERR_NA));
            else
                delay->setValue(num(2));
            EXPECT_EQ(w.value().subtype, breakInput ? DST_ERR_NA : DST_ERR_VAL) << fn;
            advanceTo(base + 5000);
            EXPECT_EQ(w.value(), String(fn) == "STABLE" ? truth(true) : next)
                << fn << (breakInput ? " input" : " delay");
        }
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
