// Functions applied to arguments no formula can write: undefined and empty
// values, texts with NUL bytes, repetition counts at the bound. The kinds of
// results (3.0 folding to the integer 3, -2.0 staying a float) are in the
// engine_value transcript.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "support/print.h"
#include "sysevent/functions/product.h"
#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/node.h"

namespace VX::SysEvent {
namespace {

Value U(unsigned long long u) {
    return Value(u);
}
Value B(bool b) {
    return Value(b);
}
Value S(const char* text) {
    return Value(text);
}
const Value kDiv0(DST_ERR_DIV0), kNA(DST_ERR_NA), kNum(DST_ERR_NUM), kVal(DST_ERR_VAL);
const Value kUndef(DST_UNDEF), kEmpty(DST_EMPTY);

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
