// XCode: the result of every operation that can fail. Code 0 is success; any
// other code is a failure, optionally with a text. The library throws no
// exceptions: failures travel as XCode values, and callers pass them up
// unchanged or prefix their text with extendString.
#pragma once

#include <cstdint>

#include "host/runtime/string.h"

class XCode {
public:
    static constexpr uint32_t SUCCESS = 0;
    // The host's generic failure code.
    static constexpr uint32_t GENERIC_FAILURE = 0x7FFFFFFF;

    XCode() = default;
    XCode(uint32_t code) : code_(code) {}  // NOLINT: implicit by design
    XCode(uint32_t code, const String& text) : code_(code), text_(text) {}

    static XCode Success() { return XCode(); }
    static XCode Failure(const String& text = String()) { return XCode(GENERIC_FAILURE, text); }
    // Success for true, the generic failure code otherwise.
    static XCode testExpression(bool ok) { return ok ? XCode() : XCode(GENERIC_FAILURE); }

    bool isErr() const { return code_ != SUCCESS; }
    bool isSuccess() const { return code_ == SUCCESS; }
    explicit operator bool() const { return isSuccess(); }
    uint32_t getValue() const { return code_; }

    const String& getString() const { return text_; }
    bool hasString() const { return !text_.isEmpty(); }
    XCode& setString(const String& text) {
        text_ = text;
        return *this;
    }
    XCode& setStringF(const char* fmt, ...) __attribute__((format(printf, 2, 3)));

    // Prefixes the text: nothing for an empty prefix; the prefix alone when there
    // is no text yet; prefix + text when the prefix ends in a blank; otherwise
    // prefix + separator + text.
    XCode& extendString(const String& prefix, const String& separator = ": ");

    // "0x%08X" followed by ": text" when there is a text.
    String toString() const;

    friend bool operator==(const XCode& a, const XCode& b) { return a.code_ == b.code_; }

private:
    uint32_t code_ = SUCCESS;
    String text_;
};
