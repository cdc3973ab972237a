// Value conversions of the values no formula can produce (NaN, the undefined
// and empty values, unknown kinds, negative zero and durations, texts with
// NUL bytes, dates holding a time of day) and of a value into another's kind. What the conversions
// make of every value a formula can produce is in the engine_value transcript (probe).
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

#include "sysevent/value/value.h"

namespace VX::SysEvent {
namespace {

const XCode kVAL = errToXCode(DST_ERR_VAL);
const XCode kNUM = errToXCode(DST_ERR_NUM);

using Conversion = XCode (Value::*)();

Value rel(int32_t s) {
    return Value(VX::Time(s, 0), DST_REL_TIME);
}

TEST(Conversions, ValuesNoFormulaMakes) {
    const Value nan(std::nan("")), undef(DST_UNDEF), empty(DST_EMPTY),
        unknown(static_cast<DataSubType>(20)),
        withNul(String("1\0"
                       "2",
                       3));
    const struct {
        const char* what;
        Conversion op;
        Value in;
        XCode rc;
        Value expected;  // on failure unused: the input must stay
    } rows[] = {
        {"NaN is true", &Value::toBoolean, nan, {}, Value(true)},
        {"undefined", &Value::toBoolean, undef, kVAL, {}},
        {"empty", &Value::toBoolean, empty, kVAL, {}},
        {"unknown kind", &Value::toBoolean, unknown, kVAL, {}},
        {"undefined text", &Value::toText, undef, kVAL, {}},
        {"NaN", &Value::toUInt, nan, kNUM, {}},
        {"NaN strict", &Value::toUIntStrict, nan, kNUM, {}},
        {"NaN time", &Value::toTime, nan, kNUM, {}},
        {"embedded NUL", &Value::toUInt, withNul, kVAL, {}},
        {"negative seconds widen with sign",
         &Value::toUInt,
         rel(-1),
         {},
         Value(18446744073709551615ULL)},
        {"negative seconds as float", &Value::toFloat, rel(-1), {}, Value(18446744073709551615.0)},
        // Negative zero (a formula's -0.0 is the integer 0).
        {"-0 is false", &Value::toBoolean, Value(-0.0), {}, Value(false)},
        {"-0 whole", &Value::toUIntStrict, Value(-0.0), {}, Value(0ULL)},
        {"-0 time", &Value::toTime, Value(-0.0), {}, rel(0)},
        // A date or time of day holding more than its kind shows.
        {"date",
         &Value::correctTime,
         Value(VX::Time(90061, 0), DST_ABS_DATE),
         {},
         Value(VX::Time(86400, 0), DST_ABS_DATE)},
        {"time of day",
         &Value::correctTime,
         Value(VX::Time(90061, 0), DST_ABS_TIME),
         {},
         Value(VX::Time(3661, 0), DST_ABS_TIME)},
    };
    for (const auto& c : rows) {
        SCOPED_TRACE(c.what);
        Value v = c.in;
        XCode rc = (v.*c.op)();
        EXPECT_EQ(rc.getValue(), c.rc.getValue());
        const Value& want = rc.isSuccess() ? c.expected : c.in;
        // Compared by subtype and text, so that a NaN input counts as unchanged.
        EXPECT_EQ(v.subtype, want.subtype);
        EXPECT_EQ(v.toString(), want.toString());
    }
    double d = 3.0;
    EXPECT_TRUE(Value::STRING_TO_FLP(d, "nan").isSuccess());
    EXPECT_TRUE(std::isnan(d));
}

TEST(Conversions, ToTargetKind) {
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

}  // namespace
}  // namespace VX::SysEvent
