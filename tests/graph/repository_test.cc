// Names and sharing inside the graph: what a proxy shows of an error or
// undefined target, and the expression repository's sharing of
// sub-expressions, literals and undefined references. (Names re-targeted,
// placeholders and cycles through names are in the engine_repository and
// engine_language golden transcripts.) The repositories are process-wide,
// so each test uses names of its own.
#include <gtest/gtest.h>

#include <algorithm>

#include "graph/graph_test_support.h"
#include "sysevent/graph/expression_repository.h"
#include "sysevent/graph/proxy_node.h"
#include "sysevent/graph/proxy_repository.h"

namespace VX::SysEvent::testing {
namespace {

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

}  // namespace
}  // namespace VX::SysEvent::testing
