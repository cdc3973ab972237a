// recompute: failure codes mapped to error values, screening of error and
// undefined arguments, result times, and forced recomputes. (Its trace line
// is in the engine_graph golden transcript.)
#include <gtest/gtest.h>

#include "graph/graph_test_support.h"
#include "host/runtime/manual_time.h"
#include "host/runtime/monitor.h"

namespace VX::SysEvent::testing {
namespace {

using Recompute = GraphTest;

TEST_F(Recompute, FailureCodesBecomeErrorValues) {
    struct Case {
        XCode code;
        Value expected;
    } cases[] = {
        {errToXCode(DST_ERR_DIV0), Value(DST_ERR_DIV0)},
        {errToXCode(DST_ERR_NA), Value(DST_ERR_NA)},
        {errToXCode(DST_ERR_NUM), Value(DST_ERR_NUM)},
        {errToXCode(DST_ERR_VAL), Value(DST_ERR_VAL)},
        {errToXCode(DST_ERR_GENERIC), Value(DST_ERR_GENERIC)},
        {XCode(XCode::GENERIC_FAILURE), Value(DST_ERR_GENERIC)},
        {XCode(XCode::GENERIC_FAILURE, "with a text"), Value(DST_ERR_GENERIC)},
        {XCode(0x15000000 + DST_ERR_DIV0), Value(DST_ERR_GENERIC)},  // not an engine code
        // The engine code of a subtype that is no error: that subtype's value.
        {XCode(0x16000000 + DST_BOOL), Value(false)},
        {XCode(0x16000000 + DST_EMPTY), Value(DST_EMPTY)},
        {XCode(0x16000000 + 0x00FFFFFF), Value(DST_ERR_GENERIC)},  // beyond every subtype
        {XCode(), Value(7ULL)},                                    // success keeps the result
    };
    auto a = leaf("a", 1);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.code.toString().c_str());
        auto f = make<TFAIL>({a.get()});
        f->code = c.code;
        auto parent = make<TRAW>({f.get()});
        EXPECT_EQ(f->getValue(), c.expected);
        // Whatever it is, the function above sees exactly that value.
        EXPECT_EQ(parent->getValue(), Value(static_cast<unsigned long long>(c.expected.subtype)));
    }
}

TEST_F(Recompute, FirstErrorOrUndefinedArgumentDecides) {
    auto one = leaf("one", 1);
    auto undef = VXLWPtr<Node>(new Node("undef"));
    auto div0 = VXLWPtr<Node>(new Node("div0", Value(DST_ERR_DIV0)));
    auto num = VXLWPtr<Node>(new Node("num", Value(DST_ERR_NUM)));
    struct Case {
        std::vector<Node*> args;
        Value expected;
    } cases[] = {
        {{one.get(), one.get()}, Value(2ULL)},
        {{one.get(), div0.get(), num.get()}, Value(DST_ERR_DIV0)},
        {{num.get(), div0.get()}, Value(DST_ERR_NUM)},
        {{undef.get(), num.get()}, Value(DST_ERR_VAL)},
        {{num.get(), undef.get()}, Value(DST_ERR_NUM)},
        {{one.get(), undef.get()}, Value(DST_ERR_VAL)},
    };
    for (const Case& c : cases) {
        VXLWPtr<TSUM> f(new TSUM("TSUM", ""));
        for (Node* n : c.args) ASSERT_TRUE(f->addArgument(n).isSuccess());
        EXPECT_EQ(f->getValue(), c.expected) << f->getNormalizedExpression().c_str();
        EXPECT_EQ(f->computes, c.expected.isError() ? 0 : 1);
    }
    // A function handling errors itself sees the raw values.
    for (auto [arg, st] : {std::pair{undef.get(), DST_UNDEF}, std::pair{num.get(), DST_ERR_NUM},
                           std::pair{div0.get(), DST_ERR_DIV0}}) {
        auto raw = make<TRAW>({arg, one.get()});
        EXPECT_EQ(raw->getValue(), Value(static_cast<unsigned long long>(st)));
        EXPECT_EQ(raw->computes, 1);
    }
}

TEST_F(Recompute, NonTemporalResultSpansItsArgumentsTimesOrIsStampedNow) {
    ManualTime::ENABLE(Time(1700000000, 0));
    auto a = VXLWPtr<Node>(new Node("a"));
    auto b = VXLWPtr<Node>(new Node("b"));
    auto c = VXLWPtr<Node>(new Node("c"));
    a->triggerEvent(Event(Time(10, 0), Time(20, 0), Value(1ULL)));
    b->triggerEvent(Event(Time(5, 0), Time(15, 0), Value(2ULL)));
    c->triggerEvent(Event(Time(12, 0), Time(30, 5), Value(DST_ERR_NUM)));
    expectEvent(make<TSUM>({a.get(), b.get()})->getLastEvent(),
                Event(Time(5, 0), Time(20, 0), Value(3ULL)));
    // Times are merged over all arguments, also past the deciding error.
    expectEvent(make<TSUM>({c.get(), a.get(), b.get()})->getLastEvent(),
                Event(Time(5, 0), Time(30, 5), Value(DST_ERR_NUM)));
    expectEvent(make<TSUM>({})->getLastEvent(),
                Event(Time(1700000000, 0), Time(1700000000, 0), Value(0ULL)));
    // A temporal function keeps what compute set: zero times here.
    expectEvent(make<TTEMP>({a.get()})->getLastEvent(), Event(Time(), Time(), Value(1ULL)));
    expectEvent(make<TTEMP>({})->getLastEvent(), Event(Time(), Time(), Value(true)));
    ManualTime::DISABLE();
}

TEST_F(Recompute, ForceRecomputePropagatesPlainRecomputeDoesNot) {
    auto a = leaf("a", 1);
    auto f = make<TNEG>({a.get()});
    auto top = make<TSUM>({f.get()});
    top->addInterest();
    EXPECT_EQ(top->computes, 1);
    // Change a behind the graph's back, without propagating.
    auto setQuietly = [&](unsigned long long v) {
        Node::s_updateInProgress = true;
        a->setValue(Value(v));
        Node::s_updateInProgress = false;
    };
    setQuietly(2);
    EXPECT_TRUE(f->recompute(false));
    EXPECT_EQ(top->computes, 1);
    a->setValue(Value(1ULL));
    EXPECT_EQ(top->computes, 2);  // f's value changed 98 -> 99: top recomputes
    setQuietly(3);
    EXPECT_TRUE(f->forceRecompute());
    expectQuiescent({a.get()});
    EXPECT_EQ(top->computes, 3);
    EXPECT_EQ(top->peekLastEvent().value, Value(97ULL));
}

}  // namespace
}  // namespace VX::SysEvent::testing
