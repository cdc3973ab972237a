// ONCE's latch and WITHIN's test of an event's span against a period; errors
// pass through both.
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
         {truth(false), truth(true), truth(false), truth(true)},
         {truth(false), truth(true), truth(true), truth(true)}},
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
        {"undefined passes through", {Value()}, {Value()}},
    };
    for (const Case& c : cases) {
        VXLWPtr<Node> x = leaf(c.inputs[0]);
        VXLWPtr<FunctionNode> once = apply("ONCE", {x.get()});
        Watch w(once.get());
        VX::Time start;
        for (size_t i = 0; i < c.inputs.size(); ++i) {
            SCOPED_TRACE(::testing::Message() << c.what << " #" << i);
            if (i) {
                advanceTo(nowMs() + 1000);
                x->setValue(c.inputs[i]);
            }
            EXPECT_EQ(w.value(), c.outputs[i]);
            EXPECT_EQ(w.value().subtype, c.outputs[i].subtype);
            // An unchanged output keeps its event: a latch keeps its times.
            if (i && c.outputs[i] == c.outputs[i - 1]) {
                EXPECT_EQ(once->getLastEvent().start, start);
            }
            start = once->getLastEvent().start;
        }
    }
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
        {Value(DST_ERR_DIV0), 1000, 0, duration(5000), Value(DST_ERR_DIV0)},
    };
    for (const Span& c : cases) {
        VXLWPtr<Node> x = leaf(truth(false));
        const VX::Time end = T0 + msTime(c.spanMs) + VX::Time(0, c.extraNs);
        x->triggerEvent(Event(T0, end, c.x));
        VXLWPtr<FunctionNode> within = apply("WITHIN", {x.get(), leaf(c.period).get()});
        const Event& e = within->getLastEvent();
        SCOPED_TRACE((c.x.toString() + " / " + c.period.toString()).c_str());
        EXPECT_EQ(e.value, c.result);
        EXPECT_EQ(e.value.subtype, c.result.subtype);
        // The argument's times; an error has none.
        EXPECT_EQ(e.start, c.result.isError() ? VX::Time() : T0);
        EXPECT_EQ(e.end, c.result.isError() ? VX::Time() : end);
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
