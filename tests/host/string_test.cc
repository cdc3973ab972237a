// String helpers and XCode texts: splitting, formatting past the formatter's
// stack buffer, whole-text number parsing at the type limits, and how an
// XCode's text is extended and printed.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "host/runtime/string.h"
#include "host/runtime/xcode.h"

namespace {

TEST(StringTest, SplitKeepsEmptyPiecesAndFormatGrows) {
    EXPECT_EQ(String("a,,b;").splitAtChars(",;"), (std::vector<String>{"a", "", "b", ""}));
    EXPECT_EQ(String("").splitAtChars(","), (std::vector<String>{""}));
    String s = "x";
    s.concatf("-%u", 7u).concatf("%s", "!");
    EXPECT_EQ(s, "x-7!");
    // Around the formatter's stack buffer of 256 bytes.
    for (size_t n : {254, 255, 256, 1000}) {
        const std::string text(n, 'q');
        String big = String::Formatted("<%s>", text.c_str());
        EXPECT_EQ(big.str(), "<" + text + ">");
        EXPECT_EQ(big.concatf("%s", text.c_str()).str(), "<" + text + ">" + text);
    }
}

TEST(StringTest, NumbersTakeTheWholeTextOrNothing) {
    using I = std::optional<int64_t>;
    using U = std::optional<uint64_t>;
    using namespace std::string_literals;
    const auto no = std::nullopt;
    const struct {
        std::string text;
        I asInt;  // toInteger, 32-bit
        U asUInt32;
        I asInt64;
        U asUInt64;
    } cases[] = {
        {"\v42\t", 42, 42, 42, 42},
        {"0x1F", 31, 31, 31, 31},
        {"010", 8, 8, 8, 8},
        {"\f-5\v\r\n", -5, no, -5, no},
        {"2147483648", no, 2147483648u, 2147483648, 2147483648u},
        {"4294967296", no, no, 4294967296, 4294967296u},
        {"-2147483648", -2147483648, no, -2147483648, no},
        {"-2147483649", no, no, -2147483649, no},
        {"18446744073709551616", no, no, no, no},
        {"12abc", no, no, no, no},
        {"1.5", no, no, no, no},
        // A NUL anywhere is no number, also where the C text would end.
        {"12\0junk"s, no, no, no, no},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.text));
        const String s(c.text.data(), c.text.size());
        int i = 99;
        uint32_t u = 99;
        int64_t l = 99;
        uint64_t ul = 99;
        EXPECT_EQ(s.toInteger(i), c.asInt.has_value());
        EXPECT_EQ(s.toUInt32(u), c.asUInt32.has_value());
        EXPECT_EQ(s.toInt64(l), c.asInt64.has_value());
        EXPECT_EQ(s.toUInt64(ul), c.asUInt64.has_value());
        // A refused text leaves the output untouched.
        EXPECT_EQ(i, c.asInt.value_or(99));
        EXPECT_EQ(u, c.asUInt32.value_or(99));
        EXPECT_EQ(l, c.asInt64.value_or(99));
        EXPECT_EQ(ul, c.asUInt64.value_or(99));
    }
}

TEST(XCodeTest, ExtendedAndPrintedTexts) {
    const struct {
        const char *text, *prefix, *separator, *expected;  // text null: none yet
    } cases[] = {
        {"boom", "", ": ", "boom"},
        {nullptr, "CONTEXT", ": ", "CONTEXT"},
        {"boom", "CONTEXT ", ": ", "CONTEXT boom"},
        {"boom", "CONTEXT", ": ", "CONTEXT: boom"},
        {"boom", " CONTEXT", " / ", " CONTEXT / boom"},
    };
    for (const auto& c : cases) {
        XCode rc(XCode::GENERIC_FAILURE);
        if (c.text) rc.setString(c.text);
        EXPECT_EQ(rc.extendString(c.prefix, c.separator).getString(), c.expected) << c.prefix;
        EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
    }
    EXPECT_FALSE(static_cast<bool>(XCode::Failure()));
    EXPECT_EQ(XCode::testExpression(false).getValue(), 0x7FFFFFFFu);
    EXPECT_TRUE(XCode::testExpression(true).isSuccess());
    XCode rc(0x16000000 + 11);
    rc.setStringF("VARIABLE DOES NOT EXIST: %s", "a.b");
    EXPECT_EQ(rc.toString(), "0x1600000B: VARIABLE DOES NOT EXIST: a.b");
    EXPECT_EQ(XCode(5).toString(), "0x00000005");
}

}  // namespace
