// Expression sets: members made, kept and removed as names matching the
// context appear and vanish; observers handed to new members; updates that
// reach every member or fail as a whole; diagnostic rows (members come in
// hash order, so the rows are checked with one member).
#include <gtest/gtest.h>

#include <algorithm>

#include "host/component/driver_repository.h"
#include "repository/repository_test_support.h"
#include "sysevent/repository/expression_set.h"

namespace VX::SysEvent::testing {
namespace {

using ExpressionSets = RepositoryTest;

TEST_F(ExpressionSets, MembersFollowTheNamesTheContextCovers) {
    var("port1.rx", U(10));
    var("port2.rx", U(20));
    VXPPtr<IExpression> set;
    ASSERT_OK(repo->createExpression(set, N("port%"), "twice", "rx * 2"));
    ASSERT_TRUE(set);
    EXPECT_EQ(set->getExpression(), "rx * 2");
    EXPECT_EQ(set->getContext(), N("port%"));
    EXPECT_EQ(valueOf(N("port1.twice")), U(20));
    EXPECT_EQ(valueOf(N("port2.twice")), U(40));
    VXPPtr<IExpression> member;
    ASSERT_OK(repo->get(N("port1.twice"), member));
    EXPECT_EQ(member->getContext(), N("port1"));

    // The set has no node: looking it up by name finds nothing.
    VXPPtr<INode> node;
    EXPECT_EQ(repo->get(N("port%.twice"), node).getString(),
              "VARIABLE DOES NOT EXIST: " + N("port%.twice"));

    // A third matching name: a third member at the re-evaluation that its
    // creation causes; existing members are kept as they are.
    var("port3.rx", U(30));
    EXPECT_EQ(valueOf(N("port3.twice")), U(60));
    VXPPtr<IExpression> again;
    ASSERT_OK(repo->get(N("port1.twice"), again));
    EXPECT_EQ(again.get(), member.get());

    // A member's own name keeps its prefix matching, so the member outlives
    // the name that brought it; it goes when both have gone.
    repo->destroyVariable(N("port2.rx"));
    EXPECT_EQ(valueOf(N("port2.twice")), kNA);
    repo->destroyVariable(N("port2.twice"));
    EXPECT_TRUE(repo->reevaluateExpressions().isSuccess());
    EXPECT_FALSE(exists(N("port2.twice")));

    // Destroying the set removes its members.
    repo->destroyExpression(N("port%"), "twice");
    set = nullptr;
    member = nullptr;
    again = nullptr;
    EXPECT_FALSE(exists(N("port1.twice")));
    EXPECT_FALSE(exists(N("port3.twice")));
}

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
    set->removeExpressionObserver(&observer);
    member->removeExpressionObserver(&observer);
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

TEST_F(ExpressionSets, DiagnosticRowsListTheMembers) {
    var("d1.v", U(1));
    ASSERT_OK(repo->createExpression(N("d%"), "w", "v + 1"));
    VXPPtr<IInfo> info;
    ASSERT_OK(DRIVER::GET_IF("var/" + N("d%") + ".w", info));
    InfoContainer rows;
    info->getInfo(rows, 9, 0, 0, 0, String());
    const std::vector<InfoContainer::Row> expected = {
        {0, 0, "Expression Set", "w"},
        {1, 0, "Context", N("d%")},
        {1, 0, "Expression", "v + 1"},
        {1, 0, "Expressions", ""},
        {2, 0, "Expression", N("d1.w")},
        {3, 0, "Context", N("d1")},
        {3, 0, "Expression", N("d1.w") + " := v + 1"},
        {3, 0, "Value", "2"},
    };
    EXPECT_EQ(rows.getRows(), expected);
    InfoContainer shallow;
    info->getInfo(shallow, 1, 0, 0, 0, String());
    EXPECT_EQ(shallow.size(), 4u);
}

}  // namespace
}  // namespace VX::SysEvent::testing
