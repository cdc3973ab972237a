// VXRegEx on PCRE2 (8-bit code units, no UTF: names are byte strings).
#include "host/runtime/regex.h"

#include <memory>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace {

// PCRE2's objects until a Pattern or Matcher owns them: making the owner can
// run out of memory, and the object must not leak then.
struct FreeCode {
    void operator()(pcre2_code* code) const { pcre2_code_free(code); }
};
struct FreeMatchData {
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};

}  // namespace

VXPtr<VXRegEx::Pattern> VXRegEx::COMPILE_EXPRESSION(const String& text) {
    int error = 0;
    PCRE2_SIZE offset = 0;
    std::unique_ptr<pcre2_code, FreeCode> code(pcre2_compile(
        reinterpret_cast<PCRE2_SPTR>(text.data()), text.length(), 0, &error, &offset, nullptr));
    if (!code) return nullptr;
    // Just-in-time compilation only speeds matching up; without it (not
    // supported on this machine, or out of memory) the interpreter runs.
    pcre2_jit_compile(code.get(), PCRE2_JIT_COMPLETE);
    VXPtr<Pattern> pattern(new Pattern(text, code.get()));
    code.release();
    return pattern;
}

VXRegEx::Pattern::~Pattern() {
    pcre2_code_free(code_);
}

unsigned VXRegEx::Pattern::getCaptureCount() const {
    uint32_t count = 0;
    pcre2_pattern_info(code_, PCRE2_INFO_CAPTURECOUNT, &count);
    return count;
}

bool VXRegEx::Pattern::match(const String& text) const {
    pcre2_match_data* data = pcre2_match_data_create_from_pattern(code_, nullptr);
    if (!data) return false;
    int rc = pcre2_match(code_, reinterpret_cast<PCRE2_SPTR>(text.data()), text.length(), 0, 0,
                         data, nullptr);
    pcre2_match_data_free(data);
    return rc >= 0;
}

VXPtr<VXRegEx::Matcher> VXRegEx::Pattern::createMatcher(const String& text) const {
    std::unique_ptr<pcre2_match_data, FreeMatchData> data(
        pcre2_match_data_create_from_pattern(code_, nullptr));
    if (!data) return nullptr;
    VXPtr<Matcher> matcher(new Matcher(*this, text, data.get()));
    data.release();
    return matcher;
}

VXRegEx::Matcher::Matcher(const Pattern& pattern, const String& text, pcre2_match_data* data)
    : pattern_(&pattern), text_(text), data_(data) {}

VXRegEx::Matcher::~Matcher() {
    pcre2_match_data_free(data_);
}

bool VXRegEx::Matcher::match() {
    matched_ = false;
    if (exhausted_ || next_ > text_.length()) return false;
    int rc = pcre2_match(pattern_->code_, reinterpret_cast<PCRE2_SPTR>(text_.data()),
                         text_.length(), next_, 0, data_, nullptr);
    if (rc < 0) {
        exhausted_ = true;
        return false;
    }
    const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(data_);
    // After an empty match, step over one character so the search moves on.
    next_ = ovector[1] > ovector[0] ? ovector[1] : ovector[1] + 1;
    matched_ = true;
    return true;
}

XCode VXRegEx::Matcher::getCapture(unsigned index, String& out) const {
    if (!matched_) return XCode::Failure("NO MATCH");
    if (index >= pcre2_get_ovector_count(data_)) return XCode::Failure("NO SUCH CAPTURE");
    const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(data_);
    const PCRE2_SIZE begin = ovector[2 * index];
    const PCRE2_SIZE end = ovector[2 * index + 1];
    if (begin == PCRE2_UNSET || end < begin) return XCode::Failure("CAPTURE NOT SET");
    out = text_.substring(begin, end - begin);
    return XCode();
}

String VXRegEx::Matcher::getCapture(unsigned index) const {
    String out;
    getCapture(index, out);
    return out;
}
