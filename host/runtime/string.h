// String: the host's text type. A thin value type over std::string with the
// printf-style building and the small search/parse helpers the engine uses.
// Byte strings: no encoding is assumed and comparisons are byte for byte.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

class String {
public:
    static const String s_empty;

    String() = default;
    String(const char* text) : s_(text ? text : "") {}  // NOLINT: implicit by design
    String(const char* text, size_t length) : s_(text, length) {}
    String(std::string text) : s_(std::move(text)) {}  // NOLINT: implicit by design
    String(std::string_view text) : s_(text) {}        // NOLINT: implicit by design

    // printf-style construction: String::Formatted("%s(%p)", name, ptr).
    static String Formatted(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
    static String VFormatted(const char* fmt, va_list args);

    // Replaces the text with the formatted text; returns *this.
    String& format(const char* fmt, ...) __attribute__((format(printf, 2, 3)));
    // Appends the formatted text; returns *this.
    String& concatf(const char* fmt, ...) __attribute__((format(printf, 2, 3)));
    String& vconcatf(const char* fmt, va_list args);

    const char* c_str() const { return s_.c_str(); }
    const char* data() const { return s_.data(); }
    size_t length() const { return s_.size(); }
    size_t size() const { return s_.size(); }
    bool isEmpty() const { return s_.empty(); }
    bool empty() const { return s_.empty(); }
    void clear() { s_.clear(); }
    const std::string& str() const { return s_; }
    std::string& str() { return s_; }
    operator std::string_view() const { return s_; }  // NOLINT: implicit by design

    char operator[](size_t i) const { return s_[i]; }
    char& operator[](size_t i) { return s_[i]; }

    String& operator+=(const String& other) {
        s_ += other.s_;
        return *this;
    }
    String& operator+=(const char* other) {
        s_ += other;
        return *this;
    }
    String& operator+=(char c) {
        s_ += c;
        return *this;
    }
    friend String operator+(const String& a, const String& b) { return String(a.s_ + b.s_); }
    friend String operator+(const String& a, const char* b) { return String(a.s_ + b); }
    friend String operator+(const char* a, const String& b) { return String(a + b.s_); }
    friend bool operator==(const String& a, const String& b) { return a.s_ == b.s_; }
    friend bool operator==(const String& a, const char* b) { return a.s_ == b; }
    friend auto operator<=>(const String& a, const String& b) { return a.s_ <=> b.s_; }

    // Position of the first occurrence at or after `from`, or -1 when absent.
    int indexOf(char c, size_t from = 0) const;
    int indexOf(const String& needle, size_t from = 0) const;
    bool startsWith(const String& prefix) const;
    bool endsWith(const String& suffix) const;
    // At most `count` characters from `start`; clipped to the text, never fails.
    String substring(size_t start, size_t count = std::string::npos) const;
    // Splits at every character contained in `separators`; empty pieces are kept.
    std::vector<String> splitAtChars(const String& separators) const;

    // Number parsers: every byte of the text (its whole length, so an embedded
    // NUL refuses it) must be a number of the kind that fits the target, base 0
    // (0x.., 0.., decimal), with white space (" \t\n\r\v\f") allowed at both
    // ends. Return false and leave `out` untouched otherwise.
    bool toInteger(int& out) const;
    bool toUInt32(uint32_t& out) const;
    bool toUInt64(uint64_t& out) const;
    bool toInt64(int64_t& out) const;

    // Decimal text of a number.
    static String stringOf(long long n);
    static String stringOf(unsigned long long n);
    static String stringOf(int n) { return stringOf(static_cast<long long>(n)); }
    static String stringOf(unsigned n) { return stringOf(static_cast<unsigned long long>(n)); }

private:
    std::string s_;
};

template <>
struct std::hash<String> {
    size_t operator()(const String& s) const noexcept { return std::hash<std::string>()(s.str()); }
};
