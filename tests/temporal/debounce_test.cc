// DEBOUNCE beyond what a transcript shows: a change that comes back costs
// the expressions above nothing, and a condition no formula can write.
#include <gtest/gtest.h>

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
    VXLWPtr<Node> x = leaf(num(1)), c = leaf(Value(true));
    VXLWPtr<FunctionNode> d = apply("DEBOUNCEIF", {x.get(), leaf(duration(2000)).get(), c.get()});
    Watch w(d.get());
    x->setValue(num(2));
    advanceTo(100);
    c->setValue(Value(DST_EMPTY));
    advanceTo(30000);
    EXPECT_EQ(w.changes, (std::vector<Watch::Change>{{100, Value(DST_ERR_VAL)}, {2000, num(2)}}));
}

}  // namespace
}  // namespace VX::SysEvent::testing
