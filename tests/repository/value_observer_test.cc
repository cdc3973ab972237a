// Value observers of published objects: immediate notification, duplicate
// registrations, removal during a delivery, interest on the name's node and
// destruction notices.
#include <gtest/gtest.h>

#include <functional>

#include "repository/repository_test_support.h"

namespace VX::SysEvent::testing {
namespace {

// Runs an action from inside its notification.
class ActingObserver : public RecordingObserver {
public:
    std::function<void()> action;
    void onValueChanged(VXPPtr<IRead>& source, const Value& oldValue,
                        const Value& newValue) override {
        RecordingObserver::onValueChanged(source, oldValue, newValue);
        if (action) action();
    }
};

TEST(ValueObservers, NotifyNowReportsTheCurrentValueFromUndefined) {
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(5)).isSuccess());
    VXPPtr<IRead> v = readable(N("v"));
    RecordingObserver observer;
    ASSERT_TRUE(v->addValueObserver(&observer, true).isSuccess());
    ASSERT_EQ(observer.changes.size(), 1u);
    EXPECT_EQ(observer.changes[0].first, Value());
    EXPECT_EQ(observer.changes[0].second, U(5));
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(6)).isSuccess());
    ASSERT_EQ(observer.changes.size(), 2u);
    EXPECT_EQ(observer.changes[1].first, U(5));
    EXPECT_EQ(observer.changes[1].second, U(6));
    // Setting the same value again tells nobody.
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(6)).isSuccess());
    EXPECT_EQ(observer.changes.size(), 2u);
    v->removeValueObserver(&observer);
}

TEST(ValueObservers, DuplicateRegistrationsAreToldTwiceAndRemovedOneAtATime) {
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(0)).isSuccess());
    VXPPtr<IRead> v = readable(N("v"));
    RecordingObserver observer;
    v->addValueObserver(&observer, false);
    v->addValueObserver(&observer, false);
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(1)).isSuccess());
    EXPECT_EQ(observer.changes.size(), 2u);
    v->removeValueObserver(&observer);
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(2)).isSuccess());
    EXPECT_EQ(observer.changes.size(), 3u);
    v->removeValueObserver(&observer);
    v->removeValueObserver(&observer);  // not registered any more: nothing happens
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(3)).isSuccess());
    EXPECT_EQ(observer.changes.size(), 3u);
}

TEST(ValueObservers, NewestRegistrationIsToldFirst) {
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(0)).isSuccess());
    VXPPtr<IRead> v = readable(N("v"));
    std::vector<int> order;
    ActingObserver first;
    ActingObserver second;
    first.action = [&order] { order.push_back(1); };
    second.action = [&order] { order.push_back(2); };
    v->addValueObserver(&first, false);
    v->addValueObserver(&second, false);
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(1)).isSuccess());
    EXPECT_EQ(order, (std::vector<int>{2, 1}));
    v->removeValueObserver(&first);
    v->removeValueObserver(&second);
}

TEST(ValueObservers, RemovalDuringDeliveryIsSafeAndTakesEffectAtOnce) {
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(0)).isSuccess());
    VXPPtr<IRead> v = readable(N("v"));
    ActingObserver remover;  // registered last, told first
    RecordingObserver victim;
    v->addValueObserver(&victim, false);
    v->addValueObserver(&remover, false);
    remover.action = [&] {
        v->removeValueObserver(&victim);
        v->removeValueObserver(&remover);
    };
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(1)).isSuccess());
    EXPECT_EQ(remover.changes.size(), 1u);
    EXPECT_TRUE(victim.changes.empty());
    remover.action = nullptr;
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(2)).isSuccess());
    EXPECT_EQ(remover.changes.size(), 1u);
    EXPECT_TRUE(victim.changes.empty());
}

TEST(ValueObservers, CallbackMayDestroyTheObjectItObserves) {
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(0)).isSuccess());
    ActingObserver observer;
    readable(N("v"))->addValueObserver(&observer, false);
    observer.action = [] {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        repository->destroyVariable(N("v"));
    };
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(1)).isSuccess());
    // The name is unbound first (told as a change), then the object dies.
    EXPECT_EQ(observer.newValues(), (std::vector<Value>{U(1), Value(DST_ERR_NA)}));
    EXPECT_EQ(observer.destroyed, std::vector<String>{N("v")});
    EXPECT_FALSE(exists(N("v")));
}

TEST(ValueObservers, ObservedExpressionIsKeptCurrentUnobservedOneLazily) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createVariable(N("v"), "", U(1)).isSuccess());
    ASSERT_TRUE(repository->createExpression(CTX(), "e", "v + 1").isSuccess());
    VXPPtr<INode> e;
    ASSERT_TRUE(repository->get(N("e"), e).isSuccess());
    VXLWPtr<ProxyNode> node = e->getNode();
    EXPECT_EQ(node->getInterestCount(), 0u);

    RecordingObserver observer;
    VXPPtr<IRead> read = readable(N("e"));
    read->addValueObserver(&observer, false);
    read->addValueObserver(&observer, false);
    EXPECT_EQ(node->getInterestCount(), 1u);  // one interest, however many observers
    ASSERT_TRUE(repository->setValue(N("v"), U(2)).isSuccess());
    EXPECT_FALSE(node->isDirty());
    EXPECT_EQ(node->peekLastEvent().value, U(3));
    read->removeValueObserver(&observer);
    EXPECT_EQ(node->getInterestCount(), 1u);
    read->removeValueObserver(&observer);
    EXPECT_EQ(node->getInterestCount(), 0u);

    ASSERT_TRUE(repository->setValue(N("v"), U(5)).isSuccess());
    EXPECT_TRUE(node->isDirty());
    EXPECT_EQ(valueOf(N("e")), U(6));
}

TEST(ValueObservers, DestructionIsToldAndTheNameReadsNotAvailable) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createConstant(N("c"), "", U(1)).isSuccess());
    ASSERT_TRUE(repository->createExpression(CTX(), "e", "c + 1").isSuccess());
    RecordingObserver onConstant;
    RecordingObserver onExpression;
    readable(N("c"))->addValueObserver(&onConstant, false);
    readable(N("e"))->addValueObserver(&onExpression, false);
    repository->destroyConstant(N("c"));
    EXPECT_EQ(onConstant.destroyed, std::vector<String>{N("c")});
    EXPECT_EQ(onConstant.newValues(), std::vector<Value>{Value(DST_ERR_NA)});
    EXPECT_EQ(onExpression.newValues(), std::vector<Value>{Value(DST_ERR_NA)});
    ASSERT_TRUE(repository->createConstant(N("c"), "", U(2)).isSuccess());
    EXPECT_EQ(onExpression.newValues(), (std::vector<Value>{Value(DST_ERR_NA), U(3)}));
    readable(N("e"))->removeValueObserver(&onExpression);
}

TEST(ValueObservers, ValueChangesAreLoggedAboveVerbosityZero) {
    CapturedLog log(1);
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(1)).isSuccess());
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), Value("two")).isSuccess());
    EXPECT_TRUE(log->contains("[" + N("v") + "] 1 -> 'two'"));
}

TEST(ValueObservers, SetDuringPropagationReachesObserversButNotExpressions) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createVariable(N("a"), "", U(0)).isSuccess());
    ASSERT_TRUE(repository->createVariable(N("b"), "", U(0)).isSuccess());
    ASSERT_TRUE(repository->createExpression(CTX(), "ea", "a + 0").isSuccess());
    ASSERT_TRUE(repository->createExpression(CTX(), "eb", "b + 100").isSuccess());
    RecordingObserver onB;
    RecordingObserver onEb;
    readable(N("b"))->addValueObserver(&onB, false);
    readable(N("eb"))->addValueObserver(&onEb, false);
    ActingObserver onEa;  // an observed expression: its change comes during propagation
    onEa.action = [] { Repository::SET_VALUE(N("b"), U(7)); };
    readable(N("ea"))->addValueObserver(&onEa, false);

    ASSERT_TRUE(repository->setValue(N("a"), U(1)).isSuccess());
    EXPECT_EQ(onB.newValues(), std::vector<Value>{U(7)});
    EXPECT_TRUE(onEb.changes.empty());
    readable(N("ea"))->removeValueObserver(&onEa);
    readable(N("eb"))->removeValueObserver(&onEb);
    readable(N("b"))->removeValueObserver(&onB);
}

}  // namespace
}  // namespace VX::SysEvent::testing
