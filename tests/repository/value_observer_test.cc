// Value observers of published objects: immediate notification, duplicate
// registrations and their order, removal and destruction during a delivery,
// interest on the name's node, and a value set while a change propagates.
#include <gtest/gtest.h>

#include "repository/repository_test_support.h"
#include "sysevent/graph/proxy_node.h"

namespace VX::SysEvent::testing {
namespace {

using ValueObservers = RepositoryTest;

TEST_F(ValueObservers, NotifyNowDuplicatesAndNewestFirst) {
    var("v", U(5));
    VXPPtr<IRead> v = readable(N("v"));
    std::vector<int> order;
    RecordingObserver first;
    RecordingObserver second;
    ASSERT_OK(v->addValueObserver(&first, true));  // told at once, from undefined
    EXPECT_EQ(first.changes, (Changes{{Value(), U(5)}}));
    first.action = [&order] { order.push_back(1); };
    second.action = [&order] { order.push_back(2); };
    v->addValueObserver(&second, false);
    v->addValueObserver(&second, false);
    ASSERT_OK(repo->setValue(N("v"), U(6)));
    EXPECT_EQ(order, (std::vector<int>{2, 2, 1}));  // each registration, newest first
    EXPECT_EQ(first.changes.back(), std::make_pair(U(5), U(6)));
    ASSERT_OK(repo->setValue(N("v"), U(6)));  // the same value again tells nobody
    EXPECT_EQ(order.size(), 3u);

    // One registration goes per removal; removing what is gone does nothing.
    order.clear();
    v->removeValueObserver(&second);
    ASSERT_OK(repo->setValue(N("v"), U(7)));
    v->removeValueObserver(&second);
    v->removeValueObserver(&second);
    ASSERT_OK(repo->setValue(N("v"), U(8)));
    EXPECT_EQ(order, (std::vector<int>{2, 1, 1}));
    v->removeValueObserver(&first);
}

TEST_F(ValueObservers, RemovalDuringDeliveryIsSafeAndTakesEffectAtOnce) {
    var("v", U(0));
    RecordingObserver victim(readable(N("v")));
    RecordingObserver remover(readable(N("v")));  // registered last, told first
    VXPPtr<IRead> v = readable(N("v"));
    remover.action = [&] {
        v->removeValueObserver(&victim);
        v->removeValueObserver(&remover);
    };
    ASSERT_OK(repo->setValue(N("v"), U(1)));
    remover.action = nullptr;
    ASSERT_OK(repo->setValue(N("v"), U(2)));
    EXPECT_EQ(remover.changes.size(), 1u);
    EXPECT_TRUE(victim.changes.empty());
}

TEST_F(ValueObservers, CallbackMayDestroyTheObjectItObserves) {
    var("v", U(0));
    RecordingObserver observer;  // the Repository holds the only reference
    readable(N("v"))->addValueObserver(&observer, false);
    observer.action = [this] { repo->destroyVariable(N("v")); };
    ASSERT_OK(repo->setValue(N("v"), U(1)));
    // The name is unbound first (told as a change), then the object dies.
    EXPECT_EQ(observer.newValues(), (std::vector<Value>{U(1), kNA}));
    EXPECT_EQ(observer.destroyed, std::vector<String>{N("v")});
    EXPECT_FALSE(exists(N("v")));
}

TEST_F(ValueObservers, ObservedExpressionIsKeptCurrentUnobservedOneLazily) {
    var("v", U(1));
    expr("e", "v + 1");
    VXPPtr<INode> e;
    ASSERT_OK(repo->get(N("e"), e));
    VXLWPtr<ProxyNode> node = e->getNode();
    EXPECT_EQ(node->getInterestCount(), 0u);

    RecordingObserver observer;
    VXPPtr<IRead> read = readable(N("e"));
    read->addValueObserver(&observer, false);
    read->addValueObserver(&observer, false);
    EXPECT_EQ(node->getInterestCount(), 1u);  // one interest, however many observers
    ASSERT_OK(repo->setValue(N("v"), U(2)));
    EXPECT_FALSE(node->isDirty());
    EXPECT_EQ(node->peekLastEvent().value, U(3));
    read->removeValueObserver(&observer);
    EXPECT_EQ(node->getInterestCount(), 1u);
    read->removeValueObserver(&observer);
    EXPECT_EQ(node->getInterestCount(), 0u);

    ASSERT_OK(repo->setValue(N("v"), U(5)));
    EXPECT_TRUE(node->isDirty());
    EXPECT_EQ(valueOf(N("e")), U(6));
}

TEST_F(ValueObservers, SetDuringPropagationReachesObserversButNotExpressions) {
    var("a", U(0));
    var("b", U(0));
    expr("ea", "a + 0");
    expr("eb", "b + 100");
    RecordingObserver onB(readable(N("b")));
    RecordingObserver onEb(readable(N("eb")));
    // An observed expression: its change comes during propagation.
    RecordingObserver onEa(readable(N("ea")));
    onEa.action = [] { Repository::SET_VALUE(N("b"), U(7)); };
    ASSERT_OK(repo->setValue(N("a"), U(1)));
    EXPECT_EQ(onB.newValues(), std::vector<Value>{U(7)});
    EXPECT_TRUE(onEb.changes.empty());
}

}  // namespace
}  // namespace VX::SysEvent::testing
