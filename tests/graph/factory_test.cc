// The function factory: registration by static objects, lookup, creation,
// listing, duplicate names and unregistration.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "graph/graph_test_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent::testing {
namespace {

// Registered while the test program loads, like the catalogue's factories.
FunctionFactory::Factory<TSUM> s_functionFactoryTSUM("TSUM", "[summand]*", "Sums for the tests");
FunctionFactory::Factory<TNEG> s_functionFactoryTNEG("TNEG", "number", "100 minus the number");

using Factory = GraphTest;

bool listed(const char* name) {
    VXVector<String> names{"stale entry"};
    FunctionFactory::INSTANCE().getNames(names);
    EXPECT_EQ(std::find(names.begin(), names.end(), String("stale entry")), names.end());
    return std::find(names.begin(), names.end(), String(name)) != names.end();
}

TEST_F(Factory, CreatesAFreshDirtyNodeOnEveryCall) {
    VXLWPtr<FunctionNode> a = FunctionFactory::CREATE("TSUM");
    VXLWPtr<FunctionNode> b = FunctionFactory::CREATE("TSUM");
    ASSERT_TRUE(a && b);
    EXPECT_NE(a.get(), b.get());
    EXPECT_NE(dynamic_cast<TSUM*>(a.get()), nullptr);
    EXPECT_EQ(a->getFunctionName(), "TSUM");
    EXPECT_EQ(a->getParameterText(), "[summand]*");
    EXPECT_TRUE(a->isDirty());
    EXPECT_EQ(a->getChildCount(), 0u);
    EXPECT_EQ(a->getRefCount(), 1u);
}

TEST_F(Factory, LookupIsExactAndCaseSensitive) {
    FunctionFactory& f = FunctionFactory::INSTANCE();
    EXPECT_EQ(f.get("TNEG"), &s_functionFactoryTNEG);
    EXPECT_EQ(f.get("TNEG")->getDescription(), "100 minus the number");
    EXPECT_EQ(f.get("TNEG")->getParameterText(), "number");
    for (const char* missing : {"tneg", "TNEG ", "TNE", ""}) {
        EXPECT_EQ(f.get(missing), nullptr) << missing;
        EXPECT_TRUE(FunctionFactory::CREATE(missing).isNull()) << missing;
    }
    EXPECT_TRUE(listed("TSUM"));
    EXPECT_TRUE(listed("TNEG"));
}

TEST_F(Factory, SecondRegistrationWaitsUntilTheFirstIsGone) {
    auto first = std::make_unique<FunctionFactory::Factory<TSUM>>("TTWICE", "first", "");
    auto second = std::make_unique<FunctionFactory::Factory<TNEG>>("TTWICE", "second", "");
    EXPECT_EQ(FunctionFactory::CREATE("TTWICE")->getParameterText(), "first");
    VXVector<String> names;
    FunctionFactory::INSTANCE().getNames(names);
    EXPECT_EQ(std::count(names.begin(), names.end(), String("TTWICE")), 1);
    first.reset();
    EXPECT_EQ(FunctionFactory::CREATE("TTWICE")->getParameterText(), "second");
    second.reset();
    EXPECT_TRUE(FunctionFactory::CREATE("TTWICE").isNull());
    EXPECT_FALSE(listed("TTWICE"));
    // Unregistering a name that is not there is ignored.
    FunctionFactory::INSTANCE().unregisterFactory("TTWICE");
}

}  // namespace
}  // namespace VX::SysEvent::testing
