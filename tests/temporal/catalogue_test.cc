// The ten timer- and clock-driven functions in the catalogue: registered
// texts, the classes made, how they treat errors and times, and their
// argument counts; and the complete list of the 58 built-in names.
#include <gtest/gtest.h>

#include <set>
#include <typeinfo>

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
    const std::type_info* type;  // the class made
    const char* parameters;
    unsigned arity;  // the one accepted argument count
    bool temporal;   // sets its own times
    bool seesErrors;
    const char* description;
};

const Entry ENTRIES[] = {
    {"DEBOUNCE", &typeid(DEBOUNCE), "expr,time", 2, false, false,
     "Delays changes of the first argument to the output by the specified time difference"},
    {"DEBOUNCEIF", &typeid(DEBOUNCEIF), "expr,time,condition", 3, false, false,
     "Delays changes of the first argument to the output by the specified time difference if "
     "the condition is true"},
    {"DEBOUNCEINC", &typeid(DEBOUNCEINC), "expr,time", 2, false, false,
     "Only delays increments of the first argument to the output by the specified time "
     "difference"},
    {"DEBOUNCEDEC", &typeid(DEBOUNCEDEC), "expr,time", 2, false, false,
     "Only delays decrements of the first argument to the output by the specified time "
     "difference"},
    {"DELAY", &typeid(DELAY), "expr,time", 2, false, false,
     "Delays changes of the first argument by the specified time difference"},
    {"STABLE", &typeid(STABLE), "expr,time", 2, false, false,
     "True if the first argument does not change for the specified time difference"},
    {"NOW", &typeid(NOW), "", 0, true, false, "Returns the current date/time"},
    {"TODAY", &typeid(TODAY), "", 0, true, false, "Returns the current date"},
    {"ONCE", &typeid(ONCE), "", 1, true, true,
     "True if the argument is true; never switches back to false"},
    {"WITHIN", &typeid(WITHIN), "temp-expr,period", 2, true, false,
     "Returns true if the temporal-expression argument evaluates to true within the specified "
     "time period"},
};

TEST_F(Catalogue, RegistersTheTemporalFunctions) {
    for (const Entry& e : ENTRIES) {
        SCOPED_TRACE(e.name);
        FunctionFactory::FactoryBase* factory = FunctionFactory::INSTANCE()->get(e.name);
        ASSERT_NE(factory, nullptr);
        EXPECT_EQ(factory->getParameterText(), e.parameters);
        EXPECT_EQ(factory->getDescription(), e.description);
        VXLWPtr<FunctionNode> f = FunctionFactory::CREATE(e.name);
        EXPECT_TRUE(typeid(*f) == *e.type);
        EXPECT_EQ(f->getFunctionName(), e.name);
        EXPECT_EQ(f->getParameterText(), e.parameters);
        EXPECT_EQ(f->handlesTimeManually(), e.temporal);
        EXPECT_EQ(f->handlesErrorsManually(), e.seesErrors);
        EXPECT_EQ(dynamic_cast<NonTemporalFunctionNode*>(f.get()) == nullptr, e.temporal);
        // Arity refusals carry no text, except DELAY's (its parameter text).
        VXVector<VXLWPtr<Node>> args;
        for (unsigned count = 0; count <= 4; ++count) {
            const XCode rc = f->verifyArguments();
            EXPECT_EQ(rc.getValue(), count == e.arity ? XCode::SUCCESS : XCode::GENERIC_FAILURE)
                << count;
            EXPECT_EQ(rc.getString(),
                      count == e.arity || String(e.name) != "DELAY" ? "" : "expr,time")
                << count;
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
    FunctionFactory::INSTANCE()->getNames(names);
    const std::set<String> listed(names.begin(), names.end());
    EXPECT_EQ(listed.size(), names.size());  // each name once
    EXPECT_EQ(listed, expected);
}

}  // namespace
}  // namespace VX::SysEvent::testing
