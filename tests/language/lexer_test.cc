// Lexer: token streams (kinds, literal values, positions) of names, keywords,
// numbers, dates, times, durations, strings and symbols; every error with its
// exact text and number; the queue operations; and NAME_TO_REGEX.
#include <gtest/gtest.h>

#include "host/runtime/crit.h"
#include "host/runtime/monitor.h"
#include "host/runtime/regex.h"
#include "sysevent/language/lexer.h"

namespace VX::SysEvent {
namespace {

const char* typeName(TokenType t) {
    static const char* const names[] = {
        "END", "NAME", "BOOL", "NUM", "TIME", "TEXT", "(",  ")",  ",", "!",      "~",
        "||",  "^^",   "&&",   "|",   "^",    "&",    "==", "!=", "<", "<=",     ">",
        ">=",  "<<",   ">>",   "+",   "-",    "*",    "/",  "%",  ";", "WITHIN",
    };
    return names[t];
}

// One token as text: kind, then for literals a kind letter and the display
// text, then "@position". Numbers show u (unsigned) or f (float); times show
// dt, d, t or r (date-time, date, time of day, duration).
String describe(const Token& t) {
    String out = typeName(t.type);
    switch (t.type) {
        case TT_NAME:
            out += " " + t.value.data.string;
            break;
        case TT_BOOL:
        case TT_TEXT:
            out += " " + t.value.toString();
            break;
        case TT_NUMBER:
            out += t.value.subtype == DST_UINT ? " u:" : t.value.subtype == DST_FLP ? " f:" : " ?:";
            out += t.value.toString();
            break;
        case TT_TIME: {
            const char* kinds[] = {"dt", "d", "t", "r"};
            const int k = t.value.subtype - DST_ABS_DATE_TIME;
            out += " ";
            out += k >= 0 && k < 4 ? kinds[k] : "?";
            out += ":" + t.value.toString();
            break;
        }
        default:
            break;
    }
    out.concatf("@%d", t.position);
    return out;
}

String streamOf(const String& text) {
    Lexer lexer;
    XCode rc = lexer.analyze(text);
    if (rc.isErr()) return "ERROR " + rc.getString();
    String out;
    for (const Token& t : lexer.tokens()) {
        if (!out.isEmpty()) out += " | ";
        out += describe(t);
    }
    return out;
}

struct StreamCase {
    const char* text;
    const char* tokens;
};

TEST(Lexer, TokenStreams) {
    const StreamCase cases[] = {
        {"", "END@0"},
        {"   \t\n", "END@5"},
        {"a==b", "NAME a@0 | ==@1 | NAME b@3 | END@4"},
        {"a.b:c", "NAME a.b:c@0 | END@5"},
        {" sip%.state", "NAME sip%.state@1 | END@11"},
        {"line{[0-9]+}.up", "NAME line{[0-9]+}.up@0 | END@15"},
        {"{.*}", "NAME {.*}@0 | END@4"},
        {"{a}{b}x", "NAME {a}{b}x@0 | END@7"},
        {"a%b", "NAME a%b@0 | END@3"},
        {"a % b", "NAME a@0 | %@2 | NAME b@4 | END@5"},
        {"_x1.y_2", "NAME _x1.y_2@0 | END@7"},
        {"a}", "ERROR 2: Unexpected character '}'"},
        {"true false", "BOOL true@0 | BOOL false@5 | END@10"},
        {"inf", "NUM f:inf@0 | END@3"},
        {"within not or xor and", "WITHIN@0 | !@7 | ||@11 | ^^@14 | &&@18 | END@21"},
        {"True NOT infinity and2",
         "NAME True@0 | NAME NOT@5 | NAME infinity@9 | NAME and2@18 | END@22"},
        {"f(a,b)", "NAME f@0 | (@1 | NAME a@2 | ,@3 | NAME b@4 | )@5 | END@6"},
        {"42", "NUM u:42@0 | END@2"},
        {"0,7)", "NUM u:0@0 | ,@1 | NUM u:7@2 | )@3 | END@4"},
        {"9999999999999999999 ", "NUM u:9999999999999999999@0 | END@20"},
        {"12345678901234567890", "NUM u:12345678901234567890@0 | END@20"},
        {"0x1F", "NUM u:31@0 | END@4"},
        {"010", "NUM u:8@0 | END@3"},
        {"08", "NUM f:8@0 | END@2"},
        {"1.5", "NUM f:1.5@0 | END@3"},
        {"1e3", "NUM f:1000@0 | END@3"},
        {"1.", "NUM f:1@0 | END@2"},
        {"0x1p4", "NUM f:16@0 | END@5"},
        {"18446744073709551615", "NUM u:18446744073709551615@0 | END@20"},
        {"99999999999999999999", "NUM u:18446744073709551615@0 | END@20"},
        {"-5", "-@0 | NUM u:5@1 | END@2"},
        {"1.5h", "NUM f:1.5@0 | NAME h@3 | END@4"},
        {"12:30:00", "TIME t:12:30:00@0 | END@8"},
        {"1:2:3", "TIME t:01:02:03@0 | END@5"},
        {"23:59:59", "TIME t:23:59:59@0 | END@8"},
        {"2024-01-15", "TIME d:2024-01-15@0 | END@10"},
        {"1970-1-1", "TIME d:1970-01-01@0 | END@8"},
        {"1969-12-31", "NUM u:1969@0 | -@4 | NUM u:12@5 | -@7 | NUM u:31@8 | END@10"},
        {"2024-13-01", "NUM u:2024@0 | -@4 | NUM u:13@5 | -@7 | NUM u:1@8 | END@10"},
        {"2024-01-15T10:20:30", "TIME dt:2024-01-15T10:20:30@0 | END@19"},
        {"2024-1-5T1:2:3+x", "TIME dt:2024-01-05T01:02:03@0 | +@14 | NAME x@15 | END@16"},
        // An hour out of range is no date-time: the date, then a name.
        {"2024-01-15T25:00:00", "TIME d:2024-01-15@0 | NAME T25:00:00@10 | END@19"},
        {"1h30m", "TIME r:1h30m@0 | END@5"},
        {"1d2h3m4s500ms", "TIME r:1d2h3m4s500ms@0 | END@13"},
        {"2H", "TIME r:2h@0 | END@2"},
        {"1MS 1Us 1nS", "TIME r:1ms@0 | TIME r:1us@4 | TIME r:1ns@8 | END@11"},
        {"0x10s", "TIME r:16s@0 | END@5"},
        {"1h 30m", "TIME r:1h@0 | TIME r:30m@3 | END@6"},
        {"1500ms", "TIME r:1s500ms@0 | END@6"},
        {"2500000us", "TIME r:2s500ms@0 | END@9"},
        {"1000000001ns", "TIME r:1s1ns@0 | END@12"},
        {"999ms1ms", "TIME r:1s@0 | END@8"},
        {"49710d", "TIME r:49710d@0 | END@6"},
        {"71582788m", "TIME r:49710d6h28m@0 | END@9"},
        {"4294967294s", "TIME r:49710d6h28m14s@0 | END@11"},
        // A count that ends the text, or is not followed by a unit, is left for
        // the next token.
        {"1h30", "TIME r:1h@0 | NUM u:30@2 | END@4"},
        {"1h30+2", "TIME r:1h@0 | NUM u:30@2 | +@4 | NUM u:2@5 | END@6"},
        {"1m5", "TIME r:1m@0 | NUM u:5@2 | END@3"},
        {"5s.", "ERROR 3: Unexpected character '.'"},
        {"'it''s'", "TEXT 'it'@0 | TEXT 's'@4 | END@7"},
        {"\"a'b\"", "TEXT 'a'b'@0 | END@5"},
        {"'x\"y'", "TEXT 'x\"y'@0 | END@5"},
        {"''", "TEXT ''@0 | END@2"},
        {"'\\q\\\\\\'\\\"'", "TEXT 'q\\'\"'@0 | END@10"},
        {"( ) , ; + - * / % ~",
         "(@0 | )@2 | ,@4 | ;@6 | +@8 | -@10 | *@12 | /@14 | %@16 | ~@18 | END@19"},
        {"! != == < <= << > >= >>",
         "!@0 | !=@2 | ==@5 | <@8 | <=@10 | <<@13 | >@16 | >=@18 | >>@21 | END@23"},
        {"& && | || ^ ^^", "&@0 | &&@2 | |@5 | ||@7 | ^@10 | ^^@12 | END@14"},
        {"!!a", "!@0 | !@1 | NAME a@2 | END@3"},
        {"a<<=b", "ERROR 4: Unexpected character '='"},
        {"&&&", "&&@0 | &@2 | END@3"},
        {"'a\\nb\\rc\\fd\\te\\vf'", "TEXT 'a\nb\rc\fd\te\vf'@0 | END@18"},
        {"1193046h", "TIME r:49710d6h@0 | END@8"},
    };
    for (const auto& c : cases) EXPECT_EQ(streamOf(c.text), String(c.tokens)) << c.text;
}

TEST(Lexer, Errors) {
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"a=b", "2: Unexpected character '='"},
        {"12:30", "3: Unexpected character ':'"},
        {"24:00:00", "3: Unexpected character ':'"},
        {".5", "1: Unexpected character '.'"},
        {"a + #", "5: Unexpected character '#'"},
        {"1:2:3:4", "6: Unexpected character ':'"},
        {"{a b}", "2: Unterminated regular expression; expecting '}'"},
        {"x{a\tb}", "3: Unterminated regular expression; expecting '}'"},
        {"x{abc", "5: Unterminated regular expression; expecting '}'"},
        {"{", "1: Unterminated regular expression; expecting '}'"},
        {"'abc", "4: Unterminated string"},
        {"f('abc\\'", "8: Unterminated string"},
        {"\"", "1: Unterminated string"},
        {"'\\", "2: Unterminated string"},
        {"5x", "0: Invalid time delta"},
        {"a + 5x", "4: Invalid time delta"},
        {"1h5x", "2: Invalid time delta"},
        {"0x", "0: Invalid time delta"},
        {"49711d", "6: Number of days exceeds time range"},
        {"1193047h", "8: Number of hours exceeds time range"},
        {"71582789m", "9: Number of minutes exceeds time range"},
        {"4294967295s", "11: Number of seconds exceeds time range"},
        {"99999999999999999999999d", "24: Number of days exceeds time range"},
        {"1h49711d", "8: Number of days exceeds time range"},
        // Beyond the checks of single units: a sum of components or a large
        // sub-second count must not wrap around the time range either.
        {"49710d1d", "8: Time delta exceeds time range"},
        {"4294967295000ms", "14: Time delta exceeds time range"},
        {"4294967294s999ms1ms", "18: Time delta exceeds time range"},
        // On the lexer's range but not on the calendar.
        {"2024-02-30", "0: Invalid date"},
        {"x + 2100-01-01", "4: Invalid date"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        Lexer lexer;
        XCode rc = lexer.analyze(c.text);
        EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
        EXPECT_EQ(rc.getString(), String(c.message));
        // Nothing can be read after a failure.
        EXPECT_EQ(lexer.next(), nullptr);
        Token t;
        EXPECT_FALSE(lexer.peek(t));
    }
}

TEST(Lexer, QueueOperations) {
    Lexer lexer;
    ASSERT_TRUE(lexer.analyze("a + 1").isSuccess());
    EXPECT_TRUE(lexer.peekIf(TT_NAME));
    EXPECT_FALSE(lexer.popIf(TT_PLUS));
    EXPECT_TRUE(lexer.peekIf(TT_NAME));
    // pop(type) removes whatever comes and says whether it was of that type.
    EXPECT_FALSE(lexer.pop(TT_PLUS));
    Token t;
    ASSERT_TRUE(lexer.peek(t));
    EXPECT_EQ(t.type, TT_PLUS);
    EXPECT_EQ(t.position, 2);
    EXPECT_TRUE(lexer.popIf(TT_PLUS));
    ASSERT_TRUE(lexer.pop(t));
    EXPECT_EQ(t.type, TT_NUMBER);
    EXPECT_EQ(t.value, Value(1ULL));
    EXPECT_EQ(t.position, 4);
    EXPECT_TRUE(lexer.pop(TT_END));
    EXPECT_FALSE(lexer.pop(TT_END));
    EXPECT_FALSE(lexer.pop(t));
    EXPECT_FALSE(lexer.peekIf(TT_END));

    // Each analysis starts afresh.
    ASSERT_TRUE(lexer.analyze("b").isSuccess());
    EXPECT_EQ(lexer.tokens().size(), 2u);
    EXPECT_TRUE(lexer.popIf(TT_NAME));
    EXPECT_FALSE(lexer.analyze("'").isSuccess());
    EXPECT_FALSE(lexer.peekIf(TT_END));
}

TEST(Lexer, NameToRegex) {
    const struct {
        const char* pattern;
        bool prefix;
        const char* regex;
    } cases[] = {
        {"line%.up", false, "^line([^\\.\\:]+)\\.up$"},
        {"{sip[0-9]%}.state", false, "^sip[0-9]*\\.state$"},
        {"line%", true, "^line([^\\.\\:]+)"},
        {"a:b.c", false, "^a\\:b\\.c$"},
        {"{a*b}", false, "^a\\*b$"},
        {"{.%}", false, "^.*$"},
        {"%.%", false, "^([^\\.\\:]+)\\.([^\\.\\:]+)$"},
        {"x{(a|b)}y", false, "^x(a|b)y$"},
        {"", false, "^$"},
        {"", true, "^"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Lexer::NAME_TO_REGEX(c.pattern, c.prefix), c.regex) << c.pattern;
    }
}

TEST(Lexer, NameToRegexMatchesNames) {
    const struct {
        const char* pattern;
        bool prefix;
        const char* name;
        bool matches;
    } cases[] = {
        {"line%.up", false, "line1.up", true},
        {"line%.up", false, "line.up", false},     // '%' is one or more characters
        {"line%.up", false, "line1.x.up", false},  // ... never across a '.'
        {"line%.up", false, "line1:x.up", false},  // ... nor a ':'
        {"line%.up", false, "line1.up.down", false},
        {"line%.up", true, "line1.up.down", true},  // prefix form
        {"a.b", false, "axb", false},               // '.' is literal
        {"{sip[0-9]%}.state", false, "sip12.state", true},
        {"{sip[0-9]%}.state", false, "sip.state", true},
        {"{sip[0-9]%}.state", false, "sipx.state", false},
        {"{a*}", false, "a*", true},
        {"{a*}", false, "aa", false},
    };
    for (const auto& c : cases) {
        VXPtr<VXRegEx::Pattern> re =
            VXRegEx::COMPILE_EXPRESSION(Lexer::NAME_TO_REGEX(c.pattern, c.prefix));
        ASSERT_TRUE(re) << c.pattern;
        EXPECT_EQ(re->match(c.name), c.matches) << c.pattern << " vs " << c.name;
    }
}

TEST(Lexer, NameToRegexLogsAtLevelThree) {
    RTD::CaptureMonitor quiet(2);
    RTD::CaptureMonitor chatty(3);
    RTD::Monitor* saved = MON;

    MON = &quiet;
    Lexer::NAME_TO_REGEX("a%", false);
    EXPECT_TRUE(quiet.lines().empty());

    MON = &chatty;
    Lexer::NAME_TO_REGEX("a%", false);
    MON = saved;
    ASSERT_EQ(chatty.lines().size(), 1u);
    EXPECT_EQ(chatty.lines()[0].level, 3);
    EXPECT_EQ(chatty.lines()[0].text, "Regular expression: a% -> ^a([^\\.\\:]+)$");
}

}  // namespace
}  // namespace VX::SysEvent
