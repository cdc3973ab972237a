// Lexer: the token readers (names, numbers and times, durations, strings,
// symbols) and the queue operations.
#include "sysevent/language/lexer.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "host/runtime/clock.h"

namespace VX::SysEvent {

namespace {

bool isSpace(char c) {
    return isspace(static_cast<unsigned char>(c)) != 0;
}
bool isAlpha(char c) {
    return isalpha(static_cast<unsigned char>(c)) != 0;
}
bool isAlnum(char c) {
    return isalnum(static_cast<unsigned char>(c)) != 0;
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
char lower(char c) {
    return static_cast<char>(tolower(static_cast<unsigned char>(c)));
}

XCode failure(const char* fmt, int number) {
    XCode rc(XCode::GENERIC_FAILURE);
    rc.setStringF(fmt, number);
    return rc;
}

// Texts up to this length are read whole by start(): their tokens fit in
// some tens of kilobytes.
constexpr size_t kWholeStartLength = 1024;

// The characters a date or time-of-day scan can read, and how many of them
// it is shown at most.
constexpr size_t kScanWindow = 64;
bool isScanned(char c) {
    return isDigit(c) || isSpace(c) || c == '+' || c == '-' || c == ':';
}

// The largest whole-second count a duration may hold: one less than the
// largest count a time accepts, as for every other time conversion.
constexpr unsigned long long kMaxSeconds = 4294967294ULL;

struct Keyword {
    const char* text;
    TokenType type;
};

constexpr size_t kLongestKeyword = 6;
const Keyword kKeywords[] = {
    {"false", TT_BOOL}, {"true", TT_BOOL}, {"inf", TT_NUMBER}, {"within", TT_WITHIN},
    {"not", TT_NOT},    {"or", TT_OR},     {"xor", TT_XOR},    {"and", TT_AND},
};

}  // namespace

void Lexer::append(TokenType type, Value value, size_t position) {
    switch (m_mode) {
        case Mode::Whole:
            m_tokens.emplace_back(type, std::move(value), static_cast<int>(position));
            break;
        case Mode::OnDemand:
            m_queue.emplace_back(type, std::move(value), static_cast<int>(position));
            break;
        case Mode::Check:
            break;
    }
}

XCode Lexer::readToken(size_t& pos) {
    const size_t length = m_text.length();
    while (pos < length && isSpace(m_text[pos])) ++pos;
    if (pos >= length) {
        append(TT_END, Value(), pos);
        return XCode();
    }
    const char c = m_text[pos];
    if (isAlpha(c) || c == '_' || c == '{') return readName(pos);
    if (isDigit(c)) return readNumber(pos);
    if (c == '"' || c == '\'') return readString(pos);
    if (readSymbol(pos).isSuccess()) return XCode();
    XCode rc(XCode::GENERIC_FAILURE);
    rc.setStringF("%d: Unexpected character '%c'", static_cast<int>(pos) + 1, c);
    return rc;
}

XCode Lexer::analyze(const String& text) {
    m_text = text;
    m_mode = Mode::Whole;
    m_tokens.clear();
    m_queue.clear();
    size_t pos = 0;
    do {
        if (XCode rc = readToken(pos); rc.isErr()) {
            m_tokens.clear();
            return rc;
        }
    } while (m_tokens.back().type != TT_END);
    m_queue.assign(m_tokens.rbegin(), m_tokens.rend());
    return XCode();
}

XCode Lexer::start(const String& text) {
    m_text = text;
    m_tokens.clear();
    m_queue.clear();
    if (text.length() <= kWholeStartLength) {
        // The tokens of a short text take little room: read them in the
        // pass that checks them, instead of reading the text twice.
        m_mode = Mode::OnDemand;
        m_finished = true;
        m_position = 0;
        do {
            if (XCode rc = readToken(m_position); rc.isErr()) {
                m_queue.clear();
                return rc;
            }
        } while (m_queue.back().type != TT_END);
        std::reverse(m_queue.begin(), m_queue.end());
        return XCode();
    }
    // One pass that keeps nothing finds the first error; reading for the
    // reader then cannot fail.
    m_mode = Mode::Check;
    m_position = 0;
    do {
        if (XCode rc = readToken(m_position); rc.isErr()) return rc;
    } while (m_position < m_text.length());
    m_mode = Mode::OnDemand;
    m_position = 0;
    m_finished = false;
    refill();
    return XCode();
}

void Lexer::refill() {
    // The queue holds the one token ahead; the next is read only when that
    // one is taken.
    if (m_mode != Mode::OnDemand || m_finished || !m_queue.empty()) return;
    if (readToken(m_position).isErr() || m_queue.back().type == TT_END) m_finished = true;
}

XCode Lexer::readName(size_t& pos) {
    const size_t start = pos;
    const size_t length = m_text.length();
    bool inBraces = m_text[pos] == '{';
    ++pos;
    for (; pos < length; ++pos) {
        const char c = m_text[pos];
        if (inBraces) {
            if (isSpace(c)) {
                return failure("%d: Unterminated regular expression; expecting '}'",
                               static_cast<int>(pos));
            }
            if (c == '}') inBraces = false;
        } else if (c == '{') {
            inBraces = true;
        } else if (!(isAlnum(c) || c == '_' || c == '%' || c == '.' || c == ':')) {
            break;
        }
    }
    if (inBraces) {
        return failure("%d: Unterminated regular expression; expecting '}'",
                       static_cast<int>(length));
    }
    if (m_mode == Mode::Check) return XCode();
    const char* text = m_text.c_str() + start;
    const size_t width = pos - start;
    if (width <= kLongestKeyword) {
        for (const Keyword& k : kKeywords) {
            if (std::strncmp(text, k.text, width) != 0 || k.text[width] != '\0') continue;
            Value v;
            if (k.type == TT_BOOL) v = Value(text[0] == 't');
            if (k.type == TT_NUMBER) v = Value(std::numeric_limits<double>::infinity());
            append(k.type, std::move(v), start);
            return XCode();
        }
    }
    Value name(DST_STRING);
    name.data.string = m_text.substring(start, width);
    append(TT_NAME, std::move(name), start);
    return XCode();
}

XCode Lexer::readNumber(size_t& pos) {
    const size_t start = pos;
    const char* rest = m_text.c_str() + start;

    // Most numbers in formulas are short decimal integers. One that no
    // letter, '.', '-' or ':' follows cannot be read as a date, a time, a
    // float or a duration, and unless it has a leading 0 (octal to the
    // integer reader) and unless it could overflow, every reader below
    // would take exactly its digits: read it directly.
    if (rest[0] != '0' || !isDigit(rest[1])) {
        unsigned long long u = 0;
        size_t digits = 0;
        while (digits < 20 && isDigit(rest[digits])) {
            u = u * 10 + static_cast<unsigned>(rest[digits] - '0');
            ++digits;
        }
        const char after = rest[digits];
        if (digits <= 19 && !isAlnum(after) && after != '.' && after != '-' && after != ':') {
            pos += digits;
            append(TT_NUMBER, Value(u), start);
            return XCode();
        }
    }

    // A full date-time, as the calendar reads it.
    VX::Clock clock;
    unsigned read = 0;
    if (clock.set(rest, 0, &read).isSuccess() && read > 0) {
        pos += read;
        append(TT_TIME, Value(clock, DST_ABS_DATE_TIME), start);
        return XCode();
    }

    // sscanf measures its whole input before it reads: on the rest of a long
    // text every number would cost the length of that rest. The scans below
    // read only digits, blanks, signs, '-' and ':', so they get a copy of the
    // run of those characters here, at most kScanWindow long (a date or a
    // time of day is far shorter).
    char window[kScanWindow + 1];
    size_t windowLength = 0;
    while (windowLength < kScanWindow && isScanned(rest[windowLength])) {
        window[windowLength] = rest[windowLength];
        ++windowLength;
    }
    window[windowLength] = '\0';

    unsigned a = 0, b = 0, c = 0;
    int count = 0;
    // A date: year-month-day.
    if (sscanf(window, "%u-%u-%u%n", &a, &b, &c, &count) == 3 && a >= 1970 && b >= 1 && b <= 12 &&
        c >= 1 && c <= 31) {
        String iso = String::Formatted("%u-%u-%uT00:00:00", a, b, c);
        if (clock.set(iso, 0).isErr()) {
            // In the lexer's range but not on the calendar (2024-02-30) or
            // beyond the time range: say so rather than misread it as
            // arithmetic.
            return failure("%d: Invalid date", static_cast<int>(start));
        }
        pos += static_cast<size_t>(count);
        append(TT_TIME, Value(clock, DST_ABS_DATE), start);
        return XCode();
    }

    // A time of day: hour:minute:second.
    count = 0;
    if (sscanf(window, "%2u:%2u:%2u%n", &a, &b, &c, &count) == 3 && a <= 23 && b <= 59 && c <= 59) {
        String iso = String::Formatted("1970-01-01T%u:%u:%u", a, b, c);
        clock.set(iso, 0);
        pos += static_cast<size_t>(count);
        append(TT_TIME, Value(clock, DST_ABS_TIME), start);
        return XCode();
    }

    // A number: whichever of the float and the base-0 integer reads further.
    char* endFloat = nullptr;
    char* endUInt = nullptr;
    const double d = strtod(rest, &endFloat);
    const unsigned long long u = strtoull(rest, &endUInt, 0);
    const size_t lengthFloat = static_cast<size_t>(endFloat - rest);
    const size_t lengthUInt = static_cast<size_t>(endUInt - rest);
    if (lengthFloat == 0 && lengthUInt == 0) {
        return failure("%d: Invalid number", static_cast<int>(start));
    }
    if (lengthFloat > lengthUInt) {
        pos += lengthFloat;
        append(TT_NUMBER, Value(d), start);
        return XCode();
    }
    if (isAlpha(rest[lengthUInt])) return readDuration(pos);
    pos += lengthUInt;
    append(TT_NUMBER, Value(u), start);
    return XCode();
}

XCode Lexer::readDuration(size_t& pos) {
    const size_t start = pos;
    const size_t length = m_text.length();
    const char* text = m_text.c_str();
    // Whole seconds are summed wide and checked, so that no sum of
    // components silently wraps around the 32-bit time range.
    unsigned long long totalSeconds = 0;
    unsigned long long totalNanos = 0;
    bool any = false;
    while (pos < length && isDigit(text[pos])) {
        char* end = nullptr;
        const unsigned long long n = strtoull(text + pos, &end, 0);
        const size_t unitAt = static_cast<size_t>(end - text);
        if (unitAt >= length) break;
        const char u1 = lower(text[unitAt]);
        const char u2 = unitAt + 1 < length ? lower(text[unitAt + 1]) : '\0';
        const int afterFirst = static_cast<int>(unitAt) + 1;
        unsigned long long seconds = 0;
        unsigned long long nanos = 0;
        size_t unitLength = 1;
        if (u1 == 'd') {
            if (n > kMaxSeconds / 86400) {
                return failure("%d: Number of days exceeds time range", afterFirst);
            }
            seconds = n * 86400;
        } else if (u1 == 'h') {
            if (n > kMaxSeconds / 3600) {
                return failure("%d: Number of hours exceeds time range", afterFirst);
            }
            seconds = n * 3600;
        } else if (u1 == 'm' && u2 != 's') {
            if (n > kMaxSeconds / 60) {
                return failure("%d: Number of minutes exceeds time range", afterFirst);
            }
            seconds = n * 60;
        } else if (u1 == 's') {
            if (n > kMaxSeconds) {
                return failure("%d: Number of seconds exceeds time range", afterFirst);
            }
            seconds = n;
        } else if (u1 == 'm' && u2 == 's') {
            seconds = n / 1000;
            nanos = n % 1000 * 1000000;
            unitLength = 2;
        } else if (u1 == 'u' && u2 == 's') {
            seconds = n / 1000000;
            nanos = n % 1000000 * 1000;
            unitLength = 2;
        } else if (u1 == 'n' && u2 == 's') {
            seconds = n / 1000000000;
            nanos = n % 1000000000;
            unitLength = 2;
        } else {
            break;  // not a unit: the count is left for the next token
        }
        totalNanos += nanos;
        totalSeconds += seconds + totalNanos / 1000000000;
        totalNanos %= 1000000000;
        if (totalSeconds > kMaxSeconds) {
            return failure("%d: Time delta exceeds time range", afterFirst);
        }
        pos = unitAt + unitLength;
        any = true;
    }
    if (!any) return failure("%d: Invalid time delta", static_cast<int>(pos));
    VX::Time total(static_cast<int32_t>(static_cast<uint32_t>(totalSeconds)),
                   static_cast<int32_t>(totalNanos));
    append(TT_TIME, Value(total, DST_REL_TIME), start);
    return XCode();
}

XCode Lexer::readString(size_t& pos) {
    const size_t start = pos;
    const size_t length = m_text.length();
    const char quote = m_text[pos];
    String collected;
    ++pos;
    while (true) {
        if (pos >= length) return failure("%d: Unterminated string", static_cast<int>(length));
        char c = m_text[pos++];
        if (c == quote) break;
        if (c == '\\') {
            if (pos >= length) return failure("%d: Unterminated string", static_cast<int>(length));
            c = m_text[pos++];
            switch (c) {
                case 'n':
                    c = '\n';
                    break;
                case 'r':
                    c = '\r';
                    break;
                case 'f':
                    c = '\f';
                    break;
                case 't':
                    c = '\t';
                    break;
                case 'v':
                    c = '\v';
                    break;
                default:
                    break;
            }
        }
        collected += c;
    }
    append(TT_TEXT, Value(collected), start);
    return XCode();
}

XCode Lexer::readSymbol(size_t& pos) {
    const size_t start = pos;
    const char c = m_text[pos];
    const char n = pos + 1 < m_text.length() ? m_text[pos + 1] : '\0';
    TokenType type;
    size_t width = 1;
    // Two-character symbols win over their one-character prefixes.
    auto pair = [&](char second, TokenType both, TokenType single) {
        if (n != second) return single;
        width = 2;
        return both;
    };
    switch (c) {
        case '(':
            type = TT_LPAREN;
            break;
        case ')':
            type = TT_RPAREN;
            break;
        case ',':
            type = TT_COMMA;
            break;
        case ';':
            type = TT_SEMICOLON;
            break;
        case '+':
            type = TT_PLUS;
            break;
        case '-':
            type = TT_MINUS;
            break;
        case '*':
            type = TT_STAR;
            break;
        case '/':
            type = TT_SLASH;
            break;
        case '%':
            type = TT_PERCENT;
            break;
        case '~':
            type = TT_BITNOT;
            break;
        case '!':
            type = pair('=', TT_NEQ, TT_NOT);
            break;
        case '=':
            if (n != '=') return failure("%d: Invalid symbol", static_cast<int>(start));
            type = pair('=', TT_EQ, TT_EQ);
            break;
        case '<':
            type = n == '=' ? pair('=', TT_LE, TT_LT) : pair('<', TT_BITLSHIFT, TT_LT);
            break;
        case '>':
            type = n == '=' ? pair('=', TT_GE, TT_GT) : pair('>', TT_BITRSHIFT, TT_GT);
            break;
        case '&':
            type = pair('&', TT_AND, TT_BITAND);
            break;
        case '|':
            type = pair('|', TT_OR, TT_BITOR);
            break;
        case '^':
            type = pair('^', TT_XOR, TT_BITXOR);
            break;
        default:
            return failure("%d: Invalid symbol", static_cast<int>(start));
    }
    pos += width;
    append(type, Value(), start);
    return XCode();
}

bool Lexer::popIf(TokenType t) {
    if (!peekIf(t)) return false;
    m_queue.pop_back();
    refill();
    return true;
}

bool Lexer::pop(TokenType t) {
    if (m_queue.empty()) return false;
    const bool matches = m_queue.back().type == t;
    m_queue.pop_back();
    refill();
    return matches;
}

bool Lexer::peek(Token& out) const {
    if (m_queue.empty()) return false;
    out = m_queue.back();
    return true;
}

bool Lexer::pop(Token& out) {
    if (m_queue.empty()) return false;
    out = std::move(m_queue.back());
    m_queue.pop_back();
    refill();
    return true;
}

}  // namespace VX::SysEvent
