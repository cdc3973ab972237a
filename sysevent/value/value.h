// Value: the engine's typed value. A subtype selects one member of the payload
// record Data; errors are values too (five error subtypes) and flow through
// the graph like any other value. Value has plain value semantics.
//
// The subtype numbers are fixed: they travel in the marshalled form and inside
// the engine's error codes (errToXCode).
#pragma once

#include <cstdint>
#include <cstring>
#include <utility>

#include "host/runtime/clock.h"
#include "host/runtime/marshaller.h"
#include "host/runtime/string.h"
#include "host/runtime/time.h"
#include "host/runtime/xcode.h"
#include "sysevent/value/text.h"

namespace VX::SysEvent {

enum DataSubType : int {
    DST_UNDEF = 0,
    DST_EMPTY = 1,
    DST_BOOL = 2,
    DST_UINT = 3,  // unsigned 64-bit integer
    DST_FLP = 4,   // double
    DST_ABS_DATE_TIME = 5,
    DST_ABS_DATE = 6,  // midnight of its date
    DST_ABS_TIME = 7,  // a time of day on 1970-01-01
    DST_REL_TIME = 8,  // a duration
    DST_STRING = 9,
    DST_ERR_DIV0 = 10,    // "#DIV/0!"
    DST_ERR_NA = 11,      // "#N/A!"
    DST_ERR_NUM = 12,     // "#NUM!"
    DST_ERR_VAL = 13,     // "#VAL!"
    DST_ERR_GENERIC = 14  // "#ERR!"
};

enum DataType : int {
    DT_UNDEF = 0,
    DT_EMPTY = 1,
    DT_BOOL = 2,
    DT_NUMBER = 3,
    DT_TIME = 4,
    DT_STRING = 5,
    DT_ERROR = 6
};

// The engine's result codes for value-level errors: ENGINE_ERROR_BASE plus the
// error subtype. The graph turns such a code back into the error value.
constexpr uint32_t ENGINE_ERROR_BASE = 0x16000000;
// The code ENGINE_ERROR_BASE + (st mod 2^24), with no text.
XCode errToXCode(DataSubType st);

// The payload. The numbers and times share one word (the subtype names the
// member in use), so a value copies as its subtype, one word, the flag and,
// for a text only, its shared text block (a count, never the characters). The flag stays a member
// of its own: a bool read off another kind's word need not be a valid bool. Only a DST_STRING value
// holds text: every other value keeps `string` empty, which is what lets a copy skip it. Default
// construction zeroes the word and the flag.
struct Data {
    bool boolean = false;
    union {
        unsigned long long uint;
        double flp;
        VX::Time time;
    };
    Text string;

    Data() : uint(0) {}
    explicit Data(bool b) : boolean(b), uint(0) {}
    explicit Data(unsigned long long u) : uint(u) {}
    explicit Data(double d) : flp(d) {}
    explicit Data(const VX::Time& t) : time(t) {}
    explicit Data(const VX::Clock& c) : time(c.toTime()) {}
    explicit Data(const String& s) : uint(0), string(s) {}
    explicit Data(const char* s) : uint(0), string(s) {}

    // The shared word, whichever member holds it, and the flag.
    void copyWord(const Data& other) {
        boolean = other.boolean;
        std::memcpy(&uint, &other.uint, sizeof uint);
    }
};
static_assert(sizeof(VX::Time) <= sizeof(unsigned long long), "a time fits the payload word");

class Value : public VXMarshallable {
public:
    DataSubType subtype = DST_UNDEF;
    Data data;

    Value() = default;
    explicit Value(DataSubType st) : subtype(st) {}
    explicit Value(bool b) : subtype(DST_BOOL), data(b) {}
    explicit Value(unsigned long long u) : subtype(DST_UINT), data(u) {}
    explicit Value(double d) : subtype(DST_FLP), data(d) {}
    Value(const VX::Time& t, DataSubType st) : subtype(st), data(t) {}
    Value(const VX::Clock& c, DataSubType st) : subtype(st), data(c) {}
    explicit Value(const String& s) : subtype(DST_STRING), data(s) {}
    explicit Value(const char* s) : subtype(DST_STRING), data(s) {}
    // Copies and moves touch the text only when the value is one: every
    // store, propagation step and delivery copies values.
    Value(const Value& other) : subtype(other.subtype) {
        data.copyWord(other.data);
        if (other.subtype == DST_STRING) data.string = other.data.string;
    }
    Value(Value&& other) noexcept : subtype(other.subtype) {
        data.copyWord(other.data);
        if (other.subtype == DST_STRING) data.string = std::move(other.data.string);
    }
    Value& operator=(const Value& other) {
        if (this == &other) return *this;
        subtype = other.subtype;
        data.copyWord(other.data);
        if (other.subtype == DST_STRING)
            data.string = other.data.string;
        else if (!data.string.isEmpty())
            data.string.clear();
        return *this;
    }
    Value& operator=(Value&& other) noexcept {
        if (this == &other) return *this;
        subtype = other.subtype;
        data.copyWord(other.data);
        if (other.subtype == DST_STRING)
            data.string = std::move(other.data.string);
        else if (!data.string.isEmpty())
            data.string.clear();
        return *this;
    }
    ~Value() override = default;

    // Inline: every function and every recompute asks it of every argument.
    DataType getDataType() const {
        switch (subtype) {
            case DST_EMPTY:
                return DT_EMPTY;
            case DST_BOOL:
                return DT_BOOL;
            case DST_UINT:
            case DST_FLP:
                return DT_NUMBER;
            case DST_ABS_DATE_TIME:
            case DST_ABS_DATE:
            case DST_ABS_TIME:
            case DST_REL_TIME:
                return DT_TIME;
            case DST_STRING:
                return DT_STRING;
            case DST_ERR_DIV0:
            case DST_ERR_NA:
            case DST_ERR_NUM:
            case DST_ERR_VAL:
            case DST_ERR_GENERIC:
                return DT_ERROR;
            default:
                return DT_UNDEF;
        }
    }
    bool isError() const { return subtype >= DST_ERR_DIV0 && subtype <= DST_ERR_GENERIC; }
    // The display text: "#N/A!", "'text'", "1d2h", "true", ...
    String toString() const;

    static String STRING_OF_DATE_TIME(const VX::Time& t);
    static String STRING_OF_DATE(const VX::Time& t);
    static String STRING_OF_TIME(const VX::Time& t);
    static String STRING_OF_TIME_DELTA(const VX::Time& t);

    // Tagged form: the subtype as int, then the payload of that subtype.
    XCode marshal(VXMarshaller& m) const override;
    // Replaces the value only when its whole form was read.
    XCode unmarshal(VXMarshaller& m) override;

    // Conversions in place (value_conversions.cc). Each either succeeds and
    // replaces the value, or fails with an engine code and leaves it untouched.
    // An error value never converts: it fails with its own code.
    XCode toBoolean();
    XCode toUInt();        // floats rounded (nearbyint)
    XCode toUIntStrict();  // only integral floats
    XCode toFloat();
    XCode toNumber();  // DST_UINT or DST_FLP, whichever fits the source
    XCode toTime();    // some time kind
    XCode toAbsDateTime();
    XCode toAbsDate();
    XCode toAbsTime();
    XCode toRelTime();
    XCode correctTime();  // re-normalises within its own time kind
    XCode toText();
    XCode to(const Value& target);

    // Brings two numbers to one kind, preferring unsigned integers.
    static XCode NORMALIZE_NUMBERS(Value& a, Value& b);

    // Payload conversions.
    static XCode FLP_TO_UINT(unsigned long long& u, double d);
    static XCode FLP_TO_UINT_STRICT(unsigned long long& u, double d);
    static XCode TIME_TO_UINT(unsigned long long& u, const VX::Time& t);
    static XCode STRING_TO_UINT(unsigned long long& u, const String& s);
    static XCode TIME_TO_FLP(double& d, const VX::Time& t);
    static XCode STRING_TO_FLP(double& d, const String& s);
    static XCode UINT_TO_TIME(VX::Time& t, unsigned long long u);
    static XCode FLP_TO_TIME(VX::Time& t, double d);
    static XCode STRING_TO_NUMBER(Value& v, String s);
    static XCode STRING_TO_TIME(VX::Time& t, DataSubType& st, const String& s);
};

// Different subtypes are unequal; payload-less subtypes (undefined, empty,
// errors, unknown numbers) are equal to themselves; floats compare within one
// machine epsilon (relative above 1.0), NaN is unequal to everything.
bool operator==(const Value& a, const Value& b);
inline bool operator!=(const Value& a, const Value& b) {
    return !(a == b);
}

// The in-process form: restores an equal value in the same process.
VXMarshaller& operator<<(VXMarshaller& m, const Value& v);
VXMarshaller& operator>>(VXMarshaller& m, Value& v);

}  // namespace VX::SysEvent
