// Expressions through the Repository, where a transcript cannot look:
// expression observers and re-evaluation on demand. (Values over names that
// come and go, cycles, patterns, the log lines of updates at each verbosity
// and when re-evaluation parses a formula again are in the
// engine_repository golden transcript.)
#include <gtest/gtest.h>

#include "repository/repository_test_support.h"
#include "sysevent/repository/expression.h"

namespace VX::SysEvent::testing {
namespace {

using Expressions = RepositoryTest;

TEST_F(Expressions, ObserversAreToldOfEachSuccessfulUpdate) {
    ASSERT_OK(repo->setExpression(CTX(), "e", "1"));  // creates it
    VXPPtr<IExpression> e;
    ASSERT_OK(repo->get(N("e"), e));
    CountingExpressionObserver first;
    CountingExpressionObserver second;
    e->addExpressionObserver(&first, true);
    EXPECT_EQ(first.count, 1);
    EXPECT_EQ(first.lastSource.get(), e.get());
    e->addExpressionObserver(&second, false);
    ASSERT_OK(repo->setExpression(CTX(), "e", "2"));  // updates the same object
    EXPECT_EQ(valueOf(N("e")), U(2));
    EXPECT_TRUE(e->setExpression("2 +").isErr());
    EXPECT_EQ(first.count, 2);
    EXPECT_EQ(second.count, 1);
    e->removeExpressionObserver(&first);
    ASSERT_OK(e->setExpression("3"));
    EXPECT_EQ(first.count, 2);
    EXPECT_EQ(second.count, 2);
    e->removeExpressionObserver(&second);
}

TEST_F(Expressions, ReevaluatingSetsTheFormulaAgainAndBindsADroppedName) {
    CapturedLog log(3);
    var("v", U(1));
    VXPPtr<IExpression> e;
    ASSERT_OK(repo->createExpression(e, CTX(), "e", "v + 1"));
    CountingExpressionObserver observer;
    e->addExpressionObserver(&observer, false);
    const String updated = "[" + N("e") + "] Update expression: v + 1";
    log->clear();
    ASSERT_OK(e->reevaluateExpression());  // on demand: nothing has to change
    EXPECT_EQ(observer.count, 1);
    EXPECT_TRUE(log->contains(updated));

    VXPPtr<INode> node;
    ASSERT_OK(repo->get(N("e"), node));
    node->dropNode();
    EXPECT_EQ(valueOf(N("e")), kNA);
    log->clear();
    var("unrelated", U(1));  // any creation re-evaluates: the name is bound again
    EXPECT_EQ(valueOf(N("e")), U(2));
    EXPECT_EQ(observer.count, 2);
    EXPECT_TRUE(log->contains(updated));
    e->removeExpressionObserver(&observer);
}

}  // namespace
}  // namespace VX::SysEvent::testing
