// Constants, variables and expressions through the Repository: every text a
// refused call returns (and that the refusal changes nothing), and
// client-made objects under taken or free names. (Each kind's life and
// diagnostic rows are in the engine_repository golden transcript.)
#include <gtest/gtest.h>

#include <iterator>

#include "host/component/driver_repository.h"
#include "repository/repository_test_support.h"
#include "sysevent/repository/constant.h"
#include "sysevent/repository/observer.h"
#include "sysevent/repository/variable.h"

namespace VX::SysEvent::testing {
namespace {

using Objects = RepositoryTest;

TEST_F(Objects, EveryRefusalHasItsTextAndChangesNothing) {
    ASSERT_OK(repo->createConstant(N("c"), "first", U(1)));
    var("v", U(5));
    expr("e", "c + 1");
    const String missing = N("missing"), noWrite = "VARIABLE DOES NOT HAVE WRITE ACCESS: ";
    const String taken = "DRIVER ALREADY EXISTS: var/";
    VXPPtr<IWrite> writable;
    VXPPtr<IExpression> expression, unparsed, refused;
    VXVector<VXPPtr<INode>> nodes{VXPPtr<INode>()};
    VXVector<String> prefixes;
    VXVector<Value> values{Value("stale")};
    Observer observer;
    Value value;
    struct Case {
        XCode rc;  // made in order, as the array is initialised
        String text;
    };
    const Case cases[] = {
        {repo->get(N("c"), writable), noWrite + N("c")},
        {Repository::GET(N("e"), writable), noWrite + N("e")},
        {repo->get(N("c"), expression), "VARIABLE IS NOT AN EXPRESSION: " + N("c")},
        {repo->getValue(missing, value), "VARIABLE DOES NOT EXIST: " + missing},
        {repo->get(missing, nodes), "VARIABLE DOES NOT EXIST: " + missing},
        {repo->addObserver(observer, missing, true), "VARIABLE DOES NOT EXIST: " + missing},
        // Not a database name, so nothing is made for it.
        {Repository::GET(N("db.x"), writable), "VARIABLE DOES NOT EXIST: " + N("db.x")},
        // A name in use: the driver repository's own refusal.
        {Repository::CREATE_CONSTANT(N("c"), "second", U(2)), taken + N("c")},
        {Repository::CREATE_CONSTANT(N("v"), "", U(6)), taken + N("v")},
        {repo->createExpression(refused, CTX(), "v", "1"), taken + N("v")},
        {repo->setExpression(CTX(), "c", "2"), taken + N("c")},
        {repo->createExpression(unparsed, CTX(), "bad", "1 +"), "4: Expecting parameter or ')'"},
        {repo->evaluateExpression(CTX(), "a b", values), "3: Expecting end of expression"},
        {repo->get(N("x{[}"), nodes), "INVALID REGULAR EXPRESSION"},
        {repo->getMatchingNamePrefixes(N("x{(}"), prefixes), "INVALID REGULAR EXPRESSION"},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(cases[i].rc.getValue(), XCode::GENERIC_FAILURE);
        EXPECT_EQ(cases[i].rc.getString(), cases[i].text);
    }
    EXPECT_FALSE(writable || expression);
    // The out parameter is set before the expression is registered.
    EXPECT_TRUE(unparsed && refused);
    EXPECT_EQ(refused->getContext(), CTX());
    EXPECT_TRUE(nodes.empty());
    EXPECT_TRUE(values.empty());
    EXPECT_EQ(valueOf(N("c")), U(1));
    EXPECT_EQ(readable(N("c"))->getDescription(), "first");
    EXPECT_EQ(valueOf(N("v")), U(5));
    EXPECT_EQ(readable(N("v"))->getType(), "variable");
    EXPECT_EQ(valueOf(N("e")), U(2));
    for (const String& gone : {missing, N("db.x"), N("bad"), N("a")}) {
        EXPECT_FALSE(exists(gone)) << gone.c_str();
    }
    VXPPtr<IDriver> driver;
    EXPECT_TRUE(DRIVER::GET_IF("var/" + N("bad"), driver).isErr());
}

TEST_F(Objects, ClientMadeObjectsUnderATakenNameAndAFreeOne) {
    constant("c", U(1));
    expr("e", "c * 10");
    {
        VXPtr<CConstant> intruder(new CConstant(N("c"), "", U(2)));
        EXPECT_EQ(valueOf(N("e")), U(10));
        EXPECT_EQ(intruder->getValue(), U(2));
        EXPECT_EQ(repo->addConstant(intruder).getString(), "DRIVER ALREADY EXISTS: var/" + N("c"));
        // A variable writes the name's node whoever has the name; publishing
        // it only hands the name's object its description.
        VXPtr<CVariable> shadow(new CVariable(N("c"), "shadow"));
        ASSERT_OK(shadow->setValue(U(3)));
        EXPECT_EQ(valueOf(N("e")), U(30));
        ASSERT_OK(repo->addVariable(shadow));
        EXPECT_EQ(readable(N("c"))->getType(), "constant");
        EXPECT_EQ(readable(N("c"))->getDescription(), "shadow");
    }  // both die here without unbinding the name
    EXPECT_EQ(valueOf(N("c")), U(3));
    EXPECT_EQ(valueOf(N("e")), U(30));

    // A free name is bound at construction, before it is published.
    expr("k1", N("k") + " + 1");
    EXPECT_EQ(valueOf(N("k1")), kNA);
    VXPtr<CConstant> k(new CConstant(N("k"), "made by hand", U(41)));
    EXPECT_EQ(valueOf(N("k1")), U(42));
    ASSERT_OK(repo->addConstant(k));
    EXPECT_EQ(readable(N("k"))->getDescription(), "made by hand");
    k = nullptr;
    repo->destroyConstant(N("k"));
    EXPECT_EQ(valueOf(N("k1")), kNA);
    // Never published, it unbinds the name when it dies.
    k = new CConstant(N("k"), "", U(1));
    EXPECT_EQ(valueOf(N("k1")), U(2));
    k = nullptr;
    EXPECT_EQ(valueOf(N("k1")), kNA);

    // An object a client keeps outlives its name without unbinding the
    // object published under the name after it.
    VXPPtr<IRead> old = readable(N("c"));
    repo->destroyConstant(N("c"));
    EXPECT_EQ(old->getValue(), kNA);
    constant("c", U(2));
    old = nullptr;  // the old object dies now
    EXPECT_EQ(valueOf(N("c")), U(2));
}

}  // namespace
}  // namespace VX::SysEvent::testing
