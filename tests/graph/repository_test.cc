// Names and sharing: proxy nodes re-targeted without re-parsing, cycles
// through names, placeholders, the expression repository's sharing of
// sub-expressions and literals, and the function factory's registrations.
// The repositories are process-wide, so each test uses names of its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "graph/graph_test_support.h"
#include "sysevent/graph/expression_repository.h"
#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/proxy_node.h"
#include "sysevent/graph/proxy_repository.h"

namespace VX::SysEvent::testing {
namespace {

// Registered while the test program loads, like the catalogue's factories.
FunctionFactory::Factory<TSUM> s_functionFactoryTSUM("TSUM", "[summand]*", "Sums for the tests");
FunctionFactory::Factory<TNEG> s_functionFactoryTNEG("TNEG", "number", "100 minus the number");

using Names = GraphTest;

ProxyRepository& proxies() {
    return *ProxyRepository::INSTANCE();
}
ExpressionRepository& expressions() {
    return *ExpressionRepository::INSTANCE();
}

// Whether `name` is in the repository's listing, which replaces what the
// output vector held.
template <typename Repository>
bool listed(const Repository& r, const char* name) {
    VXVector<String> names{"stale entry"};
    r.getNames(names);
    EXPECT_EQ(std::count(names.begin(), names.end(), String("stale entry")), 0);
    return std::count(names.begin(), names.end(), String(name)) == 1;
}

TEST_F(Names, ProxyIsOnePerNameAndStartsOnAPlaceholder) {
    auto p = proxies().getOrCreate("t1.x");
    EXPECT_EQ(proxies().getOrCreate("t1.x"), p);
    EXPECT_EQ(proxies().get("t1.x"), p);
    EXPECT_TRUE(proxies().get("t1.never").isNull());
    EXPECT_EQ(p->getNormalizedExpression(), "t1.x");
    EXPECT_EQ(p->getTarget()->getName(), "t1.x");
    EXPECT_EQ(p->getTarget()->peekLastEvent().value, Value(DST_ERR_NA));
    // The placeholder's error is taken without compute: zero times.
    EXPECT_EQ(p->getValue(), Value(DST_ERR_NA));
    EXPECT_TRUE(p->getLastEvent().start.isZero());
    EXPECT_TRUE(listed(proxies(), "t1.x"));
}

TEST_F(Names, RetargetingReevaluatesUsersWithoutReparsing) {
    auto x = proxies().getOrCreate("t2.x");
    auto expr = make<TNEG>({x.get()});
    auto root = proxies().getOrCreate("t2.expr", expr);
    RecordingObserver seen;
    root->addObserver(&seen);
    root->addInterest();
    EXPECT_EQ(root->getValue(), Value(DST_ERR_NA));

    auto value = VXLWPtr<Node>(new Node("t2.x", Value(30ULL)));
    proxies().getOrCreate("t2.x", value);  // the variable appears
    expectQuiescent({x.get()});
    EXPECT_EQ(root->peekLastEvent().value, Value(70ULL));
    // The proxy's event equals its target's, times included.
    EXPECT_EQ(x->peekLastEvent().start, value->peekLastEvent().start);

    x->setValue(Value(1ULL));  // the variable is set
    EXPECT_EQ(root->peekLastEvent().value, Value(99ULL));

    ASSERT_TRUE(x->setInvalidReference().isSuccess());  // the variable goes
    EXPECT_EQ(root->peekLastEvent().value, Value(DST_ERR_NA));
    EXPECT_TRUE(value->getParents().empty());

    proxies().getOrCreate("t2.x", VXLWPtr<Node>(new Node("t2.x", Value(40ULL))));
    EXPECT_EQ(root->peekLastEvent().value, Value(60ULL));
    expectQuiescent({x.get()});
    EXPECT_EQ(root->getTarget(), expr.get());  // the same expression node throughout
    ASSERT_EQ(seen.changes.size(), 4u);        // 70, 99, #N/A!, 60
    EXPECT_EQ(seen.changes.back().newValue, Value(60ULL));
    root->removeObserver(&seen);
    root->removeInterest();
}

TEST_F(Names, ExpressionsOverTheirOwnNameAreRefused) {
    // t3.a := NOT(t3.a)
    auto a = proxies().getOrCreate("t3.a", VXLWPtr<Node>(new Node("t3.a", Value(3ULL))));
    auto selfRef = make<TNEG>({a.get()});
    XCode rc = a->setNode(selfRef.get());
    EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
    EXPECT_EQ(rc.getString(), "CIRCULAR REFERENCE");
    EXPECT_EQ(a->getValue(), Value(3ULL));

    // t3.b := NOT(t3.c), then t3.c := NOT(t3.b)
    auto b = proxies().getOrCreate("t3.b");
    auto c = proxies().getOrCreate("t3.c", VXLWPtr<Node>(new Node("t3.c", Value(1ULL))));
    auto notC = make<TNEG>({c.get()});
    ASSERT_TRUE(b->setNode(notC.get()).isSuccess());
    Node* cTarget = c->getTarget();
    auto notB = make<TNEG>({b.get()});
    EXPECT_EQ(c->setNode(notB.get()).getString(), "CIRCULAR REFERENCE");
    EXPECT_EQ(c->getTarget(), cTarget);
    EXPECT_EQ(b->getValue(), Value(99ULL));
    EXPECT_EQ(a->setNode(nullptr).getValue(), XCode::GENERIC_FAILURE);
    EXPECT_EQ(a->getValue(), Value(3ULL));
    // The two-argument getOrCreate ignores the refusal.
    EXPECT_EQ(proxies().getOrCreate("t3.c", notB), c);
    EXPECT_EQ(c->getTarget(), cTarget);
}

TEST_F(Names, ProxyScreensErrorsAndUndefinedTargets) {
    auto p = proxies().getOrCreate("t4.p", VXLWPtr<Node>(new Node("t4.p")));
    EXPECT_EQ(p->getValue(), Value(DST_ERR_VAL));
    p->setNode(VXLWPtr<Node>(new Node("t4.p", Value(DST_ERR_NUM))).get());
    EXPECT_EQ(p->getValue(), Value(DST_ERR_NUM));
    EXPECT_TRUE(p->getLastEvent().end.isZero());
}

TEST_F(Names, SharedSubExpressionIsOneNodeWithSeveralParents) {
    auto x = proxies().getOrCreate("t5.x", VXLWPtr<Node>(new Node("t5.x", Value(2ULL))));
    auto y = proxies().getOrCreate("t5.y", VXLWPtr<Node>(new Node("t5.y", Value(3ULL))));
    // Two parses of TSUM(t5.x,t5.y), each building its own node first.
    auto first = make<TSUM>({x.get(), y.get()}, "TSUM");
    VXLWPtr<Node> shared1 = ExpressionRepository::GET_OR_ADD(first.get());
    auto second = make<TSUM>({x.get(), y.get()}, "TSUM");
    VXLWPtr<Node> shared2 = ExpressionRepository::GET_OR_ADD(second.get());
    EXPECT_EQ(shared1.get(), first.get());
    EXPECT_EQ(shared2.get(), first.get());
    EXPECT_EQ(expressions().get("TSUM(t5.x,t5.y)").get(), first.get());
    second = nullptr;  // nobody else holds it: gone, and unlinked from x and y
    EXPECT_EQ(x->getParents().size(), 1u);

    auto e1 = make<TNEG>({shared1.get()});
    auto e2 = make<TSUM>({shared1.get(), x.get()});
    EXPECT_EQ(shared1->getParents().size(), 2u);
    e1->addInterest();
    e2->addInterest();
    x->setValue(Value(10ULL));
    expectQuiescent({x.get()});
    EXPECT_EQ(first->computes, 2);
    EXPECT_EQ(e1->peekLastEvent().value, Value(87ULL));
    EXPECT_EQ(e2->peekLastEvent().value, Value(23ULL));
}

TEST_F(Names, LiteralsAndUndefinedReferencesAreKeyedExactly) {
    EXPECT_TRUE(expressions().get("t6 literal").isNull());
    auto five = VXLWPtr<Node>(new Node("t6 literal", Value(5ULL)));
    expressions().add("t6 literal", five.get());
    EXPECT_EQ(expressions().get("t6 literal"), five);
    EXPECT_TRUE(expressions().get("T6 LITERAL").isNull());
    EXPECT_TRUE(listed(expressions(), "t6 literal"));

    // An undefined reference re-targets the name's proxy once: found under
    // its key from then on.
    auto p = proxies().getOrCreate("t7.v", VXLWPtr<Node>(new Node("t7.v", Value(1ULL))));
    VXLWPtr<Node> ref = expressions().getOrCreateUndefinedReference("t7.v");
    EXPECT_EQ(ref.get(), p.get());
    EXPECT_EQ(p->getValue(), Value(DST_ERR_NA));
    EXPECT_EQ(expressions().get("t7.v"), ref);
    p->setNode(VXLWPtr<Node>(new Node("t7.v", Value(2ULL))).get());
    EXPECT_EQ(expressions().getOrCreateUndefinedReference("t7.v"), ref);
    EXPECT_EQ(p->getValue(), Value(2ULL));
}

TEST_F(Names, FactoryCreatesAFreshDirtyNodePerCallAndLooksUpExactly) {
    VXLWPtr<FunctionNode> a = FunctionFactory::CREATE("TSUM");
    VXLWPtr<FunctionNode> b = FunctionFactory::CREATE("TSUM");
    ASSERT_TRUE(a && b);
    EXPECT_NE(a.get(), b.get());
    EXPECT_NE(dynamic_cast<TSUM*>(a.get()), nullptr);
    EXPECT_EQ(a->getFunctionName(), "TSUM");
    EXPECT_EQ(a->getParameterText(), "[summand]*");
    EXPECT_TRUE(a->isDirty());
    EXPECT_EQ(a->getChildCount(), 0u);
    EXPECT_EQ(a->getRefCount(), 1u);

    FunctionFactory& f = *FunctionFactory::INSTANCE();
    EXPECT_EQ(f.get("TNEG"), &s_functionFactoryTNEG);
    EXPECT_EQ(f.get("TNEG")->getDescription(), "100 minus the number");
    EXPECT_EQ(f.get("TNEG")->getParameterText(), "number");
    for (const char* missing : {"tneg", "TNEG ", "TNE", ""}) {
        EXPECT_EQ(f.get(missing), nullptr) << missing;
        EXPECT_TRUE(FunctionFactory::CREATE(missing).isNull()) << missing;
    }
    EXPECT_TRUE(listed(f, "TSUM"));
    EXPECT_TRUE(listed(f, "TNEG"));
}

TEST_F(Names, SecondFactoryOfANameWaitsUntilTheFirstIsGone) {
    auto first = std::make_unique<FunctionFactory::Factory<TSUM>>("TTWICE", "first", "");
    auto second = std::make_unique<FunctionFactory::Factory<TNEG>>("TTWICE", "second", "");
    EXPECT_EQ(FunctionFactory::CREATE("TTWICE")->getParameterText(), "first");
    EXPECT_TRUE(listed(*FunctionFactory::INSTANCE(), "TTWICE"));  // listed once
    first.reset();
    EXPECT_EQ(FunctionFactory::CREATE("TTWICE")->getParameterText(), "second");
    second.reset();
    EXPECT_TRUE(FunctionFactory::CREATE("TTWICE").isNull());
    EXPECT_FALSE(listed(*FunctionFactory::INSTANCE(), "TTWICE"));
    // Unregistering a name that is not there is ignored.
    FunctionFactory::INSTANCE()->unregisterFactory("TTWICE");
}

}  // namespace
}  // namespace VX::SysEvent::testing
