// Value conversions: the conversion table, the number normalisation, and the
// payload operations at their boundaries (2^32, 2^64, negative floats, NaN,
// infinity, what strtoull and strtod accept). The payload operations are
// mostly reached through the conversions that use them.
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>

#include "host/runtime/clock.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");
const XCode kVAL = errToXCode(DST_ERR_VAL);
const XCode kNUM = errToXCode(DST_ERR_NUM);
const Value kMaxUInt(18446744073709551615ULL);

using Conversion = XCode (Value::*)();

Value rel(int32_t s, int32_t ns = 0) {
    return Value(VX::Time(s, ns), DST_REL_TIME);
}
Value absAt(const char* iso, DataSubType st) {
    VX::Clock c;
    EXPECT_TRUE(c.set(iso, 0).isSuccess()) << iso;
    return Value(c, st);
}

struct Row {
    const char* what;
    Value in;
    XCode rc;        // expected code
    Value expected;  // expected result (on failure: unused, the input must stay)
};

// Applies `op` to every row's input.
void check(Conversion op, std::initializer_list<Row> rows) {
    for (const Row& c : rows) {
        SCOPED_TRACE(c.what);
        Value v = c.in;
        XCode rc = (v.*op)();
        EXPECT_EQ(rc.getValue(), c.rc.getValue());
        if (rc.isSuccess()) {
            EXPECT_EQ(v.subtype, c.expected.subtype);
            EXPECT_EQ(v, c.expected) << "got " << v.toString().c_str();
        } else {
            // A failure never touches the value (compared field by field, so
            // that a NaN input also counts as unchanged).
            EXPECT_EQ(v.subtype, c.in.subtype);
            EXPECT_EQ(v.toString(), c.in.toString());
        }
    }
}

TEST(Conversions, ToBoolean) {
    check(&Value::toBoolean, {
                                 {"bool", Value(false), {}, Value(false)},
                                 {"uint 0", Value(0ULL), {}, Value(false)},
                                 {"uint 7", Value(7ULL), {}, Value(true)},
                                 {"float 0", Value(0.0), {}, Value(false)},
                                 {"float -0", Value(-0.0), {}, Value(false)},
                                 {"float NaN", Value(kNaN), {}, Value(true)},
                                 {"zero duration", rel(0), {}, Value(false)},
                                 {"1ns", rel(0, 1), {}, Value(true)},
                                 {"string 0", Value("0"), {}, Value(true)},
                                 {"string false", Value("false"), {}, Value(true)},
                                 {"empty string", Value(""), {}, Value(false)},
                                 {"#N/A!", Value(DST_ERR_NA), XCode(0x1600000B), {}},
                                 {"undefined", Value(DST_UNDEF), kVAL, {}},
                                 {"empty", Value(DST_EMPTY), kVAL, {}},
                                 {"unknown kind", Value(static_cast<DataSubType>(20)), kVAL, {}},
                             });
}

TEST(Conversions, ToUIntAndStrict) {
    check(&Value::toUInt,
          {
              {"true", Value(true), {}, Value(1ULL)},
              {"2.5 ties to even", Value(2.5), {}, Value(2ULL)},
              {"3.5 ties to even", Value(3.5), {}, Value(4ULL)},
              {"-0.4", Value(-0.4), {}, Value(0ULL)},
              {"-0.5", Value(-0.5), {}, Value(0ULL)},
              {"-0.6", Value(-0.6), kNUM, {}},
              {"-1", Value(-1.0), kNUM, {}},
              {"1e300", Value(1e300), kNUM, {}},
              {"2^64", Value(18446744073709551616.0), kNUM, {}},
              {"below 2^64", Value(18446744073709549568.0), {}, Value(18446744073709549568ULL)},
              {"inf", Value(kInf), kNUM, {}},
              {"NaN", Value(kNaN), kNUM, {}},
              {"duration drops nanos", rel(90, 999999999), {}, Value(90ULL)},
              {"negative seconds widen with sign", rel(-1), {}, kMaxUInt},
              {"text hex", Value("0x10"), {}, Value(16ULL)},
              {"text octal", Value("010"), {}, Value(8ULL)},
              {"text blank and sign", Value(" +7"), {}, Value(7ULL)},
              {"text empty", Value(""), {}, Value(0ULL)},
              {"text saturates", Value("99999999999999999999999"), {}, kMaxUInt},
              {"text trailing", Value("12abc"), kVAL, {}},
              {"text trailing blank", Value("12 "), kVAL, {}},
              {"text embedded NUL",
               Value(String("1\0"
                            "2",
                            3)),
               kVAL,
               {}},
              {"text float", Value("1.5"), kVAL, {}},
              {"error", Value(DST_ERR_DIV0), errToXCode(DST_ERR_DIV0), {}},
          });
    check(&Value::toUIntStrict, {
                                    {"4.0", Value(4.0), {}, Value(4ULL)},
                                    {"2.5", Value(2.5), kNUM, {}},
                                    {"-1", Value(-1.0), kNUM, {}},
                                    {"-0", Value(-0.0), {}, Value(0ULL)},
                                    {"2^64", Value(18446744073709551616.0), kNUM, {}},
                                    {"inf", Value(kInf), kNUM, {}},
                                    {"NaN", Value(kNaN), kNUM, {}},
                                    {"uint", Value(9ULL), {}, Value(9ULL)},
                                    {"bool", Value(true), kVAL, {}},
                                    {"time", rel(1), kVAL, {}},
                                    {"text", Value("4"), kVAL, {}},
                                    {"error", Value(DST_ERR_NA), errToXCode(DST_ERR_NA), {}},
                                });
}

TEST(Conversions, ToFloatAndNumber) {
    check(&Value::toFloat,
          {
              {"bool", Value(true), {}, Value(1.0)},
              {"uint", Value(3ULL), {}, Value(3.0)},
              {"duration", rel(1, 500000000), {}, Value(1.5)},
              {"negative seconds widen with sign", rel(-1), {}, Value(18446744073709551615.0)},
              {"text 1e3", Value("1e3"), {}, Value(1000.0)},
              {"text blank and sign", Value("  -2.5"), {}, Value(-2.5)},
              {"text empty", Value(""), {}, Value(0.0)},
              {"text 12abc", Value("12abc"), kVAL, {}},
              {"text 1.5x", Value("1.5x"), kVAL, {}},
              {"text inf", Value("inf"), {}, Value(kInf)},
              {"text hex float", Value("0x1p4"), {}, Value(16.0)},
              {"text huge", Value("1e999"), {}, Value(kInf)},
          });
    check(&Value::toNumber, {
                                {"duration", rel(1, 500000000), {}, Value(1.5)},
                                {"whole duration is a float", rel(2), {}, Value(2.0)},
                                {"true", Value(true), {}, Value(1ULL)},
                                {"float", Value(2.5), {}, Value(2.5)},
                                {"text 12", Value("12"), {}, Value(12ULL)},
                                {"text 1.5", Value("1.5"), {}, Value(1.5)},
                                {"text 0x1F", Value("0x1F"), {}, Value(31ULL)},
                                {"text inf", Value("inf"), {}, Value(kInf)},
                                {"only the first token counts", Value("12 abc"), {}, Value(12ULL)},
                                {"a name", Value("abc"), kVAL, {}},
                                {"a duration text", Value("5s"), kVAL, {}},
                                {"empty text", Value(""), kVAL, {}},
                                {"text the lexer refuses", Value("1 ="), kVAL, {}},
                                {"an error", Value(DST_ERR_NUM), kNUM, {}},
                            });
    // NaN is unequal to itself, so it cannot be a row.
    double d = 3.0;
    EXPECT_TRUE(Value::STRING_TO_FLP(d, "nan").isSuccess());
    EXPECT_TRUE(std::isnan(d));
}

TEST(Conversions, ToTimeKinds) {
    const Value dateTime = absAt("2024-03-10T13:14:15", DST_ABS_DATE_TIME);
    const Value date = absAt("2024-03-10T00:00:00", DST_ABS_DATE);
    const Value timeOfDay = absAt("1970-01-01T13:14:15", DST_ABS_TIME);
    check(
        &Value::toTime,
        {
            {"uint 2^32-1", Value(4294967295ULL), {}, rel(-1)},
            {"uint 2^32", Value(4294967296ULL), kNUM, {}},
            {"uint 2^64-1", kMaxUInt, kNUM, {}},
            {"true", Value(true), {}, rel(1)},
            {"float 1.5", Value(1.5), {}, rel(1, 500000000)},
            {"float truncates toward zero", Value(0.0000000019), {}, rel(0, 1)},
            {"float -0", Value(-0.0), {}, rel(0)},
            {"float -0.5", Value(-0.5), kNUM, {}},
            {"float -1e-300", Value(-1e-300), kNUM, {}},
            {"float 4294967294.5", Value(4294967294.5), {}, rel(-2, 500000000)},
            {"float 4294967295", Value(4294967295.0), kNUM, {}},
            {"float inf", Value(kInf), kNUM, {}},
            {"float NaN", Value(kNaN), kNUM, {}},
            {"already a time", dateTime, {}, dateTime},
            {"text duration", Value("1h30m"), {}, rel(5400)},
            {"text date", Value("2024-03-10"), {}, date},
            {"text time of day", Value("12:30:00"), {}, absAt("1970-01-01T12:30:00", DST_ABS_TIME)},
            {"text number", Value("5"), kVAL, {}},
        });
    check(&Value::toAbsDate,
          {{"date-time", dateTime, {}, date}, {"bad float", Value(-1.0), kNUM, {}}});
    check(&Value::toAbsTime, {{"date-time", dateTime, {}, timeOfDay}});
    check(&Value::toAbsDateTime,
          {{"duration", rel(86400), {}, absAt("1970-01-02T00:00:00", DST_ABS_DATE_TIME)}});
    check(&Value::toRelTime,
          {{"date-time", dateTime, {}, Value(dateTime.data.time, DST_REL_TIME)}});
    check(&Value::correctTime,
          {
              {"duration", rel(90061), {}, rel(90061)},
              {"date", Value(dateTime.data.time, DST_ABS_DATE), {}, date},
              {"time of day", Value(dateTime.data.time, DST_ABS_TIME), {}, timeOfDay},
              {"number", Value(1ULL), kVAL, {}},
              // Not a conversion: an error is refused like any non-time.
              {"error", Value(DST_ERR_DIV0), kVAL, {}},
          });
}

TEST(Conversions, ToTextAndToTargetKind) {
    check(&Value::toText, {
                              {"uint", Value(5ULL), {}, Value("5")},
                              {"bool", Value(true), {}, Value("true")},
                              {"float", Value(0.5), {}, Value("0.5")},
                              {"duration", rel(5400), {}, Value("1h30m")},
                              {"string stays unquoted", Value("a'b"), {}, Value("a'b")},
                              {"undefined", Value(DST_UNDEF), kVAL, {}},
                              {"error", Value(DST_ERR_VAL), kVAL, {}},
                          });
    // Nothing converts into an error: an error reports its own code, any
    // other value the code of the error it was asked to become.
    const struct {
        Value in, target;
        XCode rc;
        Value expected;
    } cases[] = {
        {Value(5ULL), Value("x"), {}, Value("5")},
        {Value(2ULL), rel(0), {}, rel(2)},
        {Value("7"), Value(0.0), {}, Value(7.0)},
        {Value(3ULL), Value(DST_ERR_NA), errToXCode(DST_ERR_NA), Value(3ULL)},
        {Value(DST_ERR_DIV0), Value(DST_ERR_NA), errToXCode(DST_ERR_DIV0), Value(DST_ERR_DIV0)},
        {Value(3ULL), Value(DST_UNDEF), kVAL, Value(3ULL)},
        {Value(3ULL), Value(DST_EMPTY), kVAL, Value(3ULL)},
        {Value(3ULL), Value(static_cast<DataSubType>(99)), kVAL, Value(3ULL)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.target.toString().c_str());
        Value v = c.in;
        EXPECT_EQ(v.to(c.target).getValue(), c.rc.getValue());
        EXPECT_EQ(v.subtype, c.expected.subtype);
        EXPECT_EQ(v, c.expected);
    }
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
        SCOPED_TRACE((c.a.toString() + " " + c.b.toString()).c_str());
        Value a = c.a, b = c.b;
        EXPECT_EQ(Value::NORMALIZE_NUMBERS(a, b).getValue(), c.rc.getValue());
        EXPECT_EQ(a.subtype, c.ea.subtype);
        EXPECT_EQ(b.subtype, c.eb.subtype);
        EXPECT_EQ(a, c.ea);
        EXPECT_EQ(b, c.eb);
    }
}

}  // namespace
}  // namespace VX::SysEvent
