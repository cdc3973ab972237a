// The catalogue: every built-in non-temporal function registered under its
// name with its parameter text and description, creating a node of its own
// class with the registered arity check and error handling. Also what a
// function reference listing needs: names, parameter texts, descriptions.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "function_test_support.h"
#include "host/crit.h"
#include "host/lock.h"
#include "sysevent/functions/bit.h"
#include "sysevent/functions/comparison.h"
#include "sysevent/functions/date_parts.h"
#include "sysevent/functions/error_aware.h"
#include "sysevent/functions/sum.h"
#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/node.h"

namespace VX::SysEvent::FunctionTest {
namespace {

constexpr int kAny = -1;

struct Entry {
    const char* name;
    const char* parameters;
    const char* description;
    std::vector<int> counts;  // allowed argument counts, or {kAny}
};

const std::vector<Entry>& CATALOGUE() {
    static const std::vector<Entry> entries = {
        {"ABS", "number", "Returns the absolute value of a number", {1}},
        {"AND", "[bool]*", "Returns true if all of its arguments evaluate to true", {kAny}},
        {"BITAND",
         "[number]*",
         "Performs the logical AND operation on the corresponding bits of all arguments",
         {kAny}},
        {"BITLSHIFT",
         "number,bits",
         "Returns the positive integral number shifted left by shift bits",
         {2}},
        {"BITNOT", "number", "Returns the binary complement of the positive integral number", {1}},
        {"BITOR",
         "[number]",
         "Performs the logical OR operation on the corresponding bits of all arguments",
         {kAny}},
        {"BITRSHIFT",
         "number,bits",
         "Returns the positive integral number shifted right by shift bits",
         {2}},
        {"BITXOR",
         "[number]*",
         "Performs the logical XOR operation on the corresponding bits of all arguments",
         {kAny}},
        {"BOOL",
         "param",
         "Converts the argument to a boolean value; errors are converted to false",
         {1}},
        {"CEILING",
         "number[,significance]",
         "Rounds a number up to the nearest integer or to the nearest multiple of significance",
         {1, 2}},
        {"COUNT", "[argument]*", "Returns the number of arguments", {kAny}},
        {"COUNTIF", "[argument]*", "Returns the number of arguments that evaluate to true", {kAny}},
        {"DATE",
         "year,month,day",
         "Builds a date value from the specified year, month, and day number arguments",
         {1, 3}},
        {"DATETIME",
         "date,time",
         "Builds a date/time value from the specified date and time arguments",
         {2}},
        {"DIFF", "minuend,subtrahend", "Subtracts the subtrahend from the minuend", {2}},
        {"DIV", "dividend,divisor", "Divides the dividend by the divisor", {2}},
        {"EPOCH", "", "Returns the earliest date/time possible", {0}},
        {"EQ", "param1,param2", "Returns true if the two arguments are equal", {2}},
        {"FLOOR",
         "number[,significance]",
         "Rounds a number down to the nearest integer or to the multiple of significance",
         {1, 2}},
        {"IDENTITY", "param", "Returns the argument unmodified", {1}},
        {"IF",
         "condition,true-expr,false-expr",
         "Returns true-expr if the condition evaluates to true, else returns false-expr",
         {3}},
        {"INT", "number", "Rounds a number down to the nearest integer", {1}},
        {"ISERR",
         "param",
         "Returns true if the argument evaluates to an error, false otherwise",
         {1}},
        {"LT", "param1,param2", "Returns true if the first argument is less than the second", {2}},
        {"LE",
         "param1,param2",
         "Returns true if the first argument is less than or equal to the second",
         {2}},
        {"GT",
         "param1,param2",
         "Returns true if the first argument is greater than the second",
         {2}},
        {"GE",
         "param1,param2",
         "Returns true if the first argument is greater than or equal to the second",
         {2}},
        {"MOD", "dividend,divisor", "Returns the remainder from integer division", {2}},
        {"MROUND",
         "number[,multiple]",
         "Returns a number rounded to the desired multiple; the default multiple is 1",
         {1, 2}},
        {"NEG", "number", "Returns the negative number", {1}},
        {"NEQ", "param1,param2", "Returns true if the two arguments are not equal", {2}},
        {"NOT",
         "bool",
         "Returns true if the argument evaluates to false, returns false if it evaluates to true",
         {1}},
        {"OR", "[bool]*", "Returns true if at least one its arguments evaluate to true", {kAny}},
        {"POWER", "number,power", "Raises the number to the power", {2}},
        {"PRODUCT",
         "[factor]*",
         "Computes the product of number arguments or repeats a string multiple times",
         {kAny}},
        {"QUOTIENT", "numerator,denominator", "Returns the integral part of the division", {2}},
        {"ROUND",
         "number[,digits]",
         "Returns a number rounded to the desired fractional digits; the default number of digits "
         "is 0",
         {1, 2}},
        {"SECOND", "date-time", "Returns the seconds part of a date/time value", {1}},
        {"MINUTE", "date-time", "Returns the minutes part of a date/time value", {1}},
        {"HOUR", "date-time", "Returns the hours part of a date/time value", {1}},
        {"DAY", "date-time", "Returns the day of a date/time value", {1}},
        {"WEEKDAY", "date-time", "Returns the weekday of a date/time value (sunday=1)", {1}},
        {"MONTH", "date-time", "Returns the month of a date/time value", {1}},
        {"YEAR", "date-time", "Returns the year of a date/time value", {1}},
        {"SQRT", "number", "Returns the square root of a number", {1}},
        {"SUM", "[summand]*", "Computes the sum of numbers or concatenates strings", {kAny}},
        {"TIME",
         "hour,minute,second",
         "Builds a time value from the specified hour, minute, and second number arguments",
         {1, 3}},
        {"XOR", "[bool]*", "Returns true if an odd number of arguments evaluate to true", {kAny}},
    };
    return entries;
}

TEST(Catalogue, EveryFunctionIsListedWithItsTexts) {
    ASSERT_EQ(CATALOGUE().size(), 48u);
    VXVector<String> names{"left over"};
    FunctionFactory::INSTANCE().getNames(names);
    const std::set<String> listed(names.begin(), names.end());
    EXPECT_EQ(listed.size(), names.size()) << "a name is listed twice";
    EXPECT_EQ(listed.count("left over"), 0u);
    for (const Entry& e : CATALOGUE()) {
        EXPECT_EQ(listed.count(e.name), 1u) << e.name;
        const FunctionFactory::FactoryBase* f = FunctionFactory::INSTANCE().get(e.name);
        ASSERT_NE(f, nullptr) << e.name;
        EXPECT_EQ(f->getName(), e.name);
        EXPECT_EQ(f->getParameterText(), e.parameters) << e.name;
        EXPECT_EQ(f->getDescription(), e.description) << e.name;
    }
}

TEST(Catalogue, NodesCarryTheirTextsAndArityChecks) {
    VXAutoLock lock(LOCK());
    for (const Entry& e : CATALOGUE()) {
        for (int count = 0; count <= 4; ++count) {
            VXLWPtr<FunctionNode> node = FunctionFactory::CREATE(e.name);
            ASSERT_TRUE(node) << e.name;
            EXPECT_EQ(node->getFunctionName(), e.name);
            EXPECT_EQ(node->getParameterText(), e.parameters);
            for (int i = 0; i < count; ++i) node->addArgument(new Node("x", Value(1ULL)));
            const bool allowed =
                e.counts == std::vector<int>{kAny} ||
                std::find(e.counts.begin(), e.counts.end(), count) != e.counts.end();
            const XCode rc = node->verifyArguments();
            EXPECT_EQ(rc.isSuccess(), allowed) << e.name << " with " << count;
            if (!allowed) {
                // The plain failure of testExpression, no text attached.
                EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE) << e.name;
                EXPECT_FALSE(rc.hasString()) << e.name;
            }
        }
    }
}

TEST(Catalogue, OnlyThreeFunctionsHandleErrorsAndNoneHandlesTime) {
    VXAutoLock lock(LOCK());
    const std::set<String> manual = {"BOOL", "ISERR", "IDENTITY"};
    for (const Entry& e : CATALOGUE()) {
        VXLWPtr<FunctionNode> node = FunctionFactory::CREATE(e.name);
        ASSERT_TRUE(node) << e.name;
        EXPECT_NE(dynamic_cast<NonTemporalFunctionNode*>(node.get()), nullptr) << e.name;
        EXPECT_FALSE(node->handlesTimeManually()) << e.name;
        EXPECT_EQ(node->handlesErrorsManually(), manual.count(e.name) == 1) << e.name;
    }
}

TEST(Catalogue, EachNameMakesItsOwnClass) {
    VXAutoLock lock(LOCK());
    EXPECT_NE(dynamic_cast<SUM*>(FunctionFactory::CREATE("SUM").get()), nullptr);
    EXPECT_NE(dynamic_cast<GE*>(FunctionFactory::CREATE("GE").get()), nullptr);
    EXPECT_NE(dynamic_cast<BITOR*>(FunctionFactory::CREATE("BITOR").get()), nullptr);
    EXPECT_NE(dynamic_cast<WEEKDAY*>(FunctionFactory::CREATE("WEEKDAY").get()), nullptr);
    EXPECT_NE(dynamic_cast<ISERR*>(FunctionFactory::CREATE("ISERR").get()), nullptr);
    EXPECT_EQ(dynamic_cast<LT*>(FunctionFactory::CREATE("LE").get()), nullptr);
    EXPECT_TRUE(FunctionFactory::CREATE("sum").isNull());
}

}  // namespace
}  // namespace VX::SysEvent::FunctionTest
