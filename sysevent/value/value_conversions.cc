// Value: conversions between kinds, the number normalisation and the payload
// operations they are built from.
//
// Every conversion follows one frame: already the target kind succeeds with
// no change; an error value fails with its own code (that is how errors pass
// unchanged through functions); undefined, empty and unknown subtypes fail
// with #VAL!; anything else computes the new value aside and assigns it only
// on success, so a failure never touches the value.
#include <cmath>
#include <cstdlib>

#include "sysevent/value/value.h"

namespace VX::SysEvent {

namespace {

constexpr double kTwoPow64 = 18446744073709551616.0;
constexpr unsigned long long kTwoPow32 = 4294967296ULL;

XCode VAL() {
    return errToXCode(DST_ERR_VAL);
}
XCode NUM() {
    return errToXCode(DST_ERR_NUM);
}

// The part of the frame shared by every conversion once "already the target
// kind" is ruled out: true with `rc` set when the value cannot convert.
bool refuses(const Value& v, XCode& rc) {
    switch (v.getDataType()) {
        case DT_ERROR:
            rc = errToXCode(v.subtype);
            return true;
        case DT_UNDEF:
        case DT_EMPTY:
            rc = VAL();
            return true;
        default:
            return false;
    }
}

bool timeIsZero(const VX::Time& t) {
    return t.getSeconds() == 0 && t.getNanoseconds() == 0;
}

}  // namespace

// ---- payload operations -------------------------------------------------

XCode Value::FLP_TO_UINT(unsigned long long& u, double d) {
    const double r = std::nearbyint(d);
    // Range-checked before the cast (an out-of-range cast is undefined); the
    // observable rule is the same: only a rounded value that converts back
    // exactly is accepted. NaN fails both comparisons.
    if (!(r >= 0.0 && r < kTwoPow64)) return NUM();
    const unsigned long long v = static_cast<unsigned long long>(r);
    if (static_cast<double>(v) != r) return NUM();
    u = v;
    return XCode();
}

XCode Value::FLP_TO_UINT_STRICT(unsigned long long& u, double d) {
    double whole = 0.0;
    const double fraction = std::modf(d, &whole);
    if (!(fraction == 0.0 && whole >= 0.0 && whole < kTwoPow64)) return NUM();
    u = static_cast<unsigned long long>(whole);
    return XCode();
}

XCode Value::TIME_TO_UINT(unsigned long long& u, const VX::Time& t) {
    u = static_cast<unsigned long long>(static_cast<long long>(t.getSeconds()));
    return XCode();
}

XCode Value::STRING_TO_UINT(unsigned long long& u, const String& s) {
    const char* begin = s.c_str();
    char* end = nullptr;
    const unsigned long long v = strtoull(begin, &end, 0);
    // An embedded NUL stops the parse short of the end and so fails too.
    if (end != begin + s.length()) return VAL();
    u = v;
    return XCode();
}

XCode Value::TIME_TO_FLP(double& d, const VX::Time& t) {
    const auto seconds = static_cast<unsigned long long>(static_cast<long long>(t.getSeconds()));
    const auto nanos = static_cast<unsigned long long>(static_cast<long long>(t.getNanoseconds()));
    d = static_cast<double>(seconds) + static_cast<double>(nanos) / 1e9;
    return XCode();
}

XCode Value::STRING_TO_FLP(double& d, const String& s) {
    const char* begin = s.c_str();
    char* end = nullptr;
    const double v = strtod(begin, &end);
    if (end != begin + s.length()) return VAL();
    d = v;
    return XCode();
}

XCode Value::UINT_TO_TIME(VX::Time& t, unsigned long long u) {
    if (u >= kTwoPow32) return NUM();
    t = VX::Time(static_cast<int32_t>(static_cast<uint32_t>(u)), 0);
    return XCode();
}

XCode Value::FLP_TO_TIME(VX::Time& t, double d) {
    if (d < 0.0) return NUM();
    double whole = 0.0;
    const double fraction = std::modf(d, &whole);
    unsigned long long seconds = 0;
    if (XCode rc = FLP_TO_UINT(seconds, whole); rc.isErr()) return rc;
    if (seconds > 4294967294ULL) return NUM();
    t = VX::Time(static_cast<int32_t>(static_cast<uint32_t>(seconds)),
                 static_cast<int32_t>(fraction * 1e9));
    return XCode();
}

// STRING_TO_NUMBER and STRING_TO_TIME read through the lexer:
// language/literal_text.cc.

// ---- member conversions -------------------------------------------------

XCode Value::toBoolean() {
    if (subtype == DST_BOOL) return XCode();
    if (XCode rc; refuses(*this, rc)) return rc;
    bool flag = false;
    switch (getDataType()) {
        case DT_NUMBER:
            flag = subtype == DST_UINT ? data.uint != 0 : data.flp != 0.0;
            break;
        case DT_TIME:
            flag = !timeIsZero(data.time);
            break;
        case DT_STRING:
            flag = !data.string.isEmpty();
            break;
        default:
            return VAL();
    }
    *this = Value(flag);
    return XCode();
}

XCode Value::toUInt() {
    if (subtype == DST_UINT) return XCode();
    if (XCode rc; refuses(*this, rc)) return rc;
    unsigned long long u = 0;
    XCode rc;
    switch (getDataType()) {
        case DT_BOOL:
            u = data.boolean ? 1 : 0;
            break;
        case DT_NUMBER:
            rc = FLP_TO_UINT(u, data.flp);
            break;
        case DT_TIME:
            rc = TIME_TO_UINT(u, data.time);
            break;
        case DT_STRING:
            rc = STRING_TO_UINT(u, data.string);
            break;
        default:
            return VAL();
    }
    if (rc.isErr()) return rc;
    *this = Value(u);
    return XCode();
}

XCode Value::toUIntStrict() {
    if (subtype == DST_UINT) return XCode();
    if (XCode rc; refuses(*this, rc)) return rc;
    if (subtype != DST_FLP) return VAL();
    unsigned long long u = 0;
    if (XCode rc = FLP_TO_UINT_STRICT(u, data.flp); rc.isErr()) return rc;
    *this = Value(u);
    return XCode();
}

XCode Value::toFloat() {
    if (subtype == DST_FLP) return XCode();
    if (XCode rc; refuses(*this, rc)) return rc;
    double d = 0.0;
    XCode rc;
    switch (getDataType()) {
        case DT_BOOL:
            d = data.boolean ? 1.0 : 0.0;
            break;
        case DT_NUMBER:
            d = static_cast<double>(data.uint);
            break;
        case DT_TIME:
            rc = TIME_TO_FLP(d, data.time);
            break;
        case DT_STRING:
            rc = STRING_TO_FLP(d, data.string);
            break;
        default:
            return VAL();
    }
    if (rc.isErr()) return rc;
    *this = Value(d);
    return XCode();
}

XCode Value::toNumber() {
    if (getDataType() == DT_NUMBER) return XCode();
    if (XCode rc; refuses(*this, rc)) return rc;
    switch (getDataType()) {
        case DT_BOOL:
            *this = Value(static_cast<unsigned long long>(data.boolean ? 1 : 0));
            return XCode();
        case DT_TIME: {
            double d = 0.0;
            (void)TIME_TO_FLP(d, data.time);
            *this = Value(d);
            return XCode();
        }
        case DT_STRING: {
            Value number;
            if (XCode rc = STRING_TO_NUMBER(number, data.string); rc.isErr()) return rc;
            *this = std::move(number);
            return XCode();
        }
        default:
            return VAL();
    }
}

XCode Value::toTime() {
    if (getDataType() == DT_TIME) return XCode();
    if (XCode rc; refuses(*this, rc)) return rc;
    VX::Time t;
    DataSubType kind = DST_REL_TIME;
    XCode rc;
    switch (getDataType()) {
        case DT_BOOL:
            rc = UINT_TO_TIME(t, data.boolean ? 1 : 0);
            break;
        case DT_NUMBER:
            rc = subtype == DST_UINT ? UINT_TO_TIME(t, data.uint) : FLP_TO_TIME(t, data.flp);
            break;
        case DT_STRING:
            rc = STRING_TO_TIME(t, kind, data.string);
            break;
        default:
            return VAL();
    }
    if (rc.isErr()) return rc;
    *this = Value(t, kind);
    return XCode();
}

XCode Value::toAbsDateTime() {
    if (XCode rc = toTime(); rc.isErr()) return rc;
    subtype = DST_ABS_DATE_TIME;
    return XCode();
}

XCode Value::toAbsDate() {
    if (XCode rc = toTime(); rc.isErr()) return rc;
    data.time.clearTime();
    subtype = DST_ABS_DATE;
    return XCode();
}

XCode Value::toAbsTime() {
    if (XCode rc = toTime(); rc.isErr()) return rc;
    data.time.clearDate();
    subtype = DST_ABS_TIME;
    return XCode();
}

XCode Value::toRelTime() {
    if (XCode rc = toTime(); rc.isErr()) return rc;
    subtype = DST_REL_TIME;
    return XCode();
}

XCode Value::correctTime() {
    // No conversion, so not its frame: whatever is not a time, an error
    // value included, is refused with "#VAL!".
    switch (subtype) {
        case DST_ABS_DATE:
            data.time.clearTime();
            return XCode();
        case DST_ABS_TIME:
            data.time.clearDate();
            return XCode();
        case DST_ABS_DATE_TIME:
        case DST_REL_TIME:
            return XCode();
        default:
            return VAL();
    }
}

XCode Value::toText() {
    if (subtype == DST_STRING) return XCode();
    if (XCode rc; refuses(*this, rc)) return rc;
    *this = Value(toString());
    return XCode();
}

XCode Value::to(const Value& target) {
    switch (target.subtype) {
        case DST_BOOL:
            return toBoolean();
        case DST_UINT:
            return toUInt();
        case DST_FLP:
            return toFloat();
        case DST_ABS_DATE_TIME:
            return toAbsDateTime();
        case DST_ABS_DATE:
            return toAbsDate();
        case DST_ABS_TIME:
            return toAbsTime();
        case DST_REL_TIME:
            return toRelTime();
        case DST_STRING:
            return toText();
        case DST_ERR_DIV0:
        case DST_ERR_NA:
        case DST_ERR_NUM:
        case DST_ERR_VAL:
        case DST_ERR_GENERIC:
            // No value converts into an error. An error value reports its own
            // code; any other value reports the target's, the error it would
            // have had to become.
            return errToXCode(isError() ? subtype : target.subtype);
        default:
            return VAL();
    }
}

XCode Value::NORMALIZE_NUMBERS(Value& a, Value& b) {
    if (a.getDataType() != DT_NUMBER || b.getDataType() != DT_NUMBER) return VAL();
    if (a.subtype == b.subtype) return XCode();
    Value& f = a.subtype == DST_FLP ? a : b;
    Value& u = a.subtype == DST_FLP ? b : a;
    unsigned long long whole = 0;
    if (FLP_TO_UINT_STRICT(whole, f.data.flp).isSuccess()) {
        f = Value(whole);
    } else {
        u = Value(static_cast<double>(u.data.uint));
    }
    return XCode();
}

}  // namespace VX::SysEvent
