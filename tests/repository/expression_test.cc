// Expressions through the Repository: formulas over names that come and go,
// cycles, failed updates, re-evaluation in a context, expression observers
// and evaluating texts without publishing them.
#include <gtest/gtest.h>

#include "host/driver_repository.h"
#include "repository/repository_test_support.h"
#include "sysevent/repository/expression.h"

namespace VX::SysEvent::testing {
namespace {

class CountingExpressionObserver : public IExpressionObserver {
public:
    int count = 0;
    VXPPtr<IExpression> lastSource;
    void onExpressionChanged(ObserverEvent<IExpression>& event) override {
        ++count;
        lastSource = event.getSource();
    }
};

TEST(Expressions, FollowANameThatIsCreatedDestroyedAndCreatedAgain) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    VXPPtr<IExpression> e;
    ASSERT_TRUE(repository->createExpression(e, "", N("e"), N("a") + " * 2").isSuccess());
    ASSERT_TRUE(e);
    EXPECT_EQ(valueOf(N("e")), Value(DST_ERR_NA));
    RecordingObserver observer;
    readable(N("e"))->addValueObserver(&observer, false);
    CountingExpressionObserver parses;  // told of every successful (re-)parse
    e->addExpressionObserver(&parses, false);

    ASSERT_TRUE(repository->createVariable(N("a"), "", U(4)).isSuccess());
    EXPECT_EQ(valueOf(N("e")), U(8));
    repository->destroyVariable(N("a"));
    EXPECT_EQ(valueOf(N("e")), Value(DST_ERR_NA));
    ASSERT_TRUE(repository->createConstant(N("a"), "", U(5)).isSuccess());
    EXPECT_EQ(valueOf(N("e")), U(10));
    EXPECT_EQ(observer.newValues(), (std::vector<Value>{U(8), Value(DST_ERR_NA), U(10)}));
    // The name's node was re-bound each time; the formula was never parsed again.
    EXPECT_EQ(parses.count, 0);
    EXPECT_EQ(e->getExpression(), N("e") + " := " + N("a") + " * 2");
    e->removeExpressionObserver(&parses);
    readable(N("e"))->removeValueObserver(&observer);
}

TEST(Expressions, ObservedChainFollowsEveryChange) {
    ASSERT_TRUE(Repository::SET_VALUE(N("x"), U(1)).isSuccess());
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createExpression(CTX(), "a", "x + 1").isSuccess());
    ASSERT_TRUE(repository->createExpression(CTX(), "b", "a + 1").isSuccess());
    ASSERT_TRUE(repository->createExpression(CTX(), "c", "b + a").isSuccess());
    RecordingObserver observer;
    VXPPtr<IRead> c = readable(N("c"));
    c->addValueObserver(&observer, true);
    for (unsigned long long x = 2; x <= 4; ++x)
        ASSERT_TRUE(repository->setValue(N("x"), U(x)).isSuccess());
    // c = (x + 2) + (x + 1), reported once per change.
    EXPECT_EQ(observer.newValues(), (std::vector<Value>{U(5), U(7), U(9), U(11)}));
    c->removeValueObserver(&observer);
}

TEST(Expressions, CircularDefinitionsAreRefusedAndTheOldOneStays) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createVariable(N("v"), "", U(3)).isSuccess());
    ASSERT_TRUE(repository->createExpression(CTX(), "a", "v + 1").isSuccess());
    ASSERT_TRUE(repository->createExpression(CTX(), "b", "a + 1").isSuccess());

    struct Case {
        const char* name;
        const char* text;
    };
    for (const Case& c : {Case{"a", "a + 1"}, Case{"a", "b * 2"}, Case{"b", "NOT(b)"}}) {
        const XCode rc = repository->setExpression(CTX(), c.name, c.text);
        EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE) << c.text;
        EXPECT_EQ(rc.getString(), "CIRCULAR REFERENCE") << c.text;
    }
    VXPPtr<IExpression> a;
    ASSERT_TRUE(repository->get(N("a"), a).isSuccess());
    EXPECT_EQ(a->getExpression(), N("a") + " := v + 1");
    EXPECT_EQ(valueOf(N("a")), U(4));
    EXPECT_EQ(valueOf(N("b")), U(5));
    ASSERT_TRUE(repository->setValue(N("v"), U(10)).isSuccess());
    EXPECT_EQ(valueOf(N("b")), U(12));

    // A new expression closing a cycle is not published at all.
    const XCode rc = repository->createExpression(CTX(), "c", "c + 1");
    EXPECT_EQ(rc.getString(), "CIRCULAR REFERENCE");
    EXPECT_FALSE(exists(N("c")));
}

TEST(Expressions, FailedUpdateKeepsTheFormulaAndIsLogged) {
    CapturedLog log(0);
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createVariable(N("v"), "", U(2)).isSuccess());
    VXPPtr<IExpression> e;
    ASSERT_TRUE(repository->createExpression(e, CTX(), "e", "v * 3").isSuccess());

    XCode rc = e->setExpression("SUM(v");
    EXPECT_EQ(rc.getString(), "6: Expecting ',' or ')'");
    EXPECT_EQ(e->getExpression(), N("e") + " := v * 3");
    EXPECT_EQ(valueOf(N("e")), U(6));
    // Written at level 4 whatever the verbosity: a verbosity-0 monitor drops it.
    EXPECT_TRUE(log->lines().empty());
    log->setVerbosity(4);
    rc = e->setExpression("NOSUCH(1)");
    EXPECT_EQ(rc.getString(), "1: Unknown function 'NOSUCH'");
    EXPECT_TRUE(log->contains(
        "[" + N("e") + "] Updating expression failed: 0x7FFFFFFF: 1: Unknown function 'NOSUCH'"));

    // An empty text changes nothing and succeeds.
    EXPECT_TRUE(e->setExpression("").isSuccess());
    EXPECT_EQ(e->getExpression(), N("e") + " := v * 3");
    EXPECT_EQ(valueOf(N("e")), U(6));
}

TEST(Expressions, TextThatDoesNotParseLeavesNothingPublished) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    VXPPtr<IExpression> e;
    const XCode rc = repository->createExpression(e, CTX(), "e", "1 +");
    EXPECT_EQ(rc.getString(), "4: Expecting parameter or ')'");
    EXPECT_FALSE(e);
    VXPPtr<IDriver> driver;
    EXPECT_TRUE(DRIVER::GET_IF("var/" + N("e"), driver).isErr());
}

TEST(Expressions, UnderAnExistingNameIsRefused) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createVariable(N("v"), "", U(2)).isSuccess());
    EXPECT_EQ(repository->createExpression(CTX(), "v", "1").getString(),
              "VARIABLE ALREADY EXISTS: " + N("v"));
    EXPECT_EQ(valueOf(N("v")), U(2));
}

TEST(Expressions, SetExpressionUpdatesOrCreates) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->setExpression(CTX(), "e", "1 + 2").isSuccess());
    EXPECT_EQ(valueOf(N("e")), U(3));
    VXPPtr<IRead> before = readable(N("e"));
    ASSERT_TRUE(repository->setExpression(CTX(), "e", "2 * 5").isSuccess());
    EXPECT_EQ(readable(N("e")).get(), before.get());
    EXPECT_EQ(valueOf(N("e")), U(10));
    // A name that is no expression cannot take a formula.
    ASSERT_TRUE(repository->createConstant(N("c"), "", U(1)).isSuccess());
    EXPECT_EQ(repository->setExpression(CTX(), "c", "2").getString(),
              "VARIABLE ALREADY EXISTS: " + N("c"));
}

TEST(Expressions, ContextNameIsPickedUpWhenItAppears) {
    // "up" in the context first means the plain name, else the qualified one.
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    const String plain = CTX() + "Up";
    ASSERT_TRUE(repository->createExpression(CTX(), "e", plain + "X + 0").isSuccess());
    EXPECT_EQ(valueOf(N("e")), Value(DST_ERR_NA));
    ASSERT_TRUE(repository->createVariable(N(plain.c_str()) + "X", "", U(1)).isSuccess());
    EXPECT_EQ(valueOf(N("e")), U(1));  // context.name, found by re-evaluation
    ASSERT_TRUE(repository->createVariable(plain + "X", "", U(2)).isSuccess());
    EXPECT_EQ(valueOf(N("e")), U(2));  // the plain name wins
    repository->destroyVariable(plain + "X");
    EXPECT_EQ(valueOf(N("e")), U(1));  // back to the qualified one
}

TEST(Expressions, PatternArgumentGainsMatchesOnReevaluation) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createVariable(N("line1.up"), "", Value(true)).isSuccess());
    ASSERT_TRUE(
        repository->createExpression(CTX(), "ups", "COUNTIF(" + N("line%.up") + ")").isSuccess());
    EXPECT_EQ(valueOf(N("ups")), U(1));
    ASSERT_TRUE(repository->createVariable(N("line2.up"), "", Value(true)).isSuccess());
    EXPECT_EQ(valueOf(N("ups")), U(2));
    ASSERT_TRUE(repository->setValue(N("line1.up"), Value(false)).isSuccess());
    EXPECT_EQ(valueOf(N("ups")), U(1));
    repository->destroyVariable(N("line2.up"));
    EXPECT_EQ(valueOf(N("ups")), U(0));
}

TEST(Expressions, ObserversAreToldOfEachSuccessfulUpdate) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    VXPPtr<IExpression> e;
    ASSERT_TRUE(repository->createExpression(e, CTX(), "e", "1").isSuccess());
    CountingExpressionObserver first;
    CountingExpressionObserver second;
    e->addExpressionObserver(&first, true);
    EXPECT_EQ(first.count, 1);
    EXPECT_EQ(first.lastSource.get(), e.get());
    e->addExpressionObserver(&second, false);
    ASSERT_TRUE(e->setExpression("2").isSuccess());
    EXPECT_TRUE(e->setExpression("2 +").isErr());
    EXPECT_EQ(first.count, 2);
    EXPECT_EQ(second.count, 1);
    e->removeExpressionObserver(&first);
    ASSERT_TRUE(e->setExpression("3").isSuccess());
    EXPECT_EQ(first.count, 2);
    EXPECT_EQ(second.count, 2);
    e->removeExpressionObserver(&second);
    EXPECT_EQ(e->getContext(), CTX());
}

TEST(Expressions, UpdateIsTracedAboveVerbosityTwo) {
    CapturedLog log(3);
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createExpression(CTX(), "e", "7 * 6").isSuccess());
    EXPECT_TRUE(log->contains("[" + N("e") + "] Update expression: 7 * 6"));
    // Nobody had read the name before, so its old value is still undefined.
    EXPECT_TRUE(log->contains("[" + N("e") + "] #UNDEF! -> 42"));
}

TEST(Expressions, EvaluateExpressionReturnsOneValuePerRootAndPublishesNothing) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createVariable(N("p1.load"), "", U(3)).isSuccess());
    ASSERT_TRUE(repository->createVariable(N("p2.load"), "", U(4)).isSuccess());
    VXVector<Value> values{Value("stale")};

    ASSERT_TRUE(repository->evaluateExpression(CTX(), "p1.load * 2", values).isSuccess());
    EXPECT_EQ(values, (VXVector<Value>{U(6)}));
    ASSERT_TRUE(repository->evaluateExpression(CTX(), N("p%.load"), values).isSuccess());
    EXPECT_EQ(values, (VXVector<Value>{U(3), U(4)}));
    ASSERT_TRUE(repository->evaluateExpression(CTX(), N("q%.load"), values).isSuccess());
    EXPECT_TRUE(values.empty());
    EXPECT_EQ(repository->evaluateExpression(CTX(), "a b", values).getString(),
              "3: Expecting end of expression");
    EXPECT_TRUE(values.empty());
    EXPECT_FALSE(exists(N("a")));
}

TEST(Expressions, ExpressionReadsAsAValueButIsNotWritable) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createExpression(CTX(), "e", "2 * 21").isSuccess());
    EXPECT_EQ(valueOf(N("e")), U(42));
    VXPPtr<IWrite> writable;
    EXPECT_EQ(repository->get(N("e"), writable).getString(),
              "VARIABLE DOES NOT HAVE WRITE ACCESS: " + N("e"));
    EXPECT_EQ(readable(N("e"))->getDescription(), N("e") + " := 2 * 21");
}

TEST(Expressions, ReevaluationOfAnUntouchedFormulaChangesNothing) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createVariable(N("v"), "", U(1)).isSuccess());
    VXPPtr<IExpression> e;
    ASSERT_TRUE(repository->createExpression(e, CTX(), "e", "v + 1").isSuccess());
    CountingExpressionObserver observer;
    e->addExpressionObserver(&observer, false);
    ASSERT_TRUE(repository->createVariable(N("unrelated"), "", U(1)).isSuccess());
    EXPECT_TRUE(repository->reevaluateExpressions().isSuccess());
    EXPECT_EQ(observer.count, 0);
    // A name it looked up appearing makes it parse again.
    ASSERT_TRUE(repository->createVariable(N("v.v"), "", U(1)).isSuccess());
    EXPECT_EQ(observer.count, 0);
    repository->destroyVariable(N("v"));
    EXPECT_EQ(observer.count, 1);
    e->removeExpressionObserver(&observer);
}

}  // namespace
}  // namespace VX::SysEvent::testing
