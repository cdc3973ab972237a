// XCode: text handling.
#include "host/runtime/xcode.h"

XCode& XCode::setStringF(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    text_ = String::VFormatted(fmt, args);
    va_end(args);
    return *this;
}

XCode& XCode::extendString(const String& prefix, const String& separator) {
    if (prefix.isEmpty()) return *this;
    if (text_.isEmpty()) {
        text_ = prefix;
    } else if (prefix[prefix.length() - 1] == ' ') {
        text_ = prefix + text_;
    } else {
        text_ = prefix + separator + text_;
    }
    return *this;
}

String XCode::toString() const {
    String out = String::Formatted("0x%08X", code_);
    if (!text_.isEmpty()) out += ": " + text_;
    return out;
}
