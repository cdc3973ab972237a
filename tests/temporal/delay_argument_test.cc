// The delay argument of the six timer-driven functions: which values are
// refused with which error, that each function makes a refused delay its
// result and a zero delay is no refusal, and that a refused delay leaves
// running timers alone, as does an error arriving at the input.
#include <gtest/gtest.h>

#include <cstdint>

#include "sysevent/functions/delay_argument.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using DelayArgument = TemporalTest;
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
        SCOPED_TRACE(c.delay.toString().c_str());
        unsigned ms = 4242;  // left alone on refusal
        const bool accepted = c.error == DST_UNDEF;
        EXPECT_EQ(delayMilliseconds(c.delay, ms).getValue(),
                  accepted ? XCode::SUCCESS : ENGINE_ERROR_BASE + c.error);
        EXPECT_EQ(ms, accepted ? c.ms : 4242u);
    }
}

// A zero delay delivers on the next advance. A delay of the wrong kind is
// the result; while it is, or while the input is an error, a running timer
// keeps running and its expiry still sets the node: the pending value, the
// oldest queued value, or true.
TEST_F(DelayArgument, ZeroWrongAndErrorArgumentsInEveryTimedFunction) {
    const struct {
        const char* fn;
        Value wrong;  // a delay of the wrong kind
        DataSubType error;
    } rows[] = {
        {"DEBOUNCE", num(5), DST_ERR_VAL},
        {"DEBOUNCEIF", text("soon"), DST_ERR_VAL},
        {"DEBOUNCEINC", Value(T0, DST_ABS_DATE_TIME), DST_ERR_NUM},
        {"DEBOUNCEDEC", Value(VX::Time(30600, 0), DST_ABS_TIME), DST_ERR_NUM},
        {"DELAY", truth(true), DST_ERR_VAL},
        {"STABLE", Value(T0, DST_ABS_DATE), DST_ERR_NUM},
    };
    enum { ZERO_DELAY, WRONG_DELAY, ERROR_INPUT };
    for (const auto& row : rows) {
        for (int mode : {ZERO_DELAY, WRONG_DELAY, ERROR_INPUT}) {
            SCOPED_TRACE(::testing::Message() << row.fn << " mode " << mode);
            const int64_t base = nowMs();
            VXLWPtr<Node> x = leaf(num(1));
            VXLWPtr<Node> delay = leaf(duration(mode == ZERO_DELAY ? 0 : 2000));
            VXLWPtr<Node> condition = leaf(truth(true));
            VXLWPtr<FunctionNode> f = String(row.fn) == "DEBOUNCEIF"
                                          ? apply(row.fn, {x.get(), delay.get(), condition.get()})
                                          : apply(row.fn, {x.get(), delay.get()});
            Watch w(f.get());
            // A change that starts a timer in every variant.
            const Value next = num(String(row.fn) == "DEBOUNCEDEC" ? 0 : 2);
            x->setValue(next);
            if (mode != ZERO_DELAY) {
                advanceTo(base + 500);
                if (mode == WRONG_DELAY)
                    delay->setValue(row.wrong);
                else
                    x->setValue(Value(DST_ERR_NA));
                EXPECT_EQ(w.value().subtype, mode == WRONG_DELAY ? row.error : DST_ERR_NA);
            }
            advanceTo(mode == ZERO_DELAY ? base : base + 5000);
            EXPECT_EQ(w.value(), String(row.fn) == "STABLE" ? truth(true) : next);
        }
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
