// Creating, finding, changing and destroying constants and variables through
// the Repository, with the errors of each step and the cases of a name that
// is already in use.
#include <gtest/gtest.h>

#include "host/driver_repository.h"
#include "repository/repository_test_support.h"
#include "sysevent/repository/constant.h"
#include "sysevent/repository/identifiers.h"
#include "sysevent/repository/variable.h"

namespace VX::SysEvent::testing {
namespace {

TEST(Objects, ConstantIsReadableButNotWritable) {
    ASSERT_TRUE(Repository::CREATE_CONSTANT(N("pi"), "circle", Value(3.25)).isSuccess());
    EXPECT_EQ(valueOf(N("pi")), Value(3.25));

    VXPPtr<IRead> pi = readable(N("pi"));
    ASSERT_TRUE(pi);
    EXPECT_EQ(pi->getName(), N("pi"));
    EXPECT_EQ(pi->getDescription(), "circle");
    EXPECT_EQ(pi->getType(), "constant");

    VXPPtr<IWrite> writable;
    XCode rc = Repository::GET(N("pi"), writable);
    EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
    EXPECT_EQ(rc.getString(), "VARIABLE DOES NOT HAVE WRITE ACCESS: " + N("pi"));
    EXPECT_FALSE(writable);

    VXLockPtr<Repository> repository(Repository::INSTANCE());
    VXPPtr<IExpression> expression;
    rc = repository->get(N("pi"), expression);
    EXPECT_EQ(rc.getString(), "VARIABLE IS NOT AN EXPRESSION: " + N("pi"));
}

TEST(Objects, PublishedUnderDriverNameWithIdentifiers) {
    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(1)).isSuccess());
    VXPPtr<IDriver> driver;
    ASSERT_TRUE(DRIVER::GET_IF("var/" + N("v"), driver).isSuccess());
    EXPECT_EQ(driver->getDID(), DID_Variable());
    EXPECT_EQ(DID_Variable().toString(), "76198393-6550-439e-987e-2c4a72011f45");
    EXPECT_EQ(INode::IID().toString(), "be1030be-a71f-4fbb-86b7-dd788147fabc");
    EXPECT_EQ(IRead::IID().toString(), "7cd0c00a-2a30-4629-9150-c5f660ee4b79");
    EXPECT_EQ(IWrite::IID().toString(), "982c0ea2-661e-4120-88a0-329d606bd361");
    EXPECT_EQ(IExpression::IID().toString(), "c9386e21-1ce2-4f5b-aaee-6963a31f920e");
    EXPECT_EQ(CID_Constant().toString(), "bd97785e-65f8-4469-b71c-5b8daa98d7e2");
    EXPECT_EQ(CID_Variable().toString(), "1caf5d34-3259-4230-807f-032622a2bcc2");
    EXPECT_EQ(CID_Expression().toString(), "4d1a0542-b881-49e0-8bdd-62cf996360a4");
    EXPECT_EQ(CID_ExpressionSet().toString(), "5ae645a5-91c7-48c4-b0b7-68d66e19960e");
    // A variable answers every interface but IExpression, bases first.
    EXPECT_TRUE(driver->hasIf<INode>());
    EXPECT_TRUE(driver->hasIf<IRead>());
    EXPECT_TRUE(driver->hasIf<IWrite>());
    EXPECT_TRUE(driver->hasIf<IInfo>());
    EXPECT_FALSE(driver->hasIf<IExpression>());
}

TEST(Objects, VariableIsCreatedSetReadAndDestroyed) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createVariable(N("x"), "an x", U(7)).isSuccess());
    EXPECT_EQ(valueOf(N("x")), U(7));
    EXPECT_EQ(readable(N("x"))->getType(), "variable");

    ASSERT_TRUE(repository->setValue(N("x"), Value("seven")).isSuccess());
    EXPECT_EQ(valueOf(N("x")), Value("seven"));
    EXPECT_EQ(readable(N("x"))->getDescription(), "an x");

    repository->destroyVariable(N("x"));
    EXPECT_FALSE(exists(N("x")));
    Value v;
    const XCode rc = repository->getValue(N("x"), v);
    EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
    EXPECT_EQ(rc.getString(), "VARIABLE DOES NOT EXIST: " + N("x"));
    // Destroying what is gone is no error, and changes nothing.
    repository->destroy(N("x"));
    EXPECT_FALSE(exists(N("x")));
}

TEST(Objects, SettingAnUnknownNameCreatesAVariableOnTheFly) {
    ASSERT_FALSE(exists(N("fresh")));
    ASSERT_TRUE(Repository::SET_VALUE(N("fresh"), Value(true)).isSuccess());
    VXPPtr<IRead> fresh = readable(N("fresh"));
    ASSERT_TRUE(fresh);
    EXPECT_EQ(fresh->getType(), "variable");
    EXPECT_EQ(fresh->getDescription(), "");
    EXPECT_EQ(fresh->getValue(), Value(true));
}

TEST(Objects, DatabaseNamesComeIntoBeingWhenLookedUp) {
    const String name = "db." + N("Port:1.mtu");
    VXPPtr<IWrite> writable;
    ASSERT_TRUE(Repository::GET(name, writable).isSuccess());
    ASSERT_TRUE(writable);
    VXPPtr<IRead> field = readable(name);
    EXPECT_EQ(field->getDescription(), "Database field");
    EXPECT_EQ(field->getValue(), Value(DST_ERR_NA));
    ASSERT_TRUE(writable->setValue(U(1500)).isSuccess());
    EXPECT_EQ(valueOf(name), U(1500));

    // Not a database name: a plain failure, nothing made.
    VXPPtr<IWrite> none;
    EXPECT_EQ(Repository::GET(N("db.x"), none).getString(),
              "VARIABLE DOES NOT EXIST: " + N("db.x"));
    EXPECT_FALSE(exists(N("db.x")));
}

TEST(Objects, ConstantUnderAnExistingNameIsRefusedAndChangesNothing) {
    ASSERT_TRUE(Repository::CREATE_CONSTANT(N("c"), "first", U(1)).isSuccess());
    XCode rc = Repository::CREATE_CONSTANT(N("c"), "second", U(2));
    EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
    EXPECT_EQ(rc.getString(), "VARIABLE ALREADY EXISTS: " + N("c"));
    EXPECT_EQ(valueOf(N("c")), U(1));
    EXPECT_EQ(readable(N("c"))->getDescription(), "first");

    ASSERT_TRUE(Repository::SET_VALUE(N("v"), U(5)).isSuccess());
    EXPECT_EQ(Repository::CREATE_CONSTANT(N("v"), "", U(6)).getString(),
              "VARIABLE ALREADY EXISTS: " + N("v"));
    EXPECT_EQ(valueOf(N("v")), U(5));
    EXPECT_EQ(readable(N("v"))->getType(), "variable");
}

TEST(Objects, SettingAConstantOrExpressionFailsAndKeepsItsValue) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createConstant(N("c"), "", U(1)).isSuccess());
    ASSERT_TRUE(repository->createExpression(CTX(), "e", "c + 1").isSuccess());

    for (const char* name : {"c", "e"}) {
        const XCode rc = repository->setValue(N(name), U(99));
        EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE) << name;
        EXPECT_EQ(rc.getString(), "COULD NOT CREATE VARIABLE ON THE FLY: " + N(name) +
                                      ": VARIABLE DOES NOT HAVE WRITE ACCESS: " + N(name));
    }
    EXPECT_EQ(valueOf(N("c")), U(1));
    EXPECT_EQ(valueOf(N("e")), U(2));
    EXPECT_EQ(readable(N("c"))->getType(), "constant");
    EXPECT_EQ(readable(N("e"))->getType(), "expression");
}

TEST(Objects, CreatingAnExistingVariableWritesItAndReplacesItsDescription) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createVariable(N("v"), "old", U(1)).isSuccess());
    VXPPtr<IRead> before = readable(N("v"));
    RecordingObserver observer;
    before->addValueObserver(&observer, false);

    ASSERT_TRUE(repository->createVariable(N("v"), "new", U(2)).isSuccess());
    EXPECT_EQ(readable(N("v")).get(), before.get());  // still the same object
    EXPECT_EQ(before->getDescription(), "new");
    EXPECT_EQ(valueOf(N("v")), U(2));
    EXPECT_EQ(observer.newValues(), std::vector<Value>{U(2)});
    before->removeValueObserver(&observer);
}

TEST(Objects, ClientMadeObjectUnderATakenNameNeverTouchesTheName) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createConstant(N("c"), "", U(1)).isSuccess());
    ASSERT_TRUE(repository->createExpression(CTX(), "e", "c * 10").isSuccess());
    {
        VXPtr<CConstant> intruder(new CConstant(N("c"), "", U(2)));
        EXPECT_EQ(valueOf(N("e")), U(10));
        EXPECT_EQ(intruder->getValue(), U(2));
        const XCode rc = repository->addConstant(intruder);
        EXPECT_EQ(rc.getString(), "DRIVER ALREADY EXISTS: var/" + N("c"));

        VXPtr<CVariable> shadow(new CVariable(N("c"), ""));
        EXPECT_EQ(shadow->setValue(U(3)).getString(), "VARIABLE ALREADY EXISTS: " + N("c"));
        EXPECT_EQ(repository->addVariable(shadow).getString(),
                  "DRIVER ALREADY EXISTS: var/" + N("c"));
    }  // both die here without unbinding the name
    EXPECT_EQ(valueOf(N("c")), U(1));
    EXPECT_EQ(valueOf(N("e")), U(10));
}

TEST(Objects, ClientMadeConstantIsBoundWhenPublished) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createExpression(CTX(), "e", N("k") + " + 1").isSuccess());
    EXPECT_EQ(valueOf(N("e")), Value(DST_ERR_NA));
    VXPtr<CConstant> k(new CConstant(N("k"), "made by hand", U(41)));
    EXPECT_EQ(valueOf(N("e")), U(42));  // a free name is bound at construction
    ASSERT_TRUE(repository->addConstant(k).isSuccess());
    EXPECT_EQ(readable(N("k"))->getDescription(), "made by hand");
    k = nullptr;
    repository->destroyConstant(N("k"));
    EXPECT_EQ(valueOf(N("e")), Value(DST_ERR_NA));
}

TEST(Objects, ObjectKeptByAClientOutlivesItsNameWithoutUnbindingASuccessor) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createConstant(N("c"), "", U(1)).isSuccess());
    VXPPtr<IRead> old = readable(N("c"));
    repository->destroyConstant(N("c"));
    EXPECT_EQ(old->getValue(), Value(DST_ERR_NA));
    ASSERT_TRUE(repository->createConstant(N("c"), "", U(2)).isSuccess());
    old = nullptr;  // the old object dies now
    EXPECT_EQ(valueOf(N("c")), U(2));
}

TEST(Objects, DiagnosticRows) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->createConstant(N("c"), "a constant", U(3)).isSuccess());
    ASSERT_TRUE(repository->createVariable(N("v"), "a variable", Value("x")).isSuccess());
    ASSERT_TRUE(repository->createExpression(CTX(), "e", "c + 1").isSuccess());

    struct Case {
        const char* name;
        std::vector<InfoContainer::Row> rows;
    };
    const Case cases[] = {
        {"c",
         {{2, 1, ">Constant", N("c")}, {3, 1, "Description", "a constant"}, {3, 1, "Value", "3"}}},
        {"v",
         {{2, 1, ">Variable", N("v")},
          {3, 1, "Description", "a variable"},
          {3, 1, "Value", "'x'"}}},
        {"e",
         {{2, 1, ">Expression", N("e")},
          {3, 1, "Context", CTX()},
          {3, 1, "Expression", N("e") + " := c + 1"},
          {3, 1, "Value", "4"}}},
    };
    for (const Case& c : cases) {
        VXPPtr<IInfo> info;
        ASSERT_TRUE(DRIVER::GET_IF("var/" + N(c.name), info).isSuccess());
        InfoContainer rows;
        info->getInfo(rows, 5, 2, 1, 1, ">");
        EXPECT_EQ(rows.getRows(), c.rows) << c.name;

        // Depth limit: only the first row; beyond the limits: nothing.
        InfoContainer shallow;
        info->getInfo(shallow, 2, 2, 1, 1, ">");
        EXPECT_EQ(shallow.size(), 1u) << c.name;
        InfoContainer none;
        info->getInfo(none, 5, 2, 0, 1, ">");
        info->getInfo(none, 1, 2, 5, 1, ">");
        EXPECT_EQ(none.size(), 0u) << c.name;
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
