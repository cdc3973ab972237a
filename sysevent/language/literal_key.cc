// LITERAL_KEY: exact, readable sharing keys for literals.
#include "sysevent/language/literal_key.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

namespace VX::SysEvent {

namespace {

String floatKey(double d) {
    String text;
    for (int digits = 6; digits <= 17; ++digits) {
        text = String::Formatted("%.*g", digits, d);
        if (strtod(text.c_str(), nullptr) == d) break;
    }
    // Only digits (and a sign) would read back as an integer literal.
    if (strpbrk(text.c_str(), ".eEnN") == nullptr) text += ".0";
    return text;
}

}  // namespace

String LITERAL_KEY(const Value& v) {
    if (v.subtype == DST_UINT) {
        // The display text, without the formatter: most literals are
        // integers, and their key is built once per literal in every parse.
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof digits, v.data.uint).ptr;
        return String(digits, static_cast<size_t>(end - digits));
    }
    if (v.subtype == DST_FLP) return floatKey(v.data.flp);
    if (v.subtype == DST_STRING && v.data.string.indexOf('\0') >= 0) {
        return "'" + v.data.string + "'";
    }
    return v.toString();
}

}  // namespace VX::SysEvent
