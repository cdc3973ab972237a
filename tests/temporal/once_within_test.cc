// ONCE's latch and WITHIN's test of an event's span against a period.
#include <gtest/gtest.h>

#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Once = TemporalTest;
using Within = TemporalTest;

TEST_F(Once, PassesThroughUntilTrueThenKeepsTheLatchingEvent) {
    struct Case {
        const char* what;
        std::vector<Value> inputs;   // the first one is x's initial value
        std::vector<Value> outputs;  // ONCE(x) after each input
    };
    const Value na(DST_ERR_NA);
    const Case cases[] = {
        {"boolean",
         {truth(false), truth(true), truth(false)},
         {truth(false), truth(true), truth(true)}},
        {"number latches at the number",
         {num(0), num(5), num(0), num(7)},
         {num(0), num(5), num(5), num(5)}},
        {"errors pass and never latch",
         {na, truth(false), na, text("x"), na},
         {na, truth(false), na, text("x"), text("x")}},
        {"empty text is false", {text(""), text("false")}, {text(""), text("false")}},
        {"empty value is no truth",
         {Value(DST_EMPTY), flp(0.0), flp(0.5)},
         {Value(DST_EMPTY), flp(0.0), flp(0.5)}},
    };
    for (const Case& c : cases) {
        VXLWPtr<Node> x = leaf(c.inputs[0]);
        VXLWPtr<FunctionNode> once = apply("ONCE", {x.get()});
        Watch w(once.get());
        for (size_t i = 0; i < c.inputs.size(); ++i) {
            if (i) {
                advanceTo(nowMs() + 1000);
                x->setValue(c.inputs[i]);
            }
            EXPECT_EQ(w.value(), c.outputs[i]) << c.what << " #" << i;
            EXPECT_EQ(w.value().subtype, c.outputs[i].subtype) << c.what << " #" << i;
        }
    }
}

TEST_F(Once, LatchedEventKeepsItsTimes) {
    VXLWPtr<Node> x = leaf(truth(false));
    VXLWPtr<FunctionNode> once = apply("ONCE", {x.get()});
    Watch w(once.get());
    advanceTo(2000);
    x->setValue(truth(true));
    advanceTo(9000);
    x->setValue(truth(false));
    x->setValue(truth(true));
    EXPECT_EQ(once->getLastEvent().start, T0 + msTime(2000));
    EXPECT_EQ(w.changes.size(), 1u);
}

TEST_F(Once, UndefinedArgumentPassesThrough) {
    VXLWPtr<Node> x(new Node("x"));
    VXLWPtr<FunctionNode> once = apply("ONCE", {x.get()});
    EXPECT_EQ(once->getValue().subtype, DST_UNDEF);
}

// x's event (value and span) and the period, and WITHIN's value.
struct Span {
    Value x;
    int64_t spanMs;
    int32_t extraNs;
    Value period;
    Value result;
};

TEST_F(Within, ComparesTheArgumentsSpanWithThePeriod) {
    const Span cases[] = {
        {truth(true), 4999, 0, duration(5000), truth(true)},
        {truth(true), 5000, 0, duration(5000), truth(true)},  // equal counts as within
        {truth(true), 5000, 1, duration(5000), truth(false)},
        {truth(true), 0, 0, duration(0), truth(true)},
        {truth(false), 0, 0, duration(5000), truth(false)},
        {num(3), 1000, 0, duration(5000), truth(true)},
        {text(""), 1000, 0, duration(5000), truth(false)},
        {truth(true), 0, 0, num(5), Value(DST_ERR_VAL)},
        {truth(true), 0, 0, Value(VX::Time(3600, 0), DST_ABS_TIME), Value(DST_ERR_NUM)},
        {truth(true), 0, 0, Value(T0, DST_ABS_DATE), Value(DST_ERR_NUM)},
        {Value(DST_EMPTY), 0, 0, duration(5000), Value(DST_ERR_VAL)},
    };
    for (const Span& c : cases) {
        VXLWPtr<Node> x = leaf(truth(false));
        const VX::Time end = T0 + msTime(c.spanMs) + VX::Time(0, c.extraNs);
        x->triggerEvent(Event(T0, end, c.x));
        VXLWPtr<FunctionNode> within = apply("WITHIN", {x.get(), leaf(c.period).get()});
        const Event& e = within->getLastEvent();
        EXPECT_EQ(e.value, c.result) << c.x.toString().str() << " over " << c.spanMs << " ms";
        EXPECT_EQ(e.value.subtype, c.result.subtype);
        if (!c.result.isError()) {
            EXPECT_EQ(e.start, T0);  // the argument's times
            EXPECT_EQ(e.end, end);
        }
    }
}

TEST_F(Within, ErrorArgumentIsTheResultWithZeroTimes) {
    VXLWPtr<Node> x = leaf(Value(DST_ERR_DIV0));
    VXLWPtr<FunctionNode> within = apply("WITHIN", {x.get(), leaf(duration(5000)).get()});
    const Event& e = within->getLastEvent();
    EXPECT_EQ(e.value.subtype, DST_ERR_DIV0);
    EXPECT_TRUE(e.start.isZero());
    EXPECT_TRUE(e.end.isZero());
}

}  // namespace
}  // namespace VX::SysEvent::testing
