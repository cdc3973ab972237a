// What the functions' transcript (tests/tool/golden/functions.se) cannot
// show: the kind of a result where a float and an integer print alike (3.0
// folds to the integer 3, -2.0 stays a float), floats to their last digit,
// and arguments no formula can write (undefined and empty values).
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "support/print.h"
#include "sysevent/functions/product.h"
#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/node.h"
#include "sysevent/language/parser.h"

namespace VX::SysEvent {
namespace {

Value U(unsigned long long u) {
    return Value(u);
}
Value F(double d) {
    return Value(d);
}
Value B(bool b) {
    return Value(b);
}
Value S(const char* text) {
    return Value(text);
}
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
const Value kDiv0(DST_ERR_DIV0), kNA(DST_ERR_NA), kNum(DST_ERR_NUM), kVal(DST_ERR_VAL);
const Value kUndef(DST_UNDEF), kEmpty(DST_EMPTY);

// The value of `formula`, parsed without published names.
Value EVAL(const char* formula) {
    VXAutoLock lock(LOCK());
    Parser parser(nullptr);
    const XCode rc = parser.parse(formula);
    if (rc.isErr() || parser.getRoots().size() != 1) {
        ADD_FAILURE() << "cannot parse " << formula << ": " << rc.toString().str();
        return Value();
    }
    return parser.getRoots()[0]->getValue();
}

// The value of function `name` applied to literal nodes holding `args`.
Value APPLY(const char* name, const std::vector<Value>& args) {
    VXAutoLock lock(LOCK());
    VXLWPtr<FunctionNode> node = FunctionFactory::CREATE(name);
    if (!node) {
        ADD_FAILURE() << "no function " << name;
        return Value();
    }
    for (const Value& arg : args)
        EXPECT_TRUE(node->addArgument(new Node("literal", arg)).isSuccess());
    return node->getValue();
}

// Same kind and equal value; a NaN float matches a NaN.
::testing::AssertionResult SAME(const Value& actual, const Value& expected) {
    const bool bothNaN = actual.subtype == DST_FLP && expected.subtype == DST_FLP &&
                         std::isnan(actual.data.flp) && std::isnan(expected.data.flp);
    if (actual.subtype == expected.subtype && (bothNaN || actual == expected)) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "got " << ::testing::PrintToString(actual)
                                         << ", expected " << ::testing::PrintToString(expected);
}

TEST(FunctionKinds, FloatsFoldToIntegersOnlyWhenIntegral) {
    const struct {
        const char* formula;
        Value expected;
    } rows[] = {
        {"SUM(1, 2.0)", U(3)},
        {"SUM(1, 2.5)", F(3.5)},
        {"SUM(0.5, 0.5)", U(1)},
        {"SUM(1, 2, 3.5, 0.5)", U(7)},
        {"SUM(NEG(1), 0.5)", F(-0.5)},
        {"1e308 + 1e308", F(kInf)},
        {"SUM(2.5)", F(2.5)},
        {"DIFF(3, 5)", F(-2.0)},
        {"SUM(DIFF(3, 5), 5)", U(3)},
        {"DIFF(5, 3)", U(2)},
        {"5 - 5", U(0)},
        {"DIFF(5.5, 0.5)", U(5)},
        {"DIFF(0.5, 2)", F(-1.5)},
        {"DIFF(0, 18446744073709551615)", F(-18446744073709551615.0)},
        {"PRODUCT(2, 1.5)", U(3)},
        {"PRODUCT(0.5, 3)", F(1.5)},
        {"PRODUCT(1e200, 1e200)", F(kInf)},
        {"DIV(6, 3)", U(2)},
        {"DIV(1, 4)", F(0.25)},
        {"7 / 2", F(3.5)},
        {"QUOTIENT(7, 2)", U(3)},
        {"QUOTIENT(NEG(7), 2)", F(-3.0)},
        {"QUOTIENT(7.5, 2.5)", U(3)},
        {"MOD(7.0, 3)", U(1)},
        {"POWER(2, 10)", U(1024)},
        {"POWER(2, NEG(1))", F(0.5)},
        {"POWER(2, 0.5)", F(1.4142135623730951)},
        {"POWER(0, NEG(1))", F(kInf)},
        {"POWER(NEG(8), 0.5)", F(kNaN)},
        {"POWER(NEG(2), 3)", F(-8.0)},
        {"NEG(0)", U(0)},
        {"NEG(3)", F(-3.0)},
        {"NEG(NEG(3))", U(3)},
        {"-2.5", F(-2.5)},
        {"--2.5", F(2.5)},
        {"NEG(0.0)", U(0)},
        {"ABS(NEG(3.0))", U(3)},
        {"ABS(NEG(2.5))", F(2.5)},
        {"INT(NEG(1.5))", F(-2.0)},
        {"INT(2.7)", U(2)},
        {"INT(5)", U(5)},
        {"SQRT(2)", F(1.4142135623730951)},
        {"SQRT(4)", U(2)},
        {"SQRT(2.25)", F(1.5)},
        {"IF(1, 2.5, 1)", F(2.5)},
        {"IDENTITY(2.5)", F(2.5)},
        {"COUNTIF(1, 0, 2, 0.0)", U(2)},
        {"CEILING(7, 5)", U(10)},
        {"FLOOR(7, 5)", U(5)},
        {"MROUND(7, 2)", U(8)},
        {"MROUND(7.5)", U(8)},
        {"MROUND(NEG(2.5))", F(-3.0)},
        {"CEILING(NEG(2.5))", F(-2.0)},
        {"FLOOR(NEG(0.5))", F(-1.0)},
        {"FLOOR(7.5)", U(7)},
        {"CEILING(0.5, 0.25)", F(0.5)},
        {"CEILING(7, '5')", U(10)},
        {"CEILING(7, 2s)", U(8)},
        {"CEILING(7, true)", U(7)},
        {"ROUND(2.5)", U(3)},
        {"ROUND(NEG(2.5))", F(-3.0)},
        {"ROUND(7)", U(7)},
        {"ROUND(1234.5678, 2)", F(1234.57)},
        {"ROUND(1250, NEG(2))", U(1300)},
        {"ROUND(1249, NEG(2))", U(1200)},
        {"ROUND(0.125, 2.0)", F(0.13)},
        {"BITAND(2.5)", F(2.5)},
        {"BITAND(12.0, 10.0)", U(8)},
        {"BITLSHIFT(4.0, 1.0)", U(8)},
        {"BITNOT(2.6)", U(~3ULL)},
        {"BITNOT(2.5)", U(~2ULL)},
    };
    for (const auto& row : rows) EXPECT_TRUE(SAME(EVAL(row.formula), row.expected)) << row.formula;
}

TEST(FunctionKinds, UndefinedAndEmptyArguments) {
    const Value withNul(String("a\0b", 3));
    const struct {
        const char* function;
        std::vector<Value> args;
        Value expected;
    } rows[] = {
        {"SUM", {kEmpty}, kEmpty},
        {"SUM", {kEmpty, U(1)}, kVal},
        {"AND", {B(false), kEmpty}, kVal},
        {"OR", {B(true), kEmpty}, kVal},
        {"NOT", {kEmpty}, kVal},
        {"AND", {kUndef, kDiv0}, kVal},
        {"AND", {kNA, kUndef}, kNA},
        {"IF", {kEmpty, U(1), U(2)}, kVal},
        {"BOOL", {kUndef}, B(false)},
        {"BOOL", {kEmpty}, B(false)},
        {"ISERR", {kUndef}, B(false)},
        {"ISERR", {kEmpty}, B(false)},
        {"IDENTITY", {kUndef}, kUndef},
        {"IDENTITY", {kEmpty}, kEmpty},
        {"NOT", {kUndef}, kVal},
        {"EQ", {kEmpty, kEmpty}, B(true)},
        {"LT", {kEmpty, kEmpty}, B(false)},
        {"LE", {kEmpty, kEmpty}, B(true)},
        {"GT", {kEmpty, kEmpty}, B(false)},
        {"GE", {kEmpty, kEmpty}, B(true)},
        {"LT", {kEmpty, S("")}, kVal},
        // Less stops at the first NUL (strcmp); equal compares every byte.
        {"LT", {withNul, S("a")}, B(false)},
        {"LE", {withNul, S("a")}, B(false)},
        {"GT", {withNul, S("a")}, B(true)},
        {"LE", {withNul, withNul}, B(true)},
        {"COUNT", {U(1), kUndef}, kVal},
        {"COUNTIF", {U(1), kEmpty}, kVal},
        {"COUNT", {kEmpty}, U(1)},
        // Repetition is bounded: a count from a formula must not take the process down.
        {"PRODUCT", {S("x"), U(PRODUCT::MAX_REPEATED_TEXT_LENGTH + 1)}, kNum},
        {"PRODUCT", {S("xy"), U(PRODUCT::MAX_REPEATED_TEXT_LENGTH / 2 + 1)}, kNum},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(SAME(APPLY(row.function, row.args), row.expected))
            << row.function << " of " << row.args.size();
    }
    const Value longest = APPLY("PRODUCT", {S("x"), U(PRODUCT::MAX_REPEATED_TEXT_LENGTH)});
    ASSERT_EQ(longest.subtype, DST_STRING);
    EXPECT_EQ(longest.data.string.length(), PRODUCT::MAX_REPEATED_TEXT_LENGTH);
}

}  // namespace
}  // namespace VX::SysEvent
