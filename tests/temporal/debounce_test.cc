// DEBOUNCE beyond the sequences of formula_test.cc: a change that comes back
// costs the expressions above nothing, and the order DEBOUNCEINC and
// DEBOUNCEDEC use to tell rises from falls, per data type.
#include <gtest/gtest.h>

#include <cmath>

#include "sysevent/functions/debounce.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Debounce = TemporalTest;

TEST_F(Debounce, ChangeThatComesBackCostsTheExpressionsAboveNothing) {
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

// No formula can give DEBOUNCEIF an empty condition: it is the result, and
// the pending value still arrives.
TEST_F(Debounce, ConditionThatIsNoBooleanIsTheResult) {
    VXLWPtr<Node> x = leaf(num(1)), c = leaf(truth(true));
    VXLWPtr<FunctionNode> d = apply("DEBOUNCEIF", {x.get(), leaf(duration(2000)).get(), c.get()});
    Watch w(d.get());
    x->setValue(num(2));
    advanceTo(100);
    c->setValue(Value(DST_EMPTY));
    advanceTo(30000);
    EXPECT_EQ(w.changes, (std::vector<Watch::Change>{{100, Value(DST_ERR_VAL)}, {2000, num(2)}}));
}

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
        SCOPED_TRACE((c.current.toString() + " -> " + c.input.toString()).c_str());
        bool rise = true, fall = true;
        EXPECT_TRUE(liesBeyond(rise, c.current, c.input, true).isSuccess());
        EXPECT_TRUE(liesBeyond(fall, c.current, c.input, false).isSuccess());
        EXPECT_EQ(rise, c.rise);
        EXPECT_EQ(fall, c.fall);
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
