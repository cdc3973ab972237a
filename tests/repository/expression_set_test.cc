// Expression sets through their interface: observers handed to new members
// and taken back from dropped ones, and updates that reach every member or
// fail as a whole. (Members coming and going with names, and the diagnostic
// rows, are in the engine_repository golden transcript.)
#include <gtest/gtest.h>

#include "repository/repository_test_support.h"
#include "sysevent/repository/expression_set.h"

namespace VX::SysEvent::testing {
namespace {

using ExpressionSets = RepositoryTest;

TEST_F(ExpressionSets, ContextMatchingNothingHasNoMembersUntilNamesAppear) {
    VXPPtr<IExpression> set;
    ASSERT_OK(repo->createExpression(set, N("line%"), "ok", "NOT(alarm)"));
    CExpressionSet* impl = dynamic_cast<CExpressionSet*>(set.get());
    ASSERT_NE(impl, nullptr);
    EXPECT_TRUE(impl->getMembers().empty());

    CountingExpressionObserver observer;
    set->addExpressionObserver(&observer, true);  // notifyNow is ignored by sets
    EXPECT_EQ(observer.count, 0);

    var("line1.alarm", Value(false));
    EXPECT_EQ(impl->getMembers().size(), 1u);
    EXPECT_EQ(valueOf(N("line1.ok")), Value(true));
    // The new member was given the set's observer (without notifyNow); it
    // hears of the member's later updates.
    VXPPtr<IExpression> member;
    ASSERT_OK(repo->get(N("line1.ok"), member));
    EXPECT_EQ(observer.count, 0);
    ASSERT_OK(member->setExpression("alarm"));
    EXPECT_EQ(observer.count, 1);

    // An observer added to the set after a member exists is not given to it.
    CountingExpressionObserver late;
    set->addExpressionObserver(&late, false);
    ASSERT_OK(member->setExpression("NOT(alarm)"));
    EXPECT_EQ(late.count, 0);
    EXPECT_EQ(observer.count, 2);
    set->removeExpressionObserver(&late);

    // A member dropped because no name covers its prefix any more is given
    // back the set's observers, though a client still holds it.
    repo->destroyVariable(N("line1.alarm"));
    repo->destroyVariable(N("line1.ok"));
    ASSERT_OK(set->reevaluateExpression());
    EXPECT_TRUE(impl->getMembers().empty());
    const int heard = observer.count;
    ASSERT_OK(member->setExpression("true"));
    EXPECT_EQ(observer.count, heard);
    set->removeExpressionObserver(&observer);
}

TEST_F(ExpressionSets, UpdateReachesEveryMemberAndAFailingOneFailsTheSet) {
    CapturedLog log(4);
    var("a1.v", U(1));
    VXPPtr<IExpression> set;
    ASSERT_OK(repo->createExpression(set, N("a%"), "w", "v * 2"));
    var("a2.v", U(2));
    // Without a node a set is not found by its name: setting it by name
    // creates it again, which the driver repository refuses.
    EXPECT_EQ(repo->setExpression(N("a%"), "w", "v + 1").getString(),
              "DRIVER ALREADY EXISTS: var/" + N("a%") + ".w");
    ASSERT_OK(set->setExpression("v + 1"));
    EXPECT_EQ(valueOf(N("a1.w")), U(2));
    EXPECT_EQ(valueOf(N("a2.w")), U(3));
    // Re-evaluating on demand sets every member's formula again, whether or
    // not a name changed.
    log->setVerbosity(3);
    ASSERT_OK(set->reevaluateExpression());
    EXPECT_TRUE(log->contains("[" + N("a2.w") + "] Update expression: v + 1"));
    log->setVerbosity(4);

    // A member whose formula refers to itself: the whole update fails.
    EXPECT_EQ(set->setExpression("w + 1").getString(), "CIRCULAR REFERENCE");
    EXPECT_TRUE(log->contains("[" + N("a%") + ".w] Updating set of expressions failed:"));
    EXPECT_EQ(set->getExpression(), "v + 1");
    EXPECT_EQ(valueOf(N("a1.w")), U(2));
    EXPECT_EQ(valueOf(N("a2.w")), U(3));
}

}  // namespace
}  // namespace VX::SysEvent::testing
