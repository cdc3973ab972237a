// Value: classification, equality, display texts and the engine's error
// codes. Conversions live in value_conversions.cc, the marshalled forms in
// value_marshal.cc.
#include "sysevent/value/value.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "host/runtime/monitor.h"

namespace VX::SysEvent {

XCode errToXCode(DataSubType st) {
    return XCode(ENGINE_ERROR_BASE + (static_cast<uint32_t>(st) & 0x00FFFFFFu));
}

namespace {

// Floats are equal within one machine epsilon, relative above 1.0 and absolute
// below it. Written so that every comparison involving NaN is false; -inf is
// unequal to itself because -inf - -inf is NaN.
bool floatsEqual(double a, double b) {
    constexpr double kMax = std::numeric_limits<double>::max();
    if (a > kMax) return b > kMax;
    if (b > kMax) return false;
    double scale = 1.0;
    if (std::fabs(a) > scale) scale = std::fabs(a);
    if (std::fabs(b) > scale) scale = std::fabs(b);
    return std::fabs(a - b) <= std::numeric_limits<double>::epsilon() * scale;
}

}  // namespace

bool operator==(const Value& a, const Value& b) {
    if (a.subtype != b.subtype) return false;
    switch (a.subtype) {
        case DST_BOOL:
            return a.data.boolean == b.data.boolean;
        case DST_UINT:
            return a.data.uint == b.data.uint;
        case DST_FLP:
            return floatsEqual(a.data.flp, b.data.flp);
        case DST_ABS_DATE_TIME:
        case DST_ABS_DATE:
        case DST_ABS_TIME:
        case DST_REL_TIME:
            return a.data.time == b.data.time;
        case DST_STRING:
            return a.data.string == b.data.string;
        default:
            // Undefined, empty, every error kind and unknown numbers carry no
            // payload, so the subtype decides alone.
            return true;
    }
}

String Value::toString() const {
    switch (subtype) {
        case DST_UNDEF:
            return "#UNDEF!";
        case DST_EMPTY:
            return String();
        case DST_BOOL:
            return TRUE_FALSE(data.boolean);
        case DST_UINT:
            return String::Formatted("%llu", data.uint);
        case DST_FLP:
            return String::Formatted("%g", data.flp);
        case DST_ABS_DATE_TIME:
            return STRING_OF_DATE_TIME(data.time);
        case DST_ABS_DATE:
            return STRING_OF_DATE(data.time);
        case DST_ABS_TIME:
            return STRING_OF_TIME(data.time);
        case DST_REL_TIME:
            return STRING_OF_TIME_DELTA(data.time);
        case DST_STRING:
            // "%s" stops at an embedded NUL, as the display text should.
            return String::Formatted("'%s'", data.string.c_str());
        case DST_ERR_DIV0:
            return "#DIV/0!";
        case DST_ERR_NA:
            return "#N/A!";
        case DST_ERR_NUM:
            return "#NUM!";
        case DST_ERR_VAL:
            return "#VAL!";
        case DST_ERR_GENERIC:
            return "#ERR!";
    }
    return "#NOTYPE!";
}

String Value::STRING_OF_DATE_TIME(const VX::Time& t) {
    return VX::Clock(t, 0).toString(VX::Clock::FORMAT_ISO);
}

String Value::STRING_OF_DATE(const VX::Time& t) {
    String text = STRING_OF_DATE_TIME(t);
    int at = text.indexOf('T');
    if (at <= 0) return String();
    return text.substring(0, static_cast<size_t>(at));
}

String Value::STRING_OF_TIME(const VX::Time& t) {
    String text = STRING_OF_DATE_TIME(t);
    int at = text.indexOf('T');
    if (at < 0) return text;
    return text.substring(static_cast<size_t>(at) + 1);
}

String Value::STRING_OF_TIME_DELTA(const VX::Time& t) {
    const uint32_t s = static_cast<uint32_t>(t.getSeconds());
    const uint32_t n = static_cast<uint32_t>(t.getNanoseconds());
    if (s == 0 && n == 0) return "0s";
    String out;
    if (uint32_t days = s / 86400; days) out.concatf("%ud", days);
    if (uint32_t hours = s / 3600 % 24; hours) out.concatf("%uh", hours);
    if (uint32_t minutes = s / 60 % 60; minutes) out.concatf("%um", minutes);
    if (uint32_t seconds = s % 60; seconds) out.concatf("%us", seconds);
    if (n != 0) {
        if (n % 1000 != 0) {
            out.concatf("%uns", n);
        } else if (n % 1000000 == 0) {
            out.concatf("%ums", n / 1000000);
        } else {
            out.concatf("%uus", n / 1000);
        }
    }
    return out;
}

}  // namespace VX::SysEvent
