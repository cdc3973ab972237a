// The ten timer- and clock-driven functions in the catalogue: registered
// texts, the classes made, how they treat errors and times, and their
// argument counts; and the complete list of the 58 built-in names.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "sysevent/functions/debounce.h"
#include "sysevent/functions/delay.h"
#include "sysevent/functions/once.h"
#include "sysevent/functions/stable.h"
#include "sysevent/functions/within.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Catalogue = TemporalTest;

struct Entry {
    const char* name;
    const char* parameters;
    const char* description;
    std::set<unsigned> counts;  // accepted argument counts
    bool temporal;              // sets its own times
    bool seesErrors;
};

const Entry ENTRIES[] = {
    {"DEBOUNCE",
     "expr,time",
     "Delays changes of the first argument to the output by the specified time difference",
     {2},
     false,
     false},
    {"DEBOUNCEIF",
     "expr,time,condition",
     "Delays changes of the first argument to the output by the specified time difference if "
     "the condition is true",
     {3},
     false,
     false},
    {"DEBOUNCEINC",
     "expr,time",
     "Only delays increments of the first argument to the output by the specified time "
     "difference",
     {2},
     false,
     false},
    {"DEBOUNCEDEC",
     "expr,time",
     "Only delays decrements of the first argument to the output by the specified time "
     "difference",
     {2},
     false,
     false},
    {"DELAY",
     "expr,time",
     "Delays changes of the first argument by the specified time difference",
     {2},
     false,
     false},
    {"STABLE",
     "expr,time",
     "True if the first argument does not change for the specified time difference",
     {2},
     false,
     false},
    {"NOW", "", "Returns the current date/time", {0}, true, false},
    {"TODAY", "", "Returns the current date", {0}, true, false},
    {"ONCE", "", "True if the argument is true; never switches back to false", {1}, true, true},
    {"WITHIN",
     "temp-expr,period",
     "Returns true if the temporal-expression argument evaluates to true within the specified "
     "time period",
     {2},
     true,
     false},
};

bool madeAsItsClass(const char* name, FunctionNode* f) {
    const String n(name);
    if (n == "DEBOUNCE") return dynamic_cast<DEBOUNCE*>(f) && !dynamic_cast<DEBOUNCEIF*>(f);
    if (n == "DEBOUNCEIF") return dynamic_cast<DEBOUNCEIF*>(f);
    if (n == "DEBOUNCEINC") return dynamic_cast<DEBOUNCEINC*>(f);
    if (n == "DEBOUNCEDEC") return dynamic_cast<DEBOUNCEDEC*>(f);
    if (n == "DELAY") return dynamic_cast<DELAY*>(f);
    if (n == "STABLE") return dynamic_cast<STABLE*>(f);
    if (n == "NOW") return dynamic_cast<NOW*>(f);
    if (n == "TODAY") return dynamic_cast<TODAY*>(f);
    if (n == "ONCE") return dynamic_cast<ONCE*>(f);
    if (n == "WITHIN") return dynamic_cast<WITHIN*>(f);
    return false;
}

TEST_F(Catalogue, RegistersTheTemporalFunctions) {
    for (const Entry& e : ENTRIES) {
        FunctionFactory::FactoryBase* factory = FunctionFactory::INSTANCE().get(e.name);
        ASSERT_NE(factory, nullptr) << e.name;
        EXPECT_EQ(factory->getParameterText(), e.parameters) << e.name;
        EXPECT_EQ(factory->getDescription(), e.description) << e.name;
        VXLWPtr<FunctionNode> f = FunctionFactory::CREATE(e.name);
        EXPECT_TRUE(madeAsItsClass(e.name, f.get())) << e.name;
        EXPECT_EQ(f->getFunctionName(), e.name);
        EXPECT_EQ(f->getParameterText(), e.parameters);
        EXPECT_EQ(f->handlesTimeManually(), e.temporal) << e.name;
        EXPECT_EQ(f->handlesErrorsManually(), e.seesErrors) << e.name;
        EXPECT_EQ(dynamic_cast<NonTemporalFunctionNode*>(f.get()) == nullptr, e.temporal) << e.name;
    }
}

TEST_F(Catalogue, ChecksArgumentCounts) {
    for (const Entry& e : ENTRIES) {
        VXLWPtr<FunctionNode> f = FunctionFactory::CREATE(e.name);
        VXVector<VXLWPtr<Node>> args;
        for (unsigned count = 0; count <= 4; ++count) {
            const XCode rc = f->verifyArguments();
            if (e.counts.count(count)) {
                EXPECT_TRUE(rc.isSuccess()) << e.name << " with " << count;
            } else {
                EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE) << e.name << " with " << count;
                EXPECT_EQ(rc.getString(), String(e.name) == "DELAY" ? "expr,time" : "")
                    << e.name << " with " << count;
            }
            args.push_back(leaf(num(count)));
            ASSERT_TRUE(f->addArgument(args.back().get()).isSuccess());
        }
    }
}

TEST_F(Catalogue, ListsAllFiftyEightFunctions) {
    const std::set<String> expected = {
        "ABS",      "AND",        "BITAND",      "BITLSHIFT",   "BITNOT",  "BITOR",  "BITRSHIFT",
        "BITXOR",   "BOOL",       "CEILING",     "COUNT",       "COUNTIF", "DATE",   "DATETIME",
        "DEBOUNCE", "DEBOUNCEIF", "DEBOUNCEINC", "DEBOUNCEDEC", "DELAY",   "DIFF",   "DIV",
        "EPOCH",    "EQ",         "FLOOR",       "IDENTITY",    "IF",      "INT",    "ISERR",
        "LT",       "LE",         "GT",          "GE",          "MOD",     "MROUND", "NEG",
        "NEQ",      "NOT",        "NOW",         "ONCE",        "OR",      "POWER",  "PRODUCT",
        "QUOTIENT", "ROUND",      "SECOND",      "MINUTE",      "HOUR",    "DAY",    "WEEKDAY",
        "MONTH",    "YEAR",       "SQRT",        "STABLE",      "SUM",     "TIME",   "TODAY",
        "WITHIN",   "XOR"};
    ASSERT_EQ(expected.size(), 58u);
    VXVector<String> names{"left over"};
    FunctionFactory::INSTANCE().getNames(names);
    const std::set<String> listed(names.begin(), names.end());
    EXPECT_EQ(listed.size(), names.size());  // each name once
    EXPECT_EQ(listed, expected);
}

}  // namespace
}  // namespace VX::SysEvent::testing
