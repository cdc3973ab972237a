// The example client: what init() publishes and prints, its four accessors,
// and that destroying it removes every name it made.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "observer/observer_test_support.h"
#include "sysevent/repository/example_client.h"
#include "sysevent/repository/typed_accessors.h"

namespace VX::SysEvent::testing {
namespace {

using ExampleClient = ObserverTest;

const char* const kNames[] = {"example.false", "example.pi", "example.int", "example.expr"};

TEST_F(ExampleClient, InitPublishesObservesAndRaisesTheInteger) {
    auto example = std::make_unique<VX::SysEventExample>();
    ::testing::internal::CaptureStdout();
    XCode rc = example->init();
    const std::string printed = ::testing::internal::GetCapturedStdout();
    ASSERT_TRUE(rc.isSuccess()) << rc.toString().str();
    EXPECT_EQ(printed,
              "Observed variable example.int changed to 2\n"
              "Observed variable example.expr changed to " +
                  Value(6.28).toString().str() + "\n");

    bool isFalse = true;
    double pi = 0;
    EXPECT_TRUE(GET_VALUE("example.false", isFalse).isSuccess());
    EXPECT_FALSE(isFalse);
    EXPECT_TRUE(GET_VALUE("example.pi", pi).isSuccess());
    EXPECT_DOUBLE_EQ(pi, 3.14);
    VXPPtr<IRead> expr = readOf("example.expr");
    ASSERT_TRUE(expr);
    EXPECT_EQ(expr->getType(), "expression");
    expr = nullptr;

    unsigned long long implicit = 0, explicit_ = 0;
    EXPECT_TRUE(example->GET_INT_IMPLICIT(implicit).isSuccess());
    EXPECT_TRUE(example->GET_INT_EXPLICIT(explicit_).isSuccess());
    EXPECT_EQ(implicit, 2u);
    EXPECT_EQ(explicit_, 2u);

    ::testing::internal::CaptureStdout();
    EXPECT_TRUE(example->SET_INT_IMPLICIT(10).isSuccess());
    EXPECT_TRUE(example->SET_INT_EXPLICIT(10).isSuccess());  // unchanged: no line
    const std::string set = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(set,
              "Observed variable example.int changed to 10\n"
              "Observed variable example.expr changed to " +
                  Value(31.4).toString().str() + "\n");
    double product = 0;
    EXPECT_TRUE(GET_VALUE("example.expr", product).isSuccess());
    EXPECT_DOUBLE_EQ(product, 31.4);

    // Another kind: the typed accessor names the problem, the explicit
    // check gives the bare generic code.
    ::testing::internal::CaptureStdout();
    ASSERT_TRUE(Repository::SET_VALUE("example.int", Value(1.5)).isSuccess());
    unsigned long long n = 7;
    XCode implicitRc = example->GET_INT_IMPLICIT(n);
    XCode explicitRc = example->GET_INT_EXPLICIT(n);
    EXPECT_EQ(implicitRc.getString(), "INVALID DATA TYPE");
    EXPECT_EQ(explicitRc.getValue(), XCode::GENERIC_FAILURE);
    EXPECT_FALSE(explicitRc.hasString());
    EXPECT_EQ(n, 7u);

    example.reset();
    ::testing::internal::GetCapturedStdout();
    for (const char* name : kNames) {
        Value v;
        EXPECT_EQ(Repository::GET_VALUE(name, v).getString(),
                  String("VARIABLE DOES NOT EXIST: ") + name);
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
