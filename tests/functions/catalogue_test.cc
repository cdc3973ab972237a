// The catalogue: every built-in non-temporal function registered under its
// name with its parameter text and description, creating a node of its own
// class with the registered arity check and error handling. Also what a
// function reference listing needs: names, parameter texts, descriptions.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "function_test_support.h"
#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "sysevent/functions/bit.h"
#include "sysevent/functions/comparison.h"
#include "sysevent/functions/date_parts.h"
#include "sysevent/functions/error_aware.h"
#include "sysevent/functions/sum.h"
#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/node.h"

namespace VX::SysEvent::FunctionTest {
namespace {

struct Entry {
    const char* name;
    const char* counts;  // the allowed argument counts as digits, or "*" for any
    const char* parameters;
    const char* description;
};

const std::vector<Entry>& CATALOGUE() {
    static const std::vector<Entry> entries = {
        {"ABS", "1", "number", "Returns the absolute value of a number"},
        {"AND", "*", "[bool]*", "Returns true if all of its arguments evaluate to true"},
        {"BITAND", "*", "[number]*",
         "Performs the logical AND operation on the corresponding bits of all arguments"},
        {"BITLSHIFT", "2", "number,bits",
         "Returns the positive integral number shifted left by shift bits"},
        {"BITNOT", "1", "number", "Returns the binary complement of the positive integral number"},
        {"BITOR", "*", "[number]",
         "Performs the logical OR operation on the corresponding bits of all arguments"},
        {"BITRSHIFT", "2", "number,bits",
         "Returns the positive integral number shifted right by shift bits"},
        {"BITXOR", "*", "[number]*",
         "Performs the logical XOR operation on the corresponding bits of all arguments"},
        {"BOOL", "1", "param",
         "Converts the argument to a boolean value; errors are converted to false"},
        {"CEILING", "12", "number[,significance]",
         "Rounds a number up to the nearest integer or to the nearest multiple of significance"},
        {"COUNT", "*", "[argument]*", "Returns the number of arguments"},
        {"COUNTIF", "*", "[argument]*", "Returns the number of arguments that evaluate to true"},
        {"DATE", "13", "year,month,day",
         "Builds a date value from the specified year, month, and day number arguments"},
        {"DATETIME", "2", "date,time",
         "Builds a date/time value from the specified date and time arguments"},
        {"DIFF", "2", "minuend,subtrahend", "Subtracts the subtrahend from the minuend"},
        {"DIV", "2", "dividend,divisor", "Divides the dividend by the divisor"},
        {"EPOCH", "0", "", "Returns the earliest date/time possible"},
        {"EQ", "2", "param1,param2", "Returns true if the two arguments are equal"},
        {"FLOOR", "12", "number[,significance]",
         "Rounds a number down to the nearest integer or to the multiple of significance"},
        {"IDENTITY", "1", "param", "Returns the argument unmodified"},
        {"IF", "3", "condition,true-expr,false-expr",
         "Returns true-expr if the condition evaluates to true, else returns false-expr"},
        {"INT", "1", "number", "Rounds a number down to the nearest integer"},
        {"ISERR", "1", "param",
         "Returns true if the argument evaluates to an error, false otherwise"},
        {"LT", "2", "param1,param2", "Returns true if the first argument is less than the second"},
        {"LE", "2", "param1,param2",
         "Returns true if the first argument is less than or equal to the second"},
        {"GT", "2", "param1,param2",
         "Returns true if the first argument is greater than the second"},
        {"GE", "2", "param1,param2",
         "Returns true if the first argument is greater than or equal to the second"},
        {"MOD", "2", "dividend,divisor", "Returns the remainder from integer division"},
        {"MROUND", "12", "number[,multiple]",
         "Returns a number rounded to the desired multiple; the default multiple is 1"},
        {"NEG", "1", "number", "Returns the negative number"},
        {"NEQ", "2", "param1,param2", "Returns true if the two arguments are not equal"},
        {"NOT", "1", "bool",
         "Returns true if the argument evaluates to false, returns false if it evaluates to true"},
        {"OR", "*", "[bool]*", "Returns true if at least one its arguments evaluate to true"},
        {"POWER", "2", "number,power", "Raises the number to the power"},
        {"PRODUCT", "*", "[factor]*",
         "Computes the product of number arguments or repeats a string multiple times"},
        {"QUOTIENT", "2", "numerator,denominator", "Returns the integral part of the division"},
        {"ROUND", "12", "number[,digits]",
         "Returns a number rounded to the desired fractional digits; the default number of digits "
         "is 0"},
        {"SECOND", "1", "date-time", "Returns the seconds part of a date/time value"},
        {"MINUTE", "1", "date-time", "Returns the minutes part of a date/time value"},
        {"HOUR", "1", "date-time", "Returns the hours part of a date/time value"},
        {"DAY", "1", "date-time", "Returns the day of a date/time value"},
        {"WEEKDAY", "1", "date-time", "Returns the weekday of a date/time value (sunday=1)"},
        {"MONTH", "1", "date-time", "Returns the month of a date/time value"},
        {"YEAR", "1", "date-time", "Returns the year of a date/time value"},
        {"SQRT", "1", "number", "Returns the square root of a number"},
        {"SUM", "*", "[summand]*", "Computes the sum of numbers or concatenates strings"},
        {"TIME", "13", "hour,minute,second",
         "Builds a time value from the specified hour, minute, and second number arguments"},
        {"XOR", "*", "[bool]*", "Returns true if an odd number of arguments evaluate to true"},
    };
    return entries;
}

TEST(Catalogue, EveryFunctionIsListedWithItsTexts) {
    ASSERT_EQ(CATALOGUE().size(), 48u);
    VXVector<String> names{"left over"};
    FunctionFactory::INSTANCE()->getNames(names);
    const std::set<String> listed(names.begin(), names.end());
    EXPECT_EQ(listed.size(), names.size()) << "a name is listed twice";
    EXPECT_EQ(listed.count("left over"), 0u);
    for (const Entry& e : CATALOGUE()) {
        EXPECT_EQ(listed.count(e.name), 1u) << e.name;
        const FunctionFactory::FactoryBase* f = FunctionFactory::INSTANCE()->get(e.name);
        ASSERT_NE(f, nullptr) << e.name;
        EXPECT_EQ(f->getName(), e.name);
        EXPECT_EQ(f->getParameterText(), e.parameters) << e.name;
        EXPECT_EQ(f->getDescription(), e.description) << e.name;
    }
}

// Each node: its own texts, a non-temporal function handling time never and
// errors only for BOOL, ISERR and IDENTITY, and the registered arity check.
TEST(Catalogue, NodesCarryTheirTextsFlagsAndArityChecks) {
    VXAutoLock lock(LOCK());
    const std::set<String> manual = {"BOOL", "ISERR", "IDENTITY"};
    for (const Entry& e : CATALOGUE()) {
        for (int count = 0; count <= 4; ++count) {
            VXLWPtr<FunctionNode> node = FunctionFactory::CREATE(e.name);
            ASSERT_TRUE(node) << e.name;
            EXPECT_EQ(node->getFunctionName(), e.name);
            EXPECT_EQ(node->getParameterText(), e.parameters);
            EXPECT_NE(dynamic_cast<NonTemporalFunctionNode*>(node.get()), nullptr) << e.name;
            EXPECT_FALSE(node->handlesTimeManually()) << e.name;
            EXPECT_EQ(node->handlesErrorsManually(), manual.count(e.name) == 1) << e.name;
            for (int i = 0; i < count; ++i) node->addArgument(new Node("x", Value(1ULL)));
            const bool allowed = std::string(e.counts) == "*" ||
                                 std::string(e.counts).find(char('0' + count)) != std::string::npos;
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
