// Graph edits: cycle refusal that leaves the graph as it was, swapChild,
// parent links, and teardown.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "graph/graph_test_support.h"
#include "sysevent/graph/proxy_node.h"

namespace VX::SysEvent::testing {
namespace {

using Structure = GraphTest;

struct Snapshot {
    std::vector<Node*> children;
    std::vector<FunctionNode*> parents;
    bool dirty;
    friend bool operator==(const Snapshot&, const Snapshot&) = default;
};

Snapshot snapshot(FunctionNode* f) {
    Snapshot s{{}, f->getParents(), f->isDirty()};
    for (const auto& c : f->getChildren()) s.children.push_back(c.get());
    return s;
}

TEST_F(Structure, CyclesAreRefusedAndLeaveTheGraphUnchanged) {
    auto a = leaf("a", 1);
    auto z = make<TSUM>({a.get()});
    auto y = make<TSUM>({z.get(), a.get()});
    auto x = make<TNEG>({y.get()});
    x->addInterest();  // clean, so that a change of the dirty flag would show
    ASSERT_FALSE(z->isDirty());

    FunctionNode* const nodes[] = {z.get(), y.get(), x.get()};
    for (FunctionNode* above : nodes) {
        for (FunctionNode* below : nodes) {
            // `below` may not take `above` (or itself) as an argument when
            // `below` already lies under `above`.
            if (!(below == above || above->isDescendant(below))) continue;
            const Snapshot before = snapshot(below);
            const Snapshot beforeAbove = snapshot(above);
            XCode rc = below->addChild(above);
            EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
            EXPECT_EQ(rc.getString(), "CIRCULAR REFERENCE");
            VXLWPtr<Node> old;
            rc = below->swapChild(0, above, old);
            EXPECT_EQ(rc.getString(), "CIRCULAR REFERENCE");
            EXPECT_EQ(old.get(), before.children[0]);  // set even on failure
            EXPECT_EQ(snapshot(below), before);
            EXPECT_EQ(snapshot(above), beforeAbove);
        }
    }
    EXPECT_EQ(x->getValue(), Value(98ULL));
}

TEST_F(Structure, CycleCheckAgreesWithReachabilityOnARandomGraph) {
    // Each node takes up to three earlier ones: many shared nodes, and
    // closures of every size above and below the node being edited.
    std::mt19937 random(7);
    auto a = leaf("a", 1);
    std::vector<VXLWPtr<FunctionNode>> nodes;
    for (unsigned i = 0; i < 60; ++i) {
        nodes.push_back(make<TSUM>({a.get()}));
        for (unsigned k = random() % 4; k > 0 && i > 0; --k)
            ASSERT_TRUE(nodes[i]->addChild(nodes[random() % i].get()).isSuccess());
    }
    // What lies under each node, from the nodes' own child lists.
    std::map<const Node*, std::set<const Node*>> under;
    for (const auto& n : nodes) {
        for (const VXLWPtr<Node>& c : n->getChildren()) {
            under[n.get()].insert(c.get());
            under[n.get()].insert(under[c.get()].begin(), under[c.get()].end());
        }
    }
    for (const auto& below : nodes) {
        for (const auto& above : nodes) {
            const bool cycle = below == above || under[above.get()].count(below.get());
            VXLWPtr<Node> old;
            EXPECT_EQ(below->swapChild(0, above.get(), old).isErr(), cycle);
            if (!cycle) {
                ASSERT_TRUE(below->swapChild(0, a.get(), old).isSuccess());
            }
        }
    }
    // The nodes' names, made on request, read as the C library prints them.
    for (const auto& n : nodes) {
        EXPECT_EQ(n->getName(), String::Formatted("%s(%p)", n->getFunctionName().c_str(),
                                                  static_cast<const void*>(n.get())));
    }
}

TEST_F(Structure, BadEditsFailWithTheGenericCodeAndNoText) {
    auto a = leaf("a", 1);
    auto f = make<TSUM>({a.get()});
    VXLWPtr<Node> old;
    for (XCode rc :
         {f->addChild(nullptr), f->swapChild(1, a.get(), old), f->swapChild(0, nullptr, old)}) {
        EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
        EXPECT_FALSE(rc.hasString());
    }
    EXPECT_EQ(f->getChildCount(), 1u);
}

TEST_F(Structure, SwapChildMovesParentLinksAndMarksDirty) {
    auto a = leaf("a", 1);
    auto b = leaf("b", 5);
    auto f = make<TSUM>({a.get(), a.get()});
    f->addInterest();
    EXPECT_EQ(f->peekLastEvent().value, Value(2ULL));
    VXLWPtr<Node> old;
    ASSERT_TRUE(f->swapChild(0, b.get(), old).isSuccess());
    EXPECT_EQ(old.get(), a.get());
    EXPECT_TRUE(f->isDirty());
    // a is still the argument at position 1, so it keeps one link.
    EXPECT_EQ(a->getParents(), std::vector<FunctionNode*>{f.get()});
    EXPECT_EQ(b->getParents(), std::vector<FunctionNode*>{f.get()});
    EXPECT_EQ(f->getValue(), Value(6ULL));
    a->setValue(Value(2ULL));
    expectQuiescent({a.get(), b.get()});
    EXPECT_EQ(f->peekLastEvent().value, Value(7ULL));
}

TEST_F(Structure, SwappingAChildForItselfKeepsOneLinkPerPosition) {
    auto a = leaf("a", 1);
    auto twice = make<TSUM>({a.get(), a.get()});
    VXLWPtr<ProxyNode> proxy(new ProxyNode("p", a.get()));
    VXLWPtr<Node> old;
    for (unsigned i : {0u, 1u, 0u}) ASSERT_TRUE(twice->swapChild(i, a.get(), old).isSuccess());
    ASSERT_TRUE(proxy->setNode(a.get()).isSuccess());
    const auto& parents = a->getParents();
    EXPECT_EQ(std::count(parents.begin(), parents.end(), twice.get()), 2);
    EXPECT_EQ(std::count(parents.begin(), parents.end(), proxy.get()), 1);
    twice->addInterest();
    a->setValue(Value(4ULL));
    expectQuiescent({a.get()});
    EXPECT_EQ(twice->peekLastEvent().value, Value(8ULL));
    EXPECT_EQ(twice->computes, 2);  // once on interest, once for the change
}

TEST_F(Structure, IsDescendantFollowsAllPathsAndSharedNodes) {
    auto a = leaf("a", 1);
    auto b = leaf("b", 2);
    // A ladder of shared nodes: every level uses the one below twice, so a
    // walk of every path would take 2^40 steps.
    VXLWPtr<FunctionNode> top = make<TSUM>({a.get(), a.get()});
    for (int i = 0; i < 40; ++i) top = make<TSUM>({top.get(), top.get()});
    EXPECT_TRUE(top->isDescendant(a.get()));
    EXPECT_FALSE(top->isDescendant(b.get()));
    EXPECT_FALSE(top->isDescendant(top.get()));
    EXPECT_FALSE(a->isDescendant(a.get()));
}

TEST_F(Structure, DestroyingAFunctionNodeUnlinksAndReleasesItsChildren) {
    auto a = leaf("a", 1);
    auto keep = make<TSUM>({a.get()});
    {
        auto f = make<TSUM>({a.get(), a.get(), keep.get()});
        EXPECT_EQ(a->getParents().size(), 3u);
        EXPECT_EQ(keep->getRefCount(), 2u);
    }
    EXPECT_EQ(a->getParents(), std::vector<FunctionNode*>{keep.get()});
    EXPECT_TRUE(keep->getParents().empty());
    EXPECT_EQ(keep->getRefCount(), 1u);
}

}  // namespace
}  // namespace VX::SysEvent::testing
