// String: formatting and parsing helpers.
#include "host/runtime/string.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

const String String::s_empty;

String String::VFormatted(const char* fmt, va_list args) {
    String out;
    out.vconcatf(fmt, args);
    return out;
}

String String::Formatted(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    String out = VFormatted(fmt, args);
    va_end(args);
    return out;
}

String& String::format(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    String out = VFormatted(fmt, args);
    va_end(args);
    s_ = std::move(out.s_);
    return *this;
}

String& String::concatf(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    vconcatf(fmt, args);
    va_end(args);
    return *this;
}

String& String::vconcatf(const char* fmt, va_list args) {
    char small[256];
    va_list copy;
    va_copy(copy, args);
    int n = vsnprintf(small, sizeof small, fmt, copy);
    va_end(copy);
    if (n < 0) return *this;
    if (static_cast<size_t>(n) < sizeof small) {
        s_.append(small, static_cast<size_t>(n));
        return *this;
    }
    size_t old = s_.size();
    s_.resize(old + static_cast<size_t>(n) + 1);
    vsnprintf(s_.data() + old, static_cast<size_t>(n) + 1, fmt, args);
    s_.resize(old + static_cast<size_t>(n));
    return *this;
}

int String::indexOf(char c, size_t from) const {
    size_t at = s_.find(c, from);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

int String::indexOf(const String& needle, size_t from) const {
    size_t at = s_.find(needle.s_, from);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

bool String::startsWith(const String& prefix) const {
    return s_.starts_with(prefix.s_);
}
bool String::endsWith(const String& suffix) const {
    return s_.ends_with(suffix.s_);
}

String String::substring(size_t start, size_t count) const {
    if (start >= s_.size()) return String();
    return String(s_.substr(start, count));
}

std::vector<String> String::splitAtChars(const String& separators) const {
    std::vector<String> pieces;
    size_t begin = 0;
    for (size_t i = 0; i <= s_.size(); ++i) {
        if (i == s_.size() || separators.s_.find(s_[i]) != std::string::npos) {
            pieces.emplace_back(s_.substr(begin, i - begin));
            begin = i + 1;
        }
    }
    return pieces;
}

namespace {

// White space as the C library's number parsers skip it in front of a
// number; the same characters may also follow it.
bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// The parse must reach the end of the text (its length, not the first NUL:
// "12\0junk" is no number) but for trailing white space.
bool wholeText(const char* end, const std::string& text) {
    const char* last = text.data() + text.size();
    while (end < last && isBlank(*end)) ++end;
    return end == last;
}

}  // namespace

bool String::toInt64(int64_t& out) const {
    if (s_.empty()) return false;
    errno = 0;
    char* end = nullptr;
    long long v = strtoll(s_.c_str(), &end, 0);
    if (end == s_.c_str() || errno == ERANGE || !wholeText(end, s_)) return false;
    out = v;
    return true;
}

bool String::toUInt64(uint64_t& out) const {
    if (s_.empty() || s_.find('-') != std::string::npos) return false;
    errno = 0;
    char* end = nullptr;
    unsigned long long v = strtoull(s_.c_str(), &end, 0);
    if (end == s_.c_str() || errno == ERANGE || !wholeText(end, s_)) return false;
    out = v;
    return true;
}

bool String::toInteger(int& out) const {
    int64_t v;
    if (!toInt64(v) || v < INT32_MIN || v > INT32_MAX) return false;
    out = static_cast<int>(v);
    return true;
}

bool String::toUInt32(uint32_t& out) const {
    uint64_t v;
    if (!toUInt64(v) || v > UINT32_MAX) return false;
    out = static_cast<uint32_t>(v);
    return true;
}

String String::stringOf(long long n) {
    return Formatted("%lld", n);
}
String String::stringOf(unsigned long long n) {
    return Formatted("%llu", n);
}
