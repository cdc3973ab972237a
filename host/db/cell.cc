// Conversions between texts, key numbers and stored values, by field type.
#include "host/db/cell.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace DB {

bool operator==(const Cell& a, const Cell& b) {
    if (a.kind != b.kind) return false;
    switch (a.kind) {
        case Cell::NUL:
            return true;
        case Cell::INT:
            return a.i == b.i;
        case Cell::REAL:
            return a.d == b.d || (std::isnan(a.d) && std::isnan(b.d));
        case Cell::TEXT:
        case Cell::BLOB:
            return a.s == b.s;
    }
    return false;
}

namespace {

struct Range {
    int64_t min;
    int64_t max;
};

// The values an integer field admits. U64 and the 64-bit signed types admit
// every stored integer (U64 by its bit pattern).
Range rangeOf(uint32_t type) {
    switch (type) {
        case FT_U8:
            return {0, UINT8_MAX};
        case FT_U16:
            return {0, UINT16_MAX};
        case FT_U32:
            return {0, UINT32_MAX};
        case FT_S8:
            return {INT8_MIN, INT8_MAX};
        case FT_S16:
            return {INT16_MIN, INT16_MAX};
        case FT_S32:
            return {INT32_MIN, INT32_MAX};
        case FT_BOOL:
            return {0, 1};
        default:
            return {std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max()};
    }
}

bool inRange(uint32_t type, int64_t v) {
    Range r = rangeOf(type);
    return v >= r.min && v <= r.max;
}

XCode invalidValue(const FieldDef& f) {
    return XCode(E_VALUE).setStringF("INVALID VALUE FOR DATABASE FIELD: %s", f.qualified.c_str());
}

bool parseReal(const String& text, double& out) {
    if (text.isEmpty()) return false;
    char* end = nullptr;
    double v = strtod(text.c_str(), &end);
    if (end != text.c_str() + text.length() || std::isnan(v)) return false;
    out = v;
    return true;
}

}  // namespace

XCode PARSE_FIELD_TEXT(const FieldDef& f, const String& text, Cell& out) {
    switch (f.type) {
        case FT_U8:
        case FT_U16:
        case FT_U32:
        case FT_U64: {
            uint64_t v;
            if (!text.toUInt64(v)) return invalidValue(f);
            if (f.type != FT_U64 && v > static_cast<uint64_t>(rangeOf(f.type).max)) {
                return invalidValue(f);
            }
            out = Cell::Int(static_cast<int64_t>(v));
            return XCode();
        }
        case FT_S8:
        case FT_S16:
        case FT_S32:
        case FT_S64:
        case FT_READING: {
            int64_t v;
            if (!text.toInt64(v) || !inRange(f.type, v)) return invalidValue(f);
            out = Cell::Int(v);
            return XCode();
        }
        case FT_BOOL:
            if (text == "true" || text == "1") {
                out = Cell::Int(1);
            } else if (text == "false" || text == "0") {
                out = Cell::Int(0);
            } else {
                return invalidValue(f);
            }
            return XCode();
        case FT_CHAR:
            if (text.length() > f.size) {
                return XCode(E_VALUE).setStringF("VALUE TOO LONG FOR DATABASE FIELD: %s",
                                                 f.qualified.c_str());
            }
            out = Cell::Text(text);
            return XCode();
        case FT_TEXT:
            out = Cell::Text(text);
            return XCode();
        case FT_REAL: {
            double d;
            if (!parseReal(text, d)) return invalidValue(f);
            out = Cell::Real(d);
            return XCode();
        }
        case FT_STRUCT:
            return XCode(E_VALUE).setStringF("CANNOT WRITE STRUCTURE FIELD: %s",
                                             f.qualified.c_str());
        default:
            return invalidValue(f);
    }
}

XCode FIELD_FROM_UINT32(const FieldDef& f, uint32_t value, Cell& out) {
    int64_t v;
    if (IS_SIGNED_TYPE(f.type)) {
        v = static_cast<int32_t>(value);
    } else if (IS_INTEGER_TYPE(f.type) || f.type == FT_BOOL) {
        v = value;
    } else {
        return XCode(E_VALUE).setStringF("FIELD TYPE MISMATCH: %s", f.qualified.c_str());
    }
    if (!inRange(f.type, v)) {
        return XCode(E_VALUE).setStringF("VALUE OUT OF RANGE FOR DATABASE FIELD: %s",
                                         f.qualified.c_str());
    }
    out = Cell::Int(v);
    return XCode();
}

XCode CHECK_STORED(const FieldDef& f, const Cell& c) {
    if (c.kind == Cell::NUL) {
        return XCode(E_VALUE).setStringF("DATABASE FIELD HAS NO VALUE: %s", f.qualified.c_str());
    }
    bool ok;
    if (IS_INTEGER_TYPE(f.type) || f.type == FT_BOOL) {
        ok = c.kind == Cell::INT && inRange(f.type, c.i);
    } else if (f.type == FT_CHAR || f.type == FT_TEXT) {
        ok = c.kind == Cell::TEXT;
    } else if (f.type == FT_REAL) {
        ok = c.kind == Cell::REAL || c.kind == Cell::INT;
    } else {
        ok = false;
    }
    if (!ok) {
        return XCode(E_VALUE).setStringF("INVALID VALUE IN DATABASE FIELD: %s",
                                         f.qualified.c_str());
    }
    return XCode();
}

String STORED_TO_TEXT(const FieldDef& f, const Cell& c) {
    switch (f.type) {
        case FT_BOOL:
            return c.i ? "true" : "false";
        case FT_CHAR:
        case FT_TEXT:
            return c.s;
        case FT_REAL: {
            double d = c.kind == Cell::INT ? static_cast<double>(c.i) : c.d;
            char buf[64];
            auto res = std::to_chars(buf, buf + sizeof buf, d);
            return String(buf, static_cast<size_t>(res.ptr - buf));
        }
        default:
            if (IS_SIGNED_TYPE(f.type)) return DECIMAL(c.i);
            return DECIMAL(static_cast<uint64_t>(c.i));
    }
}

// std::to_chars: a notification names its entry by key values as text, once
// per change, where printf-style formatting would cost more than the rest.
String DECIMAL(int64_t v) {
    char buf[24];
    auto res = std::to_chars(buf, buf + sizeof buf, v);
    return String(buf, static_cast<size_t>(res.ptr - buf));
}

String DECIMAL(uint64_t v) {
    char buf[24];
    auto res = std::to_chars(buf, buf + sizeof buf, v);
    return String(buf, static_cast<size_t>(res.ptr - buf));
}

}  // namespace DB
