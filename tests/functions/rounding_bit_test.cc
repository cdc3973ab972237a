// CEILING, FLOOR, MROUND, ROUND and the bit functions, evaluated from
// formulas.
#include <gtest/gtest.h>

#include "function_test_support.h"

namespace VX::SysEvent::FunctionTest {
namespace {

TEST(Rounding, ToMultiplesAndDigits) {
    CHECK_ROWS({
        {"CEILING(7, 5)", U(10)},
        {"FLOOR(7, 5)", U(5)},
        {"MROUND(7, 2)", U(8)},
        {"MROUND(7.5)", U(8)},
        {"MROUND(NEG(2.5))", F(-3.0)},
        {"CEILING(NEG(2.5))", F(-2.0)},
        {"FLOOR(NEG(0.5))", F(-1.0)},
        {"FLOOR(7.5)", U(7)},
        {"CEILING(0.5, 0.25)", F(0.5)},
        {"CEILING(7, 0)", kDiv0},
        {"FLOOR(1e308, 1e-308)", kDiv0},
        // The multiple is only converted to a float.
        {"CEILING(7, '5')", U(10)},
        {"CEILING(7, 2s)", U(8)},
        {"CEILING(7, true)", U(7)},
        {"CEILING(7, 'x')", kVal},
        {"CEILING('7', 5)", kVal},
        {"FLOOR(1s)", kVal},
        // To digits.
        {"ROUND(2.5)", U(3)},
        {"ROUND(NEG(2.5))", F(-3.0)},
        {"ROUND(7)", U(7)},
        {"ROUND(1234.5678, 2)", F(1234.57)},
        {"ROUND(1250, NEG(2))", U(1300)},
        {"ROUND(1249, NEG(2))", U(1200)},
        {"ROUND(0.125, 2.0)", F(0.13)},
        {"ROUND(1, 400)", kDiv0},
        {"ROUND(1.5, 0.5)", kNum},
        {"ROUND(1.5, NEG(0.5))", kNum},
        {"ROUND(1, '2')", kVal},
        {"ROUND(1, true)", kVal},
        {"ROUND('1', 2)", kVal},
    });
}

TEST(Bits, AccumulateShiftAndComplement) {
    CHECK_ROWS({
        {"BITAND()", kVal},
        {"BITOR()", kVal},
        {"BITXOR()", kVal},
        {"BITAND(2.5)", F(2.5)},
        {"BITOR('x')", S("x")},
        {"BITAND(12, 10)", U(8)},
        {"BITOR(12, 10)", U(14)},
        {"BITXOR(12, 10)", U(6)},
        {"12 & 10 | 1", U(9)},
        {"12 ^ 10", U(6)},
        {"BITXOR(1, 1, 1)", U(1)},
        {"BITAND(12.0, 10.0)", U(8)},
        {"BITOR(18446744073709551615, 0)", U(18446744073709551615ULL)},
        {"BITAND(1, 2.5)", kNum},
        {"BITAND(2.5, 1)", kNum},
        {"BITAND(NEG(1), 1)", kNum},
        {"BITAND(true, 1)", kVal},
        {"BITAND(1, true)", kVal},
        {"BITOR(1s, 1)", kVal},
        {"BITXOR(1, 'a')", kVal},
        // Shifts and complement.
        {"BITLSHIFT(1, 63)", U(9223372036854775808ULL)},
        {"BITLSHIFT(3, 63)", U(9223372036854775808ULL)},
        {"BITRSHIFT(256, 4)", U(16)},
        {"1 << 4", U(16)},
        {"256 >> 8", U(1)},
        {"BITRSHIFT(18446744073709551615, 63)", U(1)},
        {"BITLSHIFT(5, 0)", U(5)},
        {"BITLSHIFT(4.0, 1.0)", U(8)},
        // Counts of 64 and more shift everything out.
        {"BITLSHIFT(1, 64)", U(0)},
        {"BITRSHIFT(18446744073709551615, 64)", U(0)},
        {"BITLSHIFT(1, 4294967296)", U(0)},
        {"BITLSHIFT(1, 2.5)", kNum},
        {"BITLSHIFT(NEG(1), 1)", kNum},
        {"BITLSHIFT('1', 1)", kVal},
        {"BITRSHIFT(1, '1')", kVal},
        {"BITNOT(0)", U(18446744073709551615ULL)},
        {"~0", U(18446744073709551615ULL)},
        {"BITNOT(2.6)", U(~3ULL)},
        {"BITNOT(2.5)", U(~2ULL)},  // rounded, ties to even
        {"BITNOT(NEG(1.0))", kNum},
        {"BITNOT(true)", kVal},
    });
}

}  // namespace
}  // namespace VX::SysEvent::FunctionTest
