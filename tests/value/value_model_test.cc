// Value model: equality (the float rule included), the display texts no
// formula can produce (the rest, date and time texts included, are in the
// golden transcripts), and the engine's error codes.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "sysevent/value/value.h"

namespace VX::SysEvent {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");

struct EqualityCase {
    Value a;
    Value b;
    bool equal;
    const char* what;
};

TEST(ValueModel, Equality) {
    const double big = 1e20;
    const EqualityCase cases[] = {
        {Value(DST_UNDEF), Value(DST_UNDEF), true, "undefined"},
        {Value(DST_EMPTY), Value(DST_EMPTY), true, "empty"},
        {Value(DST_ERR_NA), Value(DST_ERR_NA), true, "same error"},
        {Value(DST_ERR_NA), Value(DST_ERR_NUM), false, "different errors"},
        {Value(static_cast<DataSubType>(15)), Value(static_cast<DataSubType>(15)), true,
         "unknown kind"},
        {Value(1ULL), Value(1.0), false, "uint vs float"},
        {Value(true), Value(true), true, "bools"},
        {Value(true), Value(false), false, "bools differ"},
        {Value(7ULL), Value(7ULL), true, "uints"},
        {Value(7ULL), Value(8ULL), false, "uints differ"},
        {Value(0.1 + 0.2), Value(0.3), true, "float rounding"},
        {Value(1.0), Value(1.0 + 1e-15), false, "beyond epsilon at 1"},
        {Value(big), Value(std::nextafter(big, kInf)), true, "relative above 1"},
        {Value(0.0), Value(1e-17), true, "absolute below 1"},
        {Value(1e-10), Value(2e-10), false, "absolute, not relative, below 1"},
        {Value(kInf), Value(kInf), true, "+inf"},
        {Value(kInf), Value(std::numeric_limits<double>::max()), false, "+inf vs max"},
        {Value(std::numeric_limits<double>::max()), Value(kInf), false, "max vs +inf"},
        {Value(-kInf), Value(-kInf), false, "-inf is unequal to itself"},
        {Value(kNaN), Value(kNaN), false, "NaN"},
        {Value(kNaN), Value(1.0), false, "NaN vs number"},
        {Value(VX::Time(5, 1), DST_REL_TIME), Value(VX::Time(5, 1), DST_REL_TIME), true, "times"},
        {Value(VX::Time(5, 1), DST_REL_TIME), Value(VX::Time(5, 2), DST_REL_TIME), false,
         "nanoseconds differ"},
        {Value(VX::Time(0, 0), DST_ABS_DATE), Value(VX::Time(0, 0), DST_ABS_DATE_TIME), false,
         "date vs date-time"},
        {Value("abc"), Value("ABC"), false, "case"},
        {Value(""), Value(""), true, "empty strings"},
        {Value(String("a\0b", 3)), Value(String("a\0c", 3)), false, "bytes after NUL"},
        {Value(String("a\0", 2)), Value("a"), false, "length"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.a == c.b, c.equal) << c.what;
        EXPECT_EQ(c.a != c.b, !c.equal) << c.what;
    }
}

TEST(ValueModel, DisplayTexts) {
    const struct {
        Value v;
        const char* text;
    } cases[] = {
        {Value(DST_UNDEF), "#UNDEF!"},
        {Value(DST_EMPTY), ""},
        {Value(String("ab\0cd", 5)), "'ab'"},
        {Value(static_cast<DataSubType>(15)), "#NOTYPE!"},
        {Value(static_cast<DataSubType>(-3)), "#NOTYPE!"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.v.toString(), c.text);
}

TEST(ValueModel, ErrorCodes) {
    const std::pair<int, uint32_t> cases[] = {
        {DST_ERR_DIV0, 0x1600000A},
        {DST_ERR_NA, 0x1600000B},
        {DST_ERR_NUM, 0x1600000C},
        {DST_ERR_VAL, 0x1600000D},
        {DST_ERR_GENERIC, 0x1600000E},
        {0x01000003, 0x16000003},  // only the low 24 bits of the subtype travel
    };
    for (const auto& [st, code] : cases) {
        EXPECT_EQ(errToXCode(static_cast<DataSubType>(st)).getValue(), code) << st;
    }
    EXPECT_FALSE(errToXCode(DST_ERR_VAL).hasString());
}

}  // namespace
}  // namespace VX::SysEvent
