// Expressions through the Repository, where a transcript cannot look: the
// log lines of failed and successful updates at each verbosity, expression
// observers, and when re-evaluation parses a formula again. (Values over
// names that come and go, cycles and patterns are in the engine_repository
// golden transcript.)
#include <gtest/gtest.h>

#include "repository/repository_test_support.h"
#include "sysevent/repository/expression.h"

namespace VX::SysEvent::testing {
namespace {

using Expressions = RepositoryTest;

TEST_F(Expressions, FailedUpdateKeepsTheFormulaAndEachLineHasItsVerbosity) {
    CapturedLog log(0);
    var("v", U(2));
    VXPPtr<IExpression> e;
    ASSERT_OK(repo->createExpression(e, CTX(), "e", "v * 3"));
    EXPECT_EQ(e->setExpression("SUM(v").getString(), "6: Expecting ',' or ')'");
    EXPECT_EQ(e->getExpression(), N("e") + " := v * 3");
    EXPECT_EQ(valueOf(N("e")), U(6));
    // An empty text changes nothing and succeeds.
    EXPECT_TRUE(e->setExpression("").isSuccess());
    EXPECT_EQ(e->getExpression(), N("e") + " := v * 3");
    // The failure is written at level 4 whatever the verbosity: a verbosity-0
    // monitor drops it, as it drops value changes and traces.
    EXPECT_TRUE(log->lines().empty());

    log->setVerbosity(1);
    var("w", U(1));
    ASSERT_OK(repo->setValue(N("w"), Value("two")));
    EXPECT_TRUE(log->contains("[" + N("w") + "] 1 -> 'two'"));

    log->setVerbosity(3);
    expr("f", "7 * 6");
    EXPECT_TRUE(log->contains("[" + N("f") + "] Update expression: 7 * 6"));
    // Nobody had read the name before, so its old value is still undefined.
    EXPECT_TRUE(log->contains("[" + N("f") + "] #UNDEF! -> 42"));

    log->setVerbosity(4);
    EXPECT_EQ(e->setExpression("NOSUCH(1)").getString(), "1: Unknown function 'NOSUCH'");
    EXPECT_TRUE(log->contains(
        "[" + N("e") + "] Updating expression failed: 0x7FFFFFFF: 1: Unknown function 'NOSUCH'"));
    EXPECT_EQ(valueOf(N("e")), U(6));
}

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

TEST_F(Expressions, ReevaluationParsesAgainOnlyWhenALookedUpNameChanges) {
    var("v", U(1));
    VXPPtr<IExpression> e;
    ASSERT_OK(repo->createExpression(e, CTX(), "e", "v + 1"));
    CountingExpressionObserver observer;
    e->addExpressionObserver(&observer, false);
    var("unrelated", U(1));
    EXPECT_TRUE(repo->reevaluateExpressions().isSuccess());
    EXPECT_EQ(observer.count, 0);
    // A name it looked up appearing makes it parse again.
    var("v.v", U(1));
    EXPECT_EQ(observer.count, 0);
    repo->destroyVariable(N("v"));
    EXPECT_EQ(observer.count, 1);
    e->removeExpressionObserver(&observer);
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
