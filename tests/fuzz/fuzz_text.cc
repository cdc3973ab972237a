// Calendar and number texts. A text the number parsers take holds nothing
// but the number (no byte after it, NUL included), and the number re-formats
// to the same digits; a calendar text that parses gives a normalised time
// whose own text parses back to the same time.
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "fuzz/fuzz_support.h"
#include "host/runtime/string.h"

namespace {

// The text without the white space at both ends.
String trimmed(const String& text) {
    const char* const space = " \t\n\v\f\r";
    const size_t from = text.str().find_first_not_of(space);
    if (from == std::string::npos) return String();
    return text.substring(from, text.str().find_last_not_of(space) + 1 - from);
}

// Written as stringOf writes it: an optional '-', then digits without a
// leading zero (and never "-0").
bool canonicalDecimal(const String& text) {
    const std::string digits = text.str().substr(!text.isEmpty() && text[0] == '-');
    return !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos &&
           (digits[0] != '0' || (digits.size() == 1 && text != "-0"));
}

template <typename N>
void checkNumber(const String& text, bool parsed, N value, bool narrowParsed, int64_t narrowValue,
                 bool narrowFits) {
    if (narrowParsed) {
        FUZZ_CHECK(parsed && static_cast<int64_t>(value) == narrowValue,
                   "narrow parse of '%s' disagrees", text.c_str());
    }
    if (!parsed) return;
    FUZZ_CHECK(narrowParsed == narrowFits, "'%s' fits the narrow type: %d, parsed: %d",
               text.c_str(), narrowFits, narrowParsed);
    FUZZ_CHECK(text.str().find('\0') == std::string::npos, "'%s' with a NUL parsed", text.c_str());
    String digits;
    N back{};
    bool parsedBack;
    if constexpr (std::is_signed_v<N>) {
        digits = String::stringOf(static_cast<long long>(value));
        parsedBack = digits.toInt64(back);
    } else {
        digits = String::stringOf(static_cast<unsigned long long>(value));
        parsedBack = digits.toUInt64(back);
    }
    FUZZ_CHECK(parsedBack && back == value, "%s does not parse back", digits.c_str());
    const String bare = trimmed(text);
    if (canonicalDecimal(bare)) {
        FUZZ_CHECK(digits == bare, "'%s' re-formats as %s", text.c_str(), digits.c_str());
    }
}

void checkNumbers(const String& text) {
    int64_t wide = 0;
    int narrow = 0;
    const bool wideParsed = text.toInt64(wide);
    checkNumber<int64_t>(text, wideParsed, wide, text.toInteger(narrow), narrow,
                         wide >= INT32_MIN && wide <= INT32_MAX);
    uint64_t uwide = 0;
    uint32_t unarrow = 0;
    const bool uwideParsed = text.toUInt64(uwide);
    checkNumber<uint64_t>(text, uwideParsed, uwide, text.toUInt32(unarrow), unarrow,
                          uwide <= UINT32_MAX);
}

void checkCalendar(const String& text) {
    VX::Clock clock;
    unsigned read = 0;
    if (clock.set(text, 0, &read).isErr()) return;
    const VX::Time t = clock.toTime();
    FUZZ_CHECK(read <= text.length(), "read %u of %zu", read, text.length());
    FUZZ_CHECK(t.getNanoseconds() >= 0 && t.getNanoseconds() < VX::Time::NANOS_PER_SECOND,
               "'%s' gives %d ns", text.c_str(), t.getNanoseconds());
    const String shown = clock.toString();
    VX::Clock again;
    FUZZ_CHECK(again.set(shown).isSuccess() && again.toTime() == t,
               "'%s' shows as '%s', which does not parse back", text.c_str(), shown.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const String text(reinterpret_cast<const char*>(data), size);
    checkNumbers(text);
    checkCalendar(text);
    return 0;
}
