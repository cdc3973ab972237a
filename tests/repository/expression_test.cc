// Expressions through the Repository: formulas over names that come and go,
// cycles, failed updates and their log lines, re-evaluation in a context,
// expression observers and evaluating texts without publishing them.
#include <gtest/gtest.h>

#include "repository/repository_test_support.h"
#include "sysevent/repository/expression.h"

namespace VX::SysEvent::testing {
namespace {

using Expressions = RepositoryTest;

TEST_F(Expressions, FollowANameThatIsCreatedDestroyedAndCreatedAgain) {
    VXPPtr<IExpression> e;
    ASSERT_OK(repo->createExpression(e, "", N("e"), N("a") + " * 2"));
    ASSERT_TRUE(e);
    EXPECT_EQ(valueOf(N("e")), kNA);
    RecordingObserver observer(readable(N("e")));
    CountingExpressionObserver parses;  // told of every successful (re-)parse
    e->addExpressionObserver(&parses, false);

    var("a", U(4));
    repo->destroyVariable(N("a"));
    constant("a", U(5));
    EXPECT_EQ(observer.newValues(), (std::vector<Value>{U(8), kNA, U(10)}));
    // The name's node was re-bound each time; the formula was never parsed again.
    EXPECT_EQ(parses.count, 0);
    EXPECT_EQ(e->getExpression(), N("e") + " := " + N("a") + " * 2");
    e->removeExpressionObserver(&parses);
}

TEST_F(Expressions, ObservedChainFollowsEveryChangeOnce) {
    var("x", U(1));
    expr("a", "x + 1");
    expr("b", "a + 1");
    expr("c", "b + a");
    RecordingObserver observer(readable(N("c")), true);
    for (unsigned long long x = 2; x <= 4; ++x) ASSERT_OK(repo->setValue(N("x"), U(x)));
    // c = (x + 2) + (x + 1), reported once per change.
    EXPECT_EQ(observer.newValues(), (std::vector<Value>{U(5), U(7), U(9), U(11)}));
}

TEST_F(Expressions, CircularDefinitionsAreRefusedAndTheOldOneStays) {
    var("v", U(3));
    expr("a", "v + 1");
    expr("b", "a + 1");
    struct Case {
        const char* name;
        const char* text;
    };
    for (const Case& c : {Case{"a", "a + 1"}, Case{"a", "b * 2"}, Case{"b", "NOT(b)"}}) {
        const XCode rc = repo->setExpression(CTX(), c.name, c.text);
        EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE) << c.text;
        EXPECT_EQ(rc.getString(), "CIRCULAR REFERENCE") << c.text;
    }
    VXPPtr<IExpression> a;
    ASSERT_OK(repo->get(N("a"), a));
    EXPECT_EQ(a->getExpression(), N("a") + " := v + 1");
    ASSERT_OK(repo->setValue(N("v"), U(10)));
    EXPECT_EQ(valueOf(N("b")), U(12));

    // A new expression closing a cycle is not published at all.
    EXPECT_EQ(repo->createExpression(CTX(), "c", "c + 1").getString(), "CIRCULAR REFERENCE");
    EXPECT_FALSE(exists(N("c")));
}

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

TEST_F(Expressions, ContextNameIsPickedUpWhenItAppears) {
    // "up" in the context first means the plain name, else the qualified one.
    const String plain = CTX() + "Up";
    expr("e", plain + "X + 0");
    EXPECT_EQ(valueOf(N("e")), kNA);
    ASSERT_OK(repo->createVariable(N(plain.c_str()) + "X", "", U(1)));
    EXPECT_EQ(valueOf(N("e")), U(1));  // context.name, found by re-evaluation
    ASSERT_OK(repo->createVariable(plain + "X", "", U(2)));
    EXPECT_EQ(valueOf(N("e")), U(2));  // the plain name wins
    repo->destroyVariable(plain + "X");
    EXPECT_EQ(valueOf(N("e")), U(1));  // back to the qualified one
}

TEST_F(Expressions, PatternArgumentGainsMatchesOnReevaluation) {
    var("line1.up", Value(true));
    expr("ups", "COUNTIF(" + N("line%.up") + ")");
    EXPECT_EQ(valueOf(N("ups")), U(1));
    var("line2.up", Value(true));
    EXPECT_EQ(valueOf(N("ups")), U(2));
    ASSERT_OK(repo->setValue(N("line1.up"), Value(false)));
    EXPECT_EQ(valueOf(N("ups")), U(1));
    repo->destroyVariable(N("line2.up"));
    EXPECT_EQ(valueOf(N("ups")), U(0));
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

TEST_F(Expressions, OperatorLackingAnOperandIsVal) {
    // A pattern matching nothing gives no argument, on either side.
    VXVector<Value> values;
    for (const char* op : {"==", "!=", "<", "<=", ">", ">=", "-", "/", "%", "<<", ">>", "within"}) {
        for (const String& text :
             {N("none%") + " " + op + " 1s", "1s " + String(op) + " " + N("none%"),
              N("none%") + " " + op + " " + N("none%")}) {
            ASSERT_OK(repo->evaluateExpression(CTX(), text, values));
            EXPECT_EQ(values, (VXVector<Value>{Value(DST_ERR_VAL)})) << text.c_str();
        }
    }
}

TEST_F(Expressions, EvaluateExpressionGivesOneValuePerRootAndPublishesNothing) {
    var("p1.load", U(3));
    var("p2.load", U(4));
    VXVector<Value> values{Value("stale")};
    ASSERT_OK(repo->evaluateExpression(CTX(), "p1.load * 2", values));
    EXPECT_EQ(values, (VXVector<Value>{U(6)}));
    ASSERT_OK(repo->evaluateExpression(CTX(), N("p%.load"), values));
    EXPECT_EQ(values, (VXVector<Value>{U(3), U(4)}));
    ASSERT_OK(repo->evaluateExpression(CTX(), N("q") + " + 1", values));
    EXPECT_EQ(values, (VXVector<Value>{kNA}));
    ASSERT_OK(repo->evaluateExpression(CTX(), N("q%.load"), values));
    EXPECT_TRUE(values.empty());
    EXPECT_FALSE(exists(N("q")));
}

}  // namespace
}  // namespace VX::SysEvent::testing
