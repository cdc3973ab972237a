// DEBOUNCE and its variants on the manual clock, beyond the plain sequences
// of formula_test.cc: changes that come back, first inputs, the order of
// DEBOUNCEINC/DEBOUNCEDEC across data types, DEBOUNCEIF's condition (also
// one no formula can write), trace lines and a timer that cannot start.
#include <gtest/gtest.h>

#include <cmath>

#include "sysevent/functions/debounce.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Debounce = TemporalTest;
using C = Watch::Change;

TEST_F(Debounce, ChangeThatComesBackWithinTheDelayPropagatesNothing) {
    VXLWPtr<Node> x = leaf(num(1));
    VXLWPtr<Node> d = apply("DEBOUNCE", {x.get(), leaf(duration(2000)).get()});
    VXLWPtr<TPASS> above = make<TPASS>({d.get()});
    Watch w(above.get());
    const int computesBefore = above->computes;
    const VX::Time startBefore = d->getLastEvent().start;

    advanceTo(100);
    x->setValue(num(2));
    advanceTo(200);
    x->setValue(num(1));
    advanceTo(5000);
    EXPECT_TRUE(w.changes.empty());
    EXPECT_EQ(above->computes, computesBefore);
    EXPECT_EQ(d->getLastEvent().start, startBefore);  // no new event was stored
}

TEST_F(Debounce, FirstInputOfEveryVariantPassesAtOnce) {
    for (const char* fn : {"DEBOUNCE", "DEBOUNCEINC", "DEBOUNCEDEC", "DEBOUNCEIF", "DELAY"}) {
        VXLWPtr<Node> x = leaf(num(7));
        VXLWPtr<Node> delay = leaf(duration(2000));
        VXLWPtr<Node> condition = leaf(truth(true));
        VXLWPtr<FunctionNode> d = String(fn) == "DEBOUNCEIF"
                                      ? apply(fn, {x.get(), delay.get(), condition.get()})
                                      : apply(fn, {x.get(), delay.get()});
        Watch w(d.get());
        EXPECT_EQ(w.value(), num(7)) << fn;
        EXPECT_EQ(d->getLastEvent().start, T0) << fn;
    }
}

// A change from `from` to `to`, either held back for the delay or let
// through at once.
struct Step {
    const char* fn;
    Value from, to;
    bool held;
    friend void PrintTo(const Step& s, std::ostream* os) {
        *os << s.fn << " " << s.from.toString().str() << " -> " << s.to.toString().str();
    }
};

class DebounceDirection : public Debounce, public ::testing::WithParamInterface<Step> {};

TEST_P(DebounceDirection, HoldsBackOnlyItsOwnDirection) {
    const Step& s = GetParam();
    VXLWPtr<Node> x = leaf(s.from);
    VXLWPtr<Node> d = apply(s.fn, {x.get(), leaf(duration(1000)).get()});
    Watch w(d.get());
    advanceTo(100);
    x->setValue(s.to);
    if (s.held) {
        EXPECT_EQ(w.value(), s.from);
        advanceTo(5000);
        EXPECT_EQ(w.changes, (std::vector<C>{{1100, s.to}}));
    } else {
        EXPECT_EQ(w.changes, (std::vector<C>{{100, s.to}}));
        advanceTo(5000);
        EXPECT_EQ(w.changes.size(), 1u);
    }
}

INSTANTIATE_TEST_SUITE_P(Variants, DebounceDirection,
                         ::testing::Values(Step{"DEBOUNCEINC", num(1), num(2), true},
                                           Step{"DEBOUNCEINC", num(2), num(1), false},
                                           Step{"DEBOUNCEDEC", num(2), num(1), true},
                                           Step{"DEBOUNCEDEC", num(1), num(2), false},
                                           Step{"DEBOUNCEINC", text("abc"), text("abd"), true},
                                           Step{"DEBOUNCEINC", text("abd"), text("abc"), false},
                                           Step{"DEBOUNCEDEC", text("abc"), text("ab"), true},
                                           Step{"DEBOUNCEINC", flp(2.5), num(3), true},
                                           Step{"DEBOUNCEDEC", flp(2.5), num(3), false},
                                           Step{"DEBOUNCEINC", truth(false), truth(true), true},
                                           Step{"DEBOUNCEDEC", truth(false), truth(true), false},
                                           // Across data types nothing is a rise or a fall.
                                           Step{"DEBOUNCEINC", text("abc"), num(5), false},
                                           Step{"DEBOUNCEDEC", num(5), text("abc"), false},
                                           Step{"DEBOUNCE", text("abc"), num(5), true}));

// current, input, is a rise, is a fall.
struct Order {
    Value current, input;
    bool rise, fall;
};

TEST(DebounceOrder, GreaterAndLessPerDataType) {
    const VX::Time t(1000, 5);
    const Value nan(std::nan(""));
    const Order cases[] = {
        {num(1), num(2), true, false},
        {num(2), num(2), false, false},
        {num(3), flp(2.0), false, true},  // normalized to integers
        {num(3), flp(3.0), false, false},
        {num(3), flp(3.5), true, false},  // normalized to floats
        {flp(1e20), num(18446744073709551615ULL), false, true},
        {nan, flp(1.0), false, false},
        {flp(1.0), nan, false, false},
        {truth(false), truth(true), true, false},
        {truth(true), truth(false), false, true},
        {truth(true), truth(true), false, false},
        {Value(t, DST_REL_TIME), Value(t + VX::Time(0, 1), DST_REL_TIME), true, false},
        {Value(t, DST_ABS_DATE_TIME), Value(VX::Time(999, 0), DST_ABS_DATE_TIME), false, true},
        // Negative seconds order as signed numbers.
        {Value(VX::Time(-5, 0), DST_REL_TIME), Value(VX::Time(1, 0), DST_REL_TIME), true, false},
        // Different time kinds are not compared.
        {Value(t, DST_ABS_DATE), Value(t + t, DST_ABS_DATE_TIME), false, false},
        {text("abc"), text("abd"), true, false},
        {text("ab"), text("abc"), true, false},  // a proper prefix is smaller
        {text("abc"), text(""), false, true},
        {text("a"), text("\xff"), true, false},  // bytes are unsigned
        {text("B"), text("a"), true, false},     // by byte, not by letter
        {text("abc"), text("abc"), false, false},
        {Value(String("ab\0x", 4)), Value(String("ab\0y", 4)), false, false},  // stops at zero
        {num(1), text("2"), false, false},
        {num(1), truth(true), false, false},
        {Value(DST_EMPTY), Value(DST_EMPTY), false, false},
        {Value(DST_ERR_NA), Value(DST_ERR_VAL), false, false},
        {Value(DST_UNDEF), num(1), false, false},
    };
    for (const Order& c : cases) {
        bool flag = true;
        EXPECT_TRUE(liesBeyond(flag, c.current, c.input, true).isSuccess());
        EXPECT_EQ(flag, c.rise) << c.current.toString().str() << " -> " << c.input.toString().str();
        flag = true;
        EXPECT_TRUE(liesBeyond(flag, c.current, c.input, false).isSuccess());
        EXPECT_EQ(flag, c.fall) << c.current.toString().str() << " -> " << c.input.toString().str();
    }
}

TEST_F(Debounce, FalseConditionPassesAtOnceAndDropsThePendingValue) {
    VXLWPtr<Node> x = leaf(num(1));
    VXLWPtr<Node> c = leaf(truth(true));
    VXLWPtr<Node> d = apply("DEBOUNCEIF", {x.get(), leaf(duration(2000)).get(), c.get()});
    Watch w(d.get());
    x->setValue(num(2));  // held back while the condition is true
    advanceTo(500);
    c->setValue(truth(false));  // the recompute lets 2 through now
    EXPECT_EQ(w.changes, (std::vector<C>{{500, num(2)}}));
    EXPECT_FALSE(static_cast<DEBOUNCE*>(d.get())->isTimerRunning());
    advanceTo(600);
    x->setValue(num(3));  // through at once
    advanceTo(10000);
    EXPECT_EQ(w.changes, (std::vector<C>{{500, num(2)}, {600, num(3)}}));
    // A condition that reads as true again (a non-empty text) holds back.
    c->setValue(text("false"));
    x->setValue(num(4));
    EXPECT_EQ(w.value(), num(3));
    advanceTo(12000);
    EXPECT_EQ(w.value(), num(4));
}

TEST_F(Debounce, UnconvertibleConditionIsTheResult) {
    VXLWPtr<Node> x = leaf(num(1));
    VXLWPtr<Node> c = leaf(truth(true));
    VXLWPtr<Node> d = apply("DEBOUNCEIF", {x.get(), leaf(duration(2000)).get(), c.get()});
    Watch w(d.get());
    x->setValue(num(2));  // pending
    advanceTo(100);
    c->setValue(Value(DST_EMPTY));
    EXPECT_EQ(w.value().subtype, DST_ERR_VAL);
    // The failure left the timer alone: the pending value still arrives.
    advanceTo(5000);
    EXPECT_EQ(w.changes, (std::vector<C>{{100, Value(DST_ERR_VAL)}, {2000, num(2)}}));
}

TEST_F(Debounce, TracesHeldBackValuesAtLevelThreeOnly) {
    RTD::CaptureMonitor mon(2);
    MON = &mon;
    VXLWPtr<Node> x = leaf(num(1));
    VXLWPtr<Node> d = apply("DEBOUNCE", {x.get(), leaf(duration(2500)).get()});
    Watch w(d.get());
    const String line = String::Formatted("[%s] Debouncing 'up' by 2500 ms", d->getName().c_str());
    x->setValue(text("up"));
    EXPECT_FALSE(mon.contains("Debouncing"));
    mon.setVerbosity(3);
    x->setValue(text("down"));
    x->setValue(text("up"));
    EXPECT_TRUE(mon.contains(line)) << line.c_str();
    advanceTo(3000);
    EXPECT_EQ(w.changes, (std::vector<C>{{2500, text("up")}}));
}

TEST_F(Debounce, TimerThatCannotStartKeepsTheOutput) {
    RTD::CaptureMonitor mon(3);
    MON = &mon;
    VXLWPtr<Node> x = leaf(num(1));
    VXLWPtr<Node> d = apply("DEBOUNCE", {x.get(), leaf(duration(1000)).get()});
    Watch w(d.get());
    EventTimeouts::s_injectedStartFailure = XCode::Failure("NO LOOP");
    x->setValue(num(2));
    EXPECT_TRUE(mon.contains(String::Formatted("[%s] CANNOT DEBOUNCE VALUE 2: 0x7FFFFFFF: NO LOOP",
                                               d->getName().c_str())));
    EXPECT_FALSE(static_cast<DEBOUNCE*>(d.get())->isTimerRunning());
    advanceTo(5000);
    EXPECT_TRUE(w.changes.empty());
    EXPECT_EQ(w.value(), num(1));
}

}  // namespace
}  // namespace VX::SysEvent::testing
