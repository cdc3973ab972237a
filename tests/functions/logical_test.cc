// Logical, selection, error-aware, comparison and counting functions,
// evaluated from formulas; arguments no formula can write (undefined and
// empty values) go through APPLY.
#include <gtest/gtest.h>

#include "function_test_support.h"

namespace VX::SysEvent::FunctionTest {
namespace {

TEST(Logical, TruthOfEveryKindAndErrors) {
    CHECK_ROWS({
        {"AND()", kVal},
        {"OR()", kVal},
        {"XOR()", kVal},
        {"AND(1, 2.5, 5s)", B(true)},
        {"AND(1, 0)", B(false)},
        {"AND(true)", B(true)},
        {"OR(0, 0.0)", B(false)},
        {"OR(0, 'x')", B(true)},
        {"OR(0s, '')", B(false)},
        {"XOR(true, true, true)", B(true)},
        {"XOR(true, true)", B(false)},
        {"XOR(0, 1, 0)", B(true)},
        {"NOT('false')", B(false)},
        {"NOT('')", B(true)},
        {"NOT(0)", B(true)},
        {"NOT(2021-03-07)", B(false)},
        {"!1", B(false)},
        {"not 0s", B(true)},
        {"1 && 0 || 1", B(true)},
        {"1 ^^ 1", B(false)},
        // Errors pass through.
        {"AND(false, DIV(1, 0))", kDiv0},
        {"OR(SQRT(NEG(1)), DIV(1, 0))", kNum},
        {"NOT(DIV(1, 0))", kDiv0},
        {"XOR(1, unbound.name)", kNA},
    });
    // No short cut: a value without a truth value fails AND even after false.
    EXPECT_TRUE(SAME(APPLY("AND", {B(false), kEmpty}), kVal));
    EXPECT_TRUE(SAME(APPLY("OR", {B(true), kEmpty}), kVal));
    EXPECT_TRUE(SAME(APPLY("NOT", {kEmpty}), kVal));
    // The first screened argument decides: undefined before an error is #VAL!.
    EXPECT_TRUE(SAME(APPLY("AND", {kUndef, kDiv0}), kVal));
    EXPECT_TRUE(SAME(APPLY("AND", {kNA, kUndef}), kNA));
}

TEST(Selection, IfCopiesTheChosenBranchOfAnyKind) {
    CHECK_ROWS({
        {"IF(0, 1, 2)", U(2)},
        {"IF('no', 1, 2)", U(1)},
        {"IF(1, 2.5, 1)", F(2.5)},
        {"IF(1s, 'a', 2)", S("a")},
        {"IF(0.0, 1, 2021-03-07)", DateOf("2021-03-07")},
        // Both branches are screened, the one not taken included.
        {"IF(true, 1, DIV(1, 0))", kDiv0},
        {"IF(DIV(1, 0), 1, 2)", kDiv0},
    });
    EXPECT_TRUE(SAME(APPLY("IF", {kEmpty, U(1), U(2)}), kVal));
}

TEST(ErrorAware, SeeErrorsAndUndefinedArguments) {
    CHECK_ROWS({
        {"BOOL(DIV(1, 0))", B(false)},
        {"BOOL(unbound.name)", B(false)},
        {"BOOL(2)", B(true)},
        {"BOOL('')", B(false)},
        {"BOOL('false')", B(true)},
        {"ISERR(SQRT(NEG(1)))", B(true)},
        {"ISERR(unbound.name)", B(true)},
        {"ISERR(0)", B(false)},
        {"ISERR('#VAL!')", B(false)},
        {"IDENTITY(DIV(1, 0))", kDiv0},
        {"IDENTITY(2.5)", F(2.5)},
        {"IDENTITY('x')", S("x")},
    });
    EXPECT_TRUE(SAME(APPLY("BOOL", {kUndef}), B(false)));
    EXPECT_TRUE(SAME(APPLY("BOOL", {kEmpty}), B(false)));
    EXPECT_TRUE(SAME(APPLY("ISERR", {kUndef}), B(false)));
    EXPECT_TRUE(SAME(APPLY("ISERR", {kEmpty}), B(false)));
    // Undefined stays undefined instead of becoming #VAL!.
    EXPECT_TRUE(SAME(APPLY("IDENTITY", {kUndef}), kUndef));
    EXPECT_TRUE(SAME(APPLY("IDENTITY", {kEmpty}), kEmpty));
    // Only these three see raw arguments.
    EXPECT_TRUE(SAME(APPLY("NOT", {kUndef}), kVal));
}

TEST(Equality, NumbersMeetAndKindsNeverFail) {
    CHECK_ROWS({
        {"EQ(1, 1.0)", B(true)},
        {"EQ(1, 1.5)", B(false)},
        {"0.1 + 0.2 == 0.3", B(true)},
        {"EQ(1, true)", B(false)},
        {"EQ(1, '1')", B(false)},
        {"NEQ(1, '1')", B(true)},
        {"'abc' != 'ABC'", B(true)},
        {"'abc' == 'abc'", B(true)},
        {"EQ(2021-03-07, 2021-03-07T00:00:00)", B(false)},
        {"EQ(60s, 1m)", B(true)},
        {"NEQ(DIFF(inf, inf), DIFF(inf, inf))", B(true)},
        {"EQ(inf, inf)", B(true)},
    });
    EXPECT_TRUE(SAME(APPLY("EQ", {kEmpty, kEmpty}), B(true)));
}

TEST(Ordering, ByKindNaNEmptyAndNulBytes) {
    CHECK_ROWS({
        {"LT(0.3, 0.1 + 0.2)", B(true)},  // exact, unlike EQ
        {"LT(1, 1.5)", B(true)},
        {"GE(2.0, 2)", B(true)},
        {"2 < 10", B(true)},
        {"GT(18446744073709551615, 1)", B(true)},
        {"LE(3, 3)", B(true)},
        {"GT(3, 3)", B(false)},
        {"LT(1, true)", kVal},
        {"LT(1, 1s)", kVal},
        {"LT(2021-03-07, 2021-03-07T00:00:00)", kVal},
        {"GT(2021-03-08, 2021-03-07)", B(true)},
        {"LT(09:00:00, 10:00:00)", B(true)},
        {"LT(5s, 500ms)", B(false)},
        {"GE(1s, 1000ms)", B(true)},
        {"LT(1s, 1s1ns)", B(true)},
        {"'a' < 'b'", B(true)},
        {"'ab' <= 'ab'", B(true)},
        {"'b' > 'ab'", B(true)},
        {"'ab' < 'abc'", B(true)},
        {"'B' < 'a'", B(true)},
        {"GE('', '')", B(true)},
        {"LE(true, false)", B(false)},
        {"LT(false, true)", B(true)},
        {"GE(true, true)", B(true)},
        {"LT(true, true)", B(false)},
        // With a NaN neither less nor equal holds.
        {"LT(DIFF(inf, inf), 1)", B(false)},
        {"LE(DIFF(inf, inf), 1)", B(false)},
        {"GT(DIFF(inf, inf), 1)", B(true)},
        {"GE(1, DIFF(inf, inf))", B(true)},
    });
    EXPECT_TRUE(SAME(APPLY("LT", {kEmpty, kEmpty}), B(false)));
    EXPECT_TRUE(SAME(APPLY("LE", {kEmpty, kEmpty}), B(true)));
    EXPECT_TRUE(SAME(APPLY("GT", {kEmpty, kEmpty}), B(false)));
    EXPECT_TRUE(SAME(APPLY("GE", {kEmpty, kEmpty}), B(true)));
    EXPECT_TRUE(SAME(APPLY("LT", {kEmpty, S("")}), kVal));
    // Less stops at the first NUL (strcmp); equal compares every byte.
    const Value withNul(String("a\0b", 3));
    EXPECT_TRUE(SAME(APPLY("LT", {withNul, S("a")}), B(false)));
    EXPECT_TRUE(SAME(APPLY("LE", {withNul, S("a")}), B(false)));
    EXPECT_TRUE(SAME(APPLY("GT", {withNul, S("a")}), B(true)));
    EXPECT_TRUE(SAME(APPLY("LE", {withNul, withNul}), B(true)));
}

TEST(Counting, CountsArgumentsOrTruths) {
    CHECK_ROWS({
        {"COUNT()", U(0)},
        {"COUNTIF()", U(0)},
        {"COUNT(1, 'x', 5s)", U(3)},
        {"COUNT(0, '', false)", U(3)},
        {"COUNTIF(1, 0, 2, 0.0)", U(2)},
        {"COUNTIF('', 'a', 0s, 1s, true)", U(3)},
        {"COUNT(1, DIV(1, 0))", kDiv0},
        {"COUNTIF(1, unbound.name)", kNA},
    });
    EXPECT_TRUE(SAME(APPLY("COUNT", {U(1), kUndef}), kVal));
    EXPECT_TRUE(SAME(APPLY("COUNTIF", {U(1), kEmpty}), kVal));
    EXPECT_TRUE(SAME(APPLY("COUNT", {kEmpty}), U(1)));
}

}  // namespace
}  // namespace VX::SysEvent::FunctionTest
