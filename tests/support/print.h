// Readable failure messages for the engine's text and value types, shared by
// every test folder (GoogleTest finds PrintTo next to the printed type). A
// float shows all its digits and every value its subtype number, so that 3
// and 3.0 or two close floats never print alike.
#pragma once

#include <cstdio>
#include <ostream>

#include "host/runtime/string.h"
#include "sysevent/value/value.h"

inline void PrintTo(const String& s, std::ostream* os) {
    *os << '"' << s.str() << '"';
}

namespace VX::SysEvent {
inline void PrintTo(const Value& v, std::ostream* os) {
    *os << "[" << static_cast<int>(v.subtype) << "] ";
    if (v.subtype != DST_FLP) {
        *os << v.toString().str();
        return;
    }
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", v.data.flp);
    *os << text;
}
}  // namespace VX::SysEvent
