// Value model: classification, equality (the float rule included), display
// texts and the engine's error codes.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "host/runtime/clock.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");

VX::Time at(const char* iso) {
    VX::Clock c;
    EXPECT_TRUE(c.set(iso, 0).isSuccess()) << iso;
    return c.toTime();
}

TEST(ValueModel, DataTypeOfEverySubtype) {
    const struct {
        int subtype;
        DataType type;
    } cases[] = {
        {0, DT_UNDEF},  {1, DT_EMPTY},  {2, DT_BOOL},   {3, DT_NUMBER}, {4, DT_NUMBER},
        {5, DT_TIME},   {6, DT_TIME},   {7, DT_TIME},   {8, DT_TIME},   {9, DT_STRING},
        {10, DT_ERROR}, {11, DT_ERROR}, {12, DT_ERROR}, {13, DT_ERROR}, {14, DT_ERROR},
        {15, DT_UNDEF}, {42, DT_UNDEF}, {-1, DT_UNDEF},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Value(static_cast<DataSubType>(c.subtype)).getDataType(), c.type) << c.subtype;
    }
}

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
        {Value(true), "true"},
        {Value(false), "false"},
        {Value(18446744073709551615ULL), "18446744073709551615"},
        {Value(0.1), "0.1"},
        {Value(1e20), "1e+20"},
        {Value(1234567.0), "1.23457e+06"},
        {Value(-2.5), "-2.5"},
        {Value(kInf), "inf"},
        {Value("it's"), "'it's'"},
        {Value(String("ab\0cd", 5)), "'ab'"},
        {Value(DST_ERR_DIV0), "#DIV/0!"},
        {Value(DST_ERR_NA), "#N/A!"},
        {Value(DST_ERR_NUM), "#NUM!"},
        {Value(DST_ERR_VAL), "#VAL!"},
        {Value(DST_ERR_GENERIC), "#ERR!"},
        {Value(static_cast<DataSubType>(15)), "#NOTYPE!"},
        {Value(static_cast<DataSubType>(-3)), "#NOTYPE!"},
        {Value(at("2024-01-15T10:30:05"), DST_ABS_DATE_TIME), "2024-01-15T10:30:05"},
        {Value(at("2024-01-15T00:00:00"), DST_ABS_DATE), "2024-01-15"},
        {Value(at("1970-01-01T10:30:05"), DST_ABS_TIME), "10:30:05"},
        {Value(VX::Time(5400, 0), DST_REL_TIME), "1h30m"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.v.toString(), c.text);
}

TEST(ValueModel, DateAndTimeTextsSplitAtTheT) {
    const VX::Time t(at("1999-12-31T23:59:58").getSeconds(), 250000000);
    EXPECT_EQ(Value::STRING_OF_DATE_TIME(t), "1999-12-31T23:59:58.25");
    EXPECT_EQ(Value::STRING_OF_DATE(t), "1999-12-31");
    EXPECT_EQ(Value::STRING_OF_TIME(t), "23:59:58.25");
    EXPECT_EQ(Value::STRING_OF_DATE(VX::Time()), "1970-01-01");
    EXPECT_EQ(Value::STRING_OF_TIME(VX::Time()), "00:00:00");
}

TEST(ValueModel, TimeDeltaTexts) {
    const struct {
        VX::Time t;
        const char* text;
    } cases[] = {
        {VX::Time(0, 0), "0s"},
        {VX::Time(59, 0), "59s"},
        {VX::Time(86400, 0), "1d"},
        {VX::Time(0, 2000000), "2ms"},
        {VX::Time(93784, 500000000), "1d2h3m4s500ms"},
        {VX::Time(0, 500000000), "500ms"},
        {VX::Time(3600, 0), "1h"},
        {VX::Time(0, 250000), "250us"},
        {VX::Time(0, 1500), "1500ns"},
        {VX::Time(90061, 1), "1d1h1m1s1ns"},
        {VX::Time(60, 0), "1m"},
        {VX::Time(86400 + 60, 0), "1d1m"},
        // The seconds are read as unsigned 32-bit: -1 is the largest duration.
        {VX::Time(-1, 0), "49710d6h28m15s"},
    };
    for (const auto& c : cases) EXPECT_EQ(Value::STRING_OF_TIME_DELTA(c.t), c.text);
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
