// SUM, DIFF, PRODUCT, DIV, QUOTIENT, MOD, POWER and the one-argument number
// functions, evaluated from formulas: number kinds and folding, wrap-around,
// time arithmetic with carries, text concatenation and repetition, division
// by zero, and the order of the checks.
#include <gtest/gtest.h>

#include <limits>

#include "function_test_support.h"
#include "sysevent/functions/product.h"

namespace VX::SysEvent::FunctionTest {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Sum, NumbersFoldAndWrapTextsJoinTimesKeepTheirKind) {
    CHECK_ROWS({
        {"SUM()", kVal},
        {"SUM(1, 2.0)", U(3)},
        {"SUM(1, 2.5)", F(3.5)},
        {"SUM(0.5, 0.5)", U(1)},
        {"SUM(1, 2, 3.5, 0.5)", U(7)},
        {"SUM(18446744073709551615, 1)", U(0)},
        {"SUM(NEG(1), 0.5)", F(-0.5)},
        {"1e308 + 1e308", F(kInf)},
        {"SUM(true)", B(true)},
        {"SUM(2.5)", F(2.5)},
        {"SUM(true, 1)", kVal},
        {"SUM(1, true)", kVal},
        {"SUM(5, 3s)", kVal},
        {"SUM(3s, 5)", kVal},
        // Texts concatenate.
        {"SUM('ab', 'cd')", S("abcd")},
        {"'a' + '' + 'b'", S("ab")},
        {"SUM('ab', 1)", kVal},
        {"SUM(1, 'ab')", kVal},
        // Times move and keep their kind.
        {"SUM(5s, 3s)", Duration(8)},
        {"SUM(1s600ms, 2s500ms)", Duration(4, 100000000)},  // nanosecond carry
        {"SUM(2020-01-01, 36h)", DateOf("2020-01-02")},     // a date stays at midnight
        {"SUM(10:00:00, 15h)", TimeOfDay("01:00:00")},      // a time stays on 1970-01-01
        {"SUM(2020-01-01T23:59:59, 1s)", DateTime("2020-01-02T00:00:00")},
        {"SUM(5s, 2020-01-01T00:00:00)", DateTime("2020-01-01T00:00:05")},
        // The duration first takes the calendar kind: below a day is dropped.
        {"SUM(36h, 2020-01-01)", DateOf("2020-01-02")},
        {"SUM(90m, 10:00:00)", TimeOfDay("11:30:00")},
        {"SUM(2020-01-01T00:00:00, 2020-01-01T00:00:00)", kNum},
        {"SUM(2020-01-01, 10:00:00)", kNum},
        {"SUM(1s, 'a')", kVal},
    });
    EXPECT_TRUE(SAME(APPLY("SUM", {kEmpty}), kEmpty));
    EXPECT_TRUE(SAME(APPLY("SUM", {kEmpty, U(1)}), kVal));
}

TEST(Diff, NumbersGoNegativeAsFloatsTimesStopAtZero) {
    CHECK_ROWS({
        {"DIFF(3, 5)", F(-2.0)},
        {"SUM(DIFF(3, 5), 5)", U(3)},
        {"DIFF(5, 3)", U(2)},
        {"5 - 5", U(0)},
        {"DIFF(5.5, 0.5)", U(5)},
        {"DIFF(0.5, 2)", F(-1.5)},
        {"DIFF(0, 18446744073709551615)", F(-18446744073709551615.0)},
        {"DIFF(1, 's')", kVal},
        {"DIFF(true, 1)", kVal},
        {"DIFF('a', 'b')", kVal},
        // Times never go below zero.
        {"DIFF(2020-01-02, 2020-01-01)", Duration(86400)},
        {"DIFF(2020-01-01, 2020-01-02)", Duration(0)},
        {"DIFF(10:00:00, 12:00:00)", Duration(0)},
        {"DIFF(12:00:00, 10:30:00)", Duration(5400)},
        {"DIFF(2020-01-01T10:00:00, 2020-01-01T09:59:59)", Duration(1)},
        {"DIFF(2s, 1s500ms)", Duration(0, 500000000)},  // nanosecond borrow
        {"DIFF(1s, 2s)", Duration(0)},
        {"DIFF(2020-01-02, 1h)", DateOf("2020-01-01")},  // re-cut to midnight
        {"DIFF(2020-01-01T12:00:00, 1h)", DateTime("2020-01-01T11:00:00")},
        {"DIFF(01:00:00, 2h)", TimeOfDay("00:00:00")},
        {"DIFF(2020-01-01, 10:00:00)", kNum},
        {"DIFF(2020-01-01, 2020-01-01T00:00:00)", kNum},
        {"DIFF(5s, 2020-01-01T00:00:00)", kNum},
        {"DIFF(5s, 1)", kVal},
    });
}

TEST(Product, NumbersDurationsAndTexts) {
    CHECK_ROWS({
        {"PRODUCT()", kVal},
        {"PRODUCT(2, 3)", U(6)},
        {"PRODUCT(2, 1.5)", U(3)},
        {"PRODUCT(0.5, 3)", F(1.5)},
        {"PRODUCT(4294967296, 4294967296)", U(0)},
        {"PRODUCT(1e200, 1e200)", F(kInf)},
        {"PRODUCT(2, 1s500ms)", Duration(3)},
        {"PRODUCT(1s500ms, 2)", Duration(3)},
        {"PRODUCT(900ms, 5)", Duration(4, 500000000)},
        {"PRODUCT(1s, 2, 3)", Duration(6)},
        // Only the low 32 bits of a factor scale a duration.
        {"PRODUCT(4294967297, 1s)", Duration(1)},
        {"PRODUCT(1.5, 2s)", kNum},
        {"PRODUCT(NEG(1), 2s)", kNum},
        {"PRODUCT(2, 2020-01-01)", kNum},
        {"PRODUCT(2020-01-01, 2)", kNum},
        {"PRODUCT(2020-01-01, 'ab')", kNum},  // the accumulator's kind is checked first
        {"PRODUCT(2s, 3s)", kVal},
        {"PRODUCT(2s, 1.5)", kNum},
        {"PRODUCT(true, 1)", kVal},
        {"PRODUCT(1, true)", kVal},
        {"PRODUCT(3, 'ab')", kVal},
        // Text repetition.
        {"PRODUCT('ab', 3)", S("ababab")},
        {"'ab' * 2 * 3", S("abababababab")},
        {"PRODUCT('ab', 0)", S("")},
        {"PRODUCT('ab', 3.0)", S("ababab")},
        {"PRODUCT('ab', 1.5)", kNum},
        {"PRODUCT('ab', '3')", kVal},
        {"PRODUCT('ab', 2s)", kVal},
        // The empty text repeats any number of times without building anything.
        {"PRODUCT('', 18446744073709551615)", S("")},
    });
}

TEST(Product, RepetitionIsBounded) {
    // A count from a formula must not take the process down.
    EXPECT_TRUE(SAME(EVAL("PRODUCT('ab', 18446744073709551615)"), kNum));
    EXPECT_TRUE(SAME(EVAL("PRODUCT('abc', 6148914691236517206)"), kNum));  // length wraps 2^64
    const unsigned long long limit = PRODUCT::MAX_REPEATED_TEXT_LENGTH;
    const Value longest = APPLY("PRODUCT", {S("x"), U(limit)});
    ASSERT_EQ(longest.subtype, DST_STRING);
    EXPECT_EQ(longest.data.string.length(), limit);
    EXPECT_TRUE(SAME(APPLY("PRODUCT", {S("x"), U(limit + 1)}), kNum));
    EXPECT_TRUE(SAME(APPLY("PRODUCT", {S("xy"), U(limit / 2 + 1)}), kNum));
}

TEST(Division, QuotientsAndDivisionByZero) {
    CHECK_ROWS({
        {"DIV(6, 3)", U(2)},
        {"DIV(1, 4)", F(0.25)},
        {"7 / 2", F(3.5)},
        {"DIV(1, 0)", kDiv0},
        {"DIV(0, 0)", kDiv0},
        {"DIV(1e308, 1e-308)", kDiv0},
        {"DIV(7s, 2)", Duration(3, 500000000)},
        {"DIV(1s, 3)", Duration(0, 333333333)},
        {"DIV(7s, 0)", kDiv0},
        {"DIV(7s, 4294967296)", kDiv0},  // only the low 32 bits divide
        {"DIV(7s, 4294967298)", Duration(3, 500000000)},
        {"DIV(7s, 2.5)", kNum},
        {"DIV(7, 2s)", kVal},
        {"DIV(2020-01-01, 2)", kNum},
        {"DIV(true, 0)", kVal},
        {"DIV('6', 3)", kVal},
        {"QUOTIENT(7, 2)", U(3)},
        {"QUOTIENT(NEG(7), 2)", F(-3.0)},
        {"QUOTIENT(7.5, 2.5)", U(3)},
        {"QUOTIENT(1, 0)", kDiv0},
        {"QUOTIENT(7, '2')", kVal},
        {"QUOTIENT(7s, 2)", kVal},
        {"MOD(7, 3)", U(1)},
        {"7 % 3", U(1)},
        {"MOD(7.0, 3)", U(1)},
        {"MOD(18446744073709551615, 10)", U(5)},
        {"MOD(NEG(1), 3)", kNum},
        {"MOD(7.5, 2)", kNum},
        {"MOD(1, 0)", kDiv0},
        {"MOD(7s, 2)", kVal},
        {"MOD(7, '2')", kVal},
    });
}

TEST(Power, FloatsFoldedAndNeverChecked) {
    CHECK_ROWS({
        {"POWER(2, 10)", U(1024)},
        {"POWER(2, NEG(1))", F(0.5)},
        {"POWER(2, 0.5)", F(1.4142135623730951)},
        {"POWER(0, NEG(1))", F(kInf)},
        {"POWER(NEG(8), 0.5)", F(kNaN)},
        {"POWER(NEG(2), 3)", F(-8.0)},
        {"POWER('2', 2)", kVal},
        {"POWER(2, true)", kVal},
    });
}

TEST(OneArgument, SignsRootsAndIntegers) {
    CHECK_ROWS({
        {"NEG(0)", U(0)},           {"NEG(3)", F(-3.0)},    {"NEG(NEG(3))", U(3)},
        {"-2.5", F(-2.5)},          {"--2.5", F(2.5)},      {"NEG(0.0)", U(0)},
        {"NEG(3s)", kVal},          {"NEG('3')", kVal},     {"ABS(NEG(3.0))", U(3)},
        {"ABS(NEG(2.5))", F(2.5)},  {"ABS(7)", U(7)},       {"ABS(true)", kVal},
        {"INT(NEG(1.5))", F(-2.0)}, {"INT(2.7)", U(2)},     {"INT(5)", U(5)},
        {"INT(1s)", kVal},          {"SQRT(NEG(1))", kNum}, {"SQRT(2)", F(1.4142135623730951)},
        {"SQRT(4)", U(2)},          {"SQRT(2.25)", F(1.5)}, {"SQRT(DIFF(inf, inf))", kNum},
        {"SQRT('4')", kVal},
    });
}

}  // namespace
}  // namespace VX::SysEvent::FunctionTest
