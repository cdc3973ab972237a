// String helpers and XCode texts.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "host/runtime/string.h"
#include "host/runtime/xcode.h"

namespace {

TEST(StringTest, SplitKeepsEmptyPieces) {
    struct Case {
        const char* text;
        const char* separators;
        std::vector<String> pieces;
    } cases[] = {
        {"a,b", ",", {"a", "b"}}, {"a,,b;", ",;", {"a", "", "b", ""}},
        {"", ",", {""}},          {"abc", "", {"abc"}},
        {";", ";", {"", ""}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(String(c.text).splitAtChars(c.separators), c.pieces) << c.text;
    }
}

TEST(StringTest, BuildingByFormat) {
    EXPECT_EQ(String::Formatted("%s(%d)", "f", 3), "f(3)");
    String s = "x";
    s.concatf("-%u", 7u).concatf("%s", "!");
    EXPECT_EQ(s, "x-7!");
    s.format("%05d", 42);
    EXPECT_EQ(s, "00042");
    // Longer than the formatter's stack buffer.
    const String longText(std::string(1000, 'q'));
    String big = String::Formatted("<%s>", longText.c_str());
    EXPECT_EQ(big.length(), 1002u);
    EXPECT_TRUE(big.startsWith("<qqq") && big.endsWith("qq>"));
    big.concatf("%s", longText.c_str());
    EXPECT_EQ(big.length(), 2002u);
    EXPECT_EQ(String::stringOf(-12), "-12");
    EXPECT_EQ(String::stringOf(18446744073709551615ull), "18446744073709551615");
    EXPECT_EQ(String("a") + "b" + String("c"), "abc");
}

TEST(StringTest, NumberParsing) {
    // Each parser takes the whole text, every byte of it, or refuses it
    // (nullopt) and leaves its output untouched.
    using I = std::optional<int64_t>;
    using U = std::optional<uint64_t>;
    using namespace std::string_literals;
    const auto no = std::nullopt;
    struct Case {
        std::string text;
        I asInt;  // toInteger, 32-bit
        U asUInt32;
        I asInt64;
        U asUInt64;
    } cases[] = {
        {"42", 42, 42, 42, 42},
        {" 42\t", 42, 42, 42, 42},
        {"0x1F", 31, 31, 31, 31},
        {"010", 8, 8, 8, 8},
        {"-5", -5, no, -5, no},
        {"2147483648", no, 2147483648u, 2147483648, 2147483648u},
        {"4294967296", no, no, 4294967296, 4294967296u},
        {"-2147483648", -2147483648, no, -2147483648, no},
        {"-2147483649", no, no, -2147483649, no},
        {"18446744073709551615", no, no, no, 18446744073709551615u},
        {"18446744073709551616", no, no, no, no},
        {"12abc", no, no, no, no},
        {"", no, no, no, no},
        {"   ", no, no, no, no},
        {"1.5", no, no, no, no},
        // White space is the same set at both ends; a NUL anywhere is no
        // number, also where the C text would end.
        {"\v42\f", 42, 42, 42, 42},
        {"\f-5\v\r\n", -5, no, -5, no},
        {"\0"s
         "12",
         no, no, no, no},
        {"12\0junk"s, no, no, no, no},
        {"12\0"s, no, no, no, no},
        {"12 \0"s, no, no, no, no},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.text));
        const String s(c.text.data(), c.text.size());
        int i = 99;
        EXPECT_EQ(s.toInteger(i), c.asInt.has_value());
        EXPECT_EQ(i, c.asInt.value_or(99));
        uint32_t u = 99;
        EXPECT_EQ(s.toUInt32(u), c.asUInt32.has_value());
        EXPECT_EQ(u, c.asUInt32.value_or(99));
        int64_t l = 99;
        EXPECT_EQ(s.toInt64(l), c.asInt64.has_value());
        EXPECT_EQ(l, c.asInt64.value_or(99));
        uint64_t ul = 99;
        EXPECT_EQ(s.toUInt64(ul), c.asUInt64.has_value());
        EXPECT_EQ(ul, c.asUInt64.value_or(99));
    }
}

TEST(XCodeTest, ExtendStringRules) {
    struct Case {
        const char* text;  // null: no text
        const char* prefix;
        const char* separator;
        const char* expected;
    } cases[] = {
        {"boom", "", ": ", "boom"},                  // empty prefix: unchanged
        {nullptr, "CONTEXT", ": ", "CONTEXT"},       // no text yet: the prefix alone
        {"boom", "CONTEXT ", ": ", "CONTEXT boom"},  // prefix ends in a blank
        {"boom", "CONTEXT", ": ", "CONTEXT: boom"},  // otherwise with the separator
        {"boom", "CONTEXT", " / ", "CONTEXT / boom"},
    };
    for (const Case& c : cases) {
        XCode rc(XCode::GENERIC_FAILURE);
        if (c.text) rc.setString(c.text);
        rc.extendString(c.prefix, c.separator);
        EXPECT_EQ(rc.getString(), c.expected) << c.prefix;
        EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
    }
}

TEST(XCodeTest, CodesAndTexts) {
    EXPECT_TRUE(XCode().isSuccess());
    EXPECT_TRUE(static_cast<bool>(XCode()));
    EXPECT_FALSE(static_cast<bool>(XCode::Failure()));
    EXPECT_EQ(XCode::testExpression(false).getValue(), 0x7FFFFFFFu);
    EXPECT_TRUE(XCode::testExpression(true).isSuccess());
    XCode rc(0x16000000 + 11);
    rc.setStringF("VARIABLE DOES NOT EXIST: %s", "a.b");
    EXPECT_EQ(rc.toString(), "0x1600000B: VARIABLE DOES NOT EXIST: a.b");
    EXPECT_EQ(XCode(5).toString(), "0x00000005");
}

}  // namespace
