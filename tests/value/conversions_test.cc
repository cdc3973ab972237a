// Value conversions: the conversion table, the number normalisation, and the
// payload operations at their boundaries (2^32, 2^64, negative floats, NaN,
// infinity, what strtoull and strtod accept).
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "host/clock.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const XCode kVAL = errToXCode(DST_ERR_VAL);
const XCode kNUM = errToXCode(DST_ERR_NUM);

using Conversion = XCode (Value::*)();

Value rel(int32_t s, int32_t ns = 0) {
    return Value(VX::Time(s, ns), DST_REL_TIME);
}
Value absAt(const char* iso, DataSubType st) {
    VX::Clock c;
    EXPECT_TRUE(c.set(iso, 0).isSuccess()) << iso;
    return Value(c, st);
}

struct Case {
    const char* what;
    Conversion op;
    Value in;
    XCode rc;        // expected code
    Value expected;  // expected result (on failure: unused, the input must stay)
};

void run(const Case& c) {
    Value v = c.in;
    XCode rc = (v.*c.op)();
    EXPECT_EQ(rc.getValue(), c.rc.getValue()) << c.what;
    if (rc.isSuccess()) {
        EXPECT_EQ(v.subtype, c.expected.subtype) << c.what;
        EXPECT_EQ(v, c.expected) << c.what << ": got " << v.toString().c_str();
    } else {
        // A failure never touches the value (compared field by field, so that
        // a NaN input also counts as unchanged).
        EXPECT_EQ(v.subtype, c.in.subtype) << c.what;
        EXPECT_EQ(v.toString(), c.in.toString()) << c.what;
    }
}

TEST(Conversions, ToBoolean) {
    const Case cases[] = {
        {"bool", &Value::toBoolean, Value(false), {}, Value(false)},
        {"uint 0", &Value::toBoolean, Value(0ULL), {}, Value(false)},
        {"uint 7", &Value::toBoolean, Value(7ULL), {}, Value(true)},
        {"float 0", &Value::toBoolean, Value(0.0), {}, Value(false)},
        {"float -0", &Value::toBoolean, Value(-0.0), {}, Value(false)},
        {"float NaN", &Value::toBoolean, Value(std::nan("")), {}, Value(true)},
        {"zero duration", &Value::toBoolean, rel(0), {}, Value(false)},
        {"1ns", &Value::toBoolean, rel(0, 1), {}, Value(true)},
        {"string 0", &Value::toBoolean, Value("0"), {}, Value(true)},
        {"string false", &Value::toBoolean, Value("false"), {}, Value(true)},
        {"empty string", &Value::toBoolean, Value(""), {}, Value(false)},
        {"#N/A!", &Value::toBoolean, Value(DST_ERR_NA), XCode(0x1600000B), {}},
        {"undefined", &Value::toBoolean, Value(DST_UNDEF), kVAL, {}},
        {"empty", &Value::toBoolean, Value(DST_EMPTY), kVAL, {}},
        {"unknown kind", &Value::toBoolean, Value(static_cast<DataSubType>(20)), kVAL, {}},
    };
    for (const auto& c : cases) run(c);
}

TEST(Conversions, ToUIntAndStrict) {
    const Case cases[] = {
        {"true", &Value::toUInt, Value(true), {}, Value(1ULL)},
        {"2.5 ties to even", &Value::toUInt, Value(2.5), {}, Value(2ULL)},
        {"3.5 ties to even", &Value::toUInt, Value(3.5), {}, Value(4ULL)},
        {"-0.4", &Value::toUInt, Value(-0.4), {}, Value(0ULL)},
        {"-0.5", &Value::toUInt, Value(-0.5), {}, Value(0ULL)},
        {"-0.6", &Value::toUInt, Value(-0.6), kNUM, {}},
        {"-1", &Value::toUInt, Value(-1.0), kNUM, {}},
        {"1e300", &Value::toUInt, Value(1e300), kNUM, {}},
        {"2^64", &Value::toUInt, Value(18446744073709551616.0), kNUM, {}},
        {"below 2^64",
         &Value::toUInt,
         Value(18446744073709549568.0),
         {},
         Value(18446744073709549568ULL)},
        {"inf", &Value::toUInt, Value(kInf), kNUM, {}},
        {"NaN", &Value::toUInt, Value(std::nan("")), kNUM, {}},
        {"duration drops nanos", &Value::toUInt, rel(90, 999999999), {}, Value(90ULL)},
        {"negative seconds widen with sign",
         &Value::toUInt,
         rel(-1),
         {},
         Value(18446744073709551615ULL)},
        {"text hex", &Value::toUInt, Value("0x10"), {}, Value(16ULL)},
        {"text octal", &Value::toUInt, Value("010"), {}, Value(8ULL)},
        {"text blank and sign", &Value::toUInt, Value(" +7"), {}, Value(7ULL)},
        {"text empty", &Value::toUInt, Value(""), {}, Value(0ULL)},
        {"text saturates",
         &Value::toUInt,
         Value("99999999999999999999999"),
         {},
         Value(18446744073709551615ULL)},
        {"text trailing", &Value::toUInt, Value("12abc"), kVAL, {}},
        {"text trailing blank", &Value::toUInt, Value("12 "), kVAL, {}},
        {"text embedded NUL",
         &Value::toUInt,
         Value(String("1\0"
                      "2",
                      3)),
         kVAL,
         {}},
        {"text float", &Value::toUInt, Value("1.5"), kVAL, {}},
        {"error", &Value::toUInt, Value(DST_ERR_DIV0), errToXCode(DST_ERR_DIV0), {}},

        {"strict 4.0", &Value::toUIntStrict, Value(4.0), {}, Value(4ULL)},
        {"strict 2.5", &Value::toUIntStrict, Value(2.5), kNUM, {}},
        {"strict -1", &Value::toUIntStrict, Value(-1.0), kNUM, {}},
        {"strict -0", &Value::toUIntStrict, Value(-0.0), {}, Value(0ULL)},
        {"strict 2^64", &Value::toUIntStrict, Value(18446744073709551616.0), kNUM, {}},
        {"strict inf", &Value::toUIntStrict, Value(kInf), kNUM, {}},
        {"strict NaN", &Value::toUIntStrict, Value(std::nan("")), kNUM, {}},
        {"strict uint", &Value::toUIntStrict, Value(9ULL), {}, Value(9ULL)},
        {"strict bool", &Value::toUIntStrict, Value(true), kVAL, {}},
        {"strict time", &Value::toUIntStrict, rel(1), kVAL, {}},
        {"strict text", &Value::toUIntStrict, Value("4"), kVAL, {}},
        {"strict error", &Value::toUIntStrict, Value(DST_ERR_NA), errToXCode(DST_ERR_NA), {}},
    };
    for (const auto& c : cases) run(c);
}

TEST(Conversions, ToFloatAndNumber) {
    const Case cases[] = {
        {"bool", &Value::toFloat, Value(true), {}, Value(1.0)},
        {"uint", &Value::toFloat, Value(3ULL), {}, Value(3.0)},
        {"duration", &Value::toFloat, rel(1, 500000000), {}, Value(1.5)},
        {"text 1e3", &Value::toFloat, Value("1e3"), {}, Value(1000.0)},
        {"text empty", &Value::toFloat, Value(""), {}, Value(0.0)},
        {"text 12abc", &Value::toFloat, Value("12abc"), kVAL, {}},
        {"text inf", &Value::toFloat, Value("inf"), {}, Value(kInf)},
        {"text hex float", &Value::toFloat, Value("0x1p4"), {}, Value(16.0)},
        {"text huge", &Value::toFloat, Value("1e999"), {}, Value(kInf)},

        {"number of duration", &Value::toNumber, rel(1, 500000000), {}, Value(1.5)},
        {"number of whole duration is a float", &Value::toNumber, rel(2), {}, Value(2.0)},
        {"number of true", &Value::toNumber, Value(true), {}, Value(1ULL)},
        {"number of float", &Value::toNumber, Value(2.5), {}, Value(2.5)},
        {"number of text 12", &Value::toNumber, Value("12"), {}, Value(12ULL)},
        {"number of text 1.5", &Value::toNumber, Value("1.5"), {}, Value(1.5)},
        {"number of text 0x1F", &Value::toNumber, Value("0x1F"), {}, Value(31ULL)},
        {"number of text inf", &Value::toNumber, Value("inf"), {}, Value(kInf)},
        {"only the first token counts", &Value::toNumber, Value("12 abc"), {}, Value(12ULL)},
        {"number of a name", &Value::toNumber, Value("abc"), kVAL, {}},
        {"number of a duration text", &Value::toNumber, Value("5s"), kVAL, {}},
        {"number of empty text", &Value::toNumber, Value(""), kVAL, {}},
        {"number of text the lexer refuses", &Value::toNumber, Value("1 ="), kVAL, {}},
        {"number of an error", &Value::toNumber, Value(DST_ERR_NUM), kNUM, {}},
    };
    for (const auto& c : cases) run(c);
}

TEST(Conversions, ToTimeKinds) {
    const Value dateTime = absAt("2024-03-10T13:14:15", DST_ABS_DATE_TIME);
    const Case cases[] = {
        {"uint 2^32-1",
         &Value::toTime,
         Value(4294967295ULL),
         {},
         Value(VX::Time(-1, 0), DST_REL_TIME)},
        {"uint 2^32", &Value::toTime, Value(4294967296ULL), kNUM, {}},
        {"true", &Value::toTime, Value(true), {}, rel(1)},
        {"float 1.5", &Value::toTime, Value(1.5), {}, rel(1, 500000000)},
        {"float -0.5", &Value::toTime, Value(-0.5), kNUM, {}},
        {"float 4294967294.5",
         &Value::toTime,
         Value(4294967294.5),
         {},
         Value(VX::Time(-2, 500000000), DST_REL_TIME)},
        {"float 4294967295", &Value::toTime, Value(4294967295.0), kNUM, {}},
        {"float inf", &Value::toTime, Value(kInf), kNUM, {}},
        {"float NaN", &Value::toTime, Value(std::nan("")), kNUM, {}},
        {"already a time", &Value::toTime, dateTime, {}, dateTime},
        {"text duration", &Value::toTime, Value("1h30m"), {}, rel(5400)},
        {"text date",
         &Value::toTime,
         Value("2024-03-10"),
         {},
         absAt("2024-03-10T00:00:00", DST_ABS_DATE)},
        {"text time of day",
         &Value::toTime,
         Value("12:30:00"),
         {},
         absAt("1970-01-01T12:30:00", DST_ABS_TIME)},
        {"text number", &Value::toTime, Value("5"), kVAL, {}},

        {"date of date-time",
         &Value::toAbsDate,
         dateTime,
         {},
         absAt("2024-03-10T00:00:00", DST_ABS_DATE)},
        {"time of date-time",
         &Value::toAbsTime,
         dateTime,
         {},
         absAt("1970-01-01T13:14:15", DST_ABS_TIME)},
        {"date-time of duration",
         &Value::toAbsDateTime,
         rel(86400),
         {},
         absAt("1970-01-02T00:00:00", DST_ABS_DATE_TIME)},
        {"duration of date-time",
         &Value::toRelTime,
         dateTime,
         {},
         Value(dateTime.data.time, DST_REL_TIME)},
        {"date of a failing float", &Value::toAbsDate, Value(-1.0), kNUM, {}},

        {"correct duration", &Value::correctTime, rel(90061), {}, rel(90061)},
        {"correct date",
         &Value::correctTime,
         Value(dateTime.data.time, DST_ABS_DATE),
         {},
         absAt("2024-03-10T00:00:00", DST_ABS_DATE)},
        {"correct time of day",
         &Value::correctTime,
         Value(dateTime.data.time, DST_ABS_TIME),
         {},
         absAt("1970-01-01T13:14:15", DST_ABS_TIME)},
        {"correct number", &Value::correctTime, Value(1ULL), kVAL, {}},
        {"correct error", &Value::correctTime, Value(DST_ERR_DIV0), errToXCode(DST_ERR_DIV0), {}},
    };
    for (const auto& c : cases) run(c);
}

TEST(Conversions, ToText) {
    const Case cases[] = {
        {"uint", &Value::toText, Value(5ULL), {}, Value("5")},
        {"bool", &Value::toText, Value(true), {}, Value("true")},
        {"float", &Value::toText, Value(0.5), {}, Value("0.5")},
        {"duration", &Value::toText, rel(5400), {}, Value("1h30m")},
        {"string stays unquoted", &Value::toText, Value("a'b"), {}, Value("a'b")},
        {"undefined", &Value::toText, Value(DST_UNDEF), kVAL, {}},
        {"error", &Value::toText, Value(DST_ERR_VAL), kVAL, {}},
    };
    for (const auto& c : cases) run(c);
}

TEST(Conversions, ToTargetKind) {
    Value v(5ULL);
    ASSERT_TRUE(v.to(Value("x")).isSuccess());
    EXPECT_EQ(v, Value("5"));

    v = Value(2ULL);
    ASSERT_TRUE(v.to(rel(0)).isSuccess());
    EXPECT_EQ(v, rel(2));

    v = Value("7");
    ASSERT_TRUE(v.to(Value(0.0)).isSuccess());
    EXPECT_EQ(v, Value(7.0));

    // Nothing converts into an error: an error reports its own code, any
    // other value the code of the error it was asked to become.
    v = Value(3ULL);
    EXPECT_EQ(v.to(Value(DST_ERR_NA)).getValue(), 0x1600000Bu);
    EXPECT_EQ(v, Value(3ULL));
    v = Value(DST_ERR_DIV0);
    EXPECT_EQ(v.to(Value(DST_ERR_NA)).getValue(), 0x1600000Au);

    v = Value(3ULL);
    EXPECT_EQ(v.to(Value(DST_UNDEF)), kVAL);
    EXPECT_EQ(v.to(Value(DST_EMPTY)), kVAL);
    EXPECT_EQ(v.to(Value(static_cast<DataSubType>(99))), kVAL);
    EXPECT_EQ(v, Value(3ULL));
}

TEST(Conversions, NormalizeNumbers) {
    const struct {
        Value a, b;
        XCode rc;
        Value ea, eb;
    } cases[] = {
        {Value(3ULL), Value(2.0), {}, Value(3ULL), Value(2ULL)},
        {Value(2.0), Value(3ULL), {}, Value(2ULL), Value(3ULL)},
        {Value(3ULL), Value(2.5), {}, Value(3.0), Value(2.5)},
        {Value(3ULL), Value(-1.0), {}, Value(3.0), Value(-1.0)},
        {Value(1ULL), Value(1e15), {}, Value(1ULL), Value(1000000000000000ULL)},
        {Value(1ULL), Value(1e20), {}, Value(1.0), Value(1e20)},
        {Value(1ULL), Value(kInf), {}, Value(1.0), Value(kInf)},
        {Value(1.5), Value(2.5), {}, Value(1.5), Value(2.5)},
        {Value(1ULL), Value("1"), kVAL, Value(1ULL), Value("1")},
        {Value(true), Value(1ULL), kVAL, Value(true), Value(1ULL)},
        {Value(DST_ERR_NA), Value(1ULL), kVAL, Value(DST_ERR_NA), Value(1ULL)},
    };
    for (const auto& c : cases) {
        Value a = c.a, b = c.b;
        EXPECT_EQ(Value::NORMALIZE_NUMBERS(a, b).getValue(), c.rc.getValue());
        EXPECT_EQ(a.subtype, c.ea.subtype) << c.a.toString().c_str();
        EXPECT_EQ(b.subtype, c.eb.subtype) << c.b.toString().c_str();
        EXPECT_EQ(a, c.ea);
        EXPECT_EQ(b, c.eb);
    }
}

TEST(PayloadOperations, FloatToTimeSplitsSecondsAndNanoseconds) {
    VX::Time t(77, 77);
    ASSERT_TRUE(Value::FLP_TO_TIME(t, 1.5).isSuccess());
    EXPECT_EQ(t, VX::Time(1, 500000000));
    ASSERT_TRUE(Value::FLP_TO_TIME(t, 0.0000000019).isSuccess());
    EXPECT_EQ(t, VX::Time(0, 1));  // truncated toward zero
    ASSERT_TRUE(Value::FLP_TO_TIME(t, -0.0).isSuccess());
    EXPECT_EQ(t, VX::Time(0, 0));

    t = VX::Time(77, 77);
    EXPECT_EQ(Value::FLP_TO_TIME(t, -1e-300), kNUM);
    EXPECT_EQ(Value::FLP_TO_TIME(t, 4294967295.0), kNUM);
    EXPECT_EQ(t, VX::Time(77, 77));
}

TEST(PayloadOperations, UIntToTimeStopsAt2Pow32) {
    VX::Time t;
    EXPECT_TRUE(Value::UINT_TO_TIME(t, 4294967295ULL).isSuccess());
    EXPECT_EQ(static_cast<uint32_t>(t.getSeconds()), 4294967295u);
    EXPECT_EQ(Value::UINT_TO_TIME(t, 4294967296ULL), kNUM);
    EXPECT_EQ(Value::UINT_TO_TIME(t, 18446744073709551615ULL), kNUM);
}

TEST(PayloadOperations, TimeToFloatWidensTheSecondsWithSign) {
    double d = 0;
    ASSERT_TRUE(Value::TIME_TO_FLP(d, VX::Time(2, 250000000)).isSuccess());
    EXPECT_DOUBLE_EQ(d, 2.25);
    ASSERT_TRUE(Value::TIME_TO_FLP(d, VX::Time(-1, 0)).isSuccess());
    EXPECT_DOUBLE_EQ(d, 18446744073709551615.0);
}

TEST(PayloadOperations, StringToFloatNeedsTheWholeText) {
    double d = 3.0;
    EXPECT_EQ(Value::STRING_TO_FLP(d, "1.5x"), kVAL);
    EXPECT_EQ(d, 3.0);
    EXPECT_TRUE(Value::STRING_TO_FLP(d, "  -2.5").isSuccess());
    EXPECT_EQ(d, -2.5);
    EXPECT_TRUE(Value::STRING_TO_FLP(d, "nan").isSuccess());
    EXPECT_TRUE(std::isnan(d));
}

}  // namespace
}  // namespace VX::SysEvent
