// VXRegEx: search semantics with the anchors the engine's name patterns
// carry, captures before, between and after matches, refused expressions,
// and texts with NUL bytes.
#include <gtest/gtest.h>

#include <vector>

#include "host/runtime/regex.h"

namespace {

TEST(RegExTest, MatchesAndCaptures) {
    const char* const LINE = "^line([^\\.\\:]+)\\.up$";  // as made from line%.up
    const struct {
        const char *expression, *text;
        const char *whole, *first;  // whole null: no match; first null: group 1 unset
    } cases[] = {
        {LINE, "line12.up", "line12.up", "12"},
        {LINE, "xline1.up", nullptr, nullptr},             // (name patterns are the engine's tests)
        {"^port([^\\.\\:]+)", "port7.a.b", "port7", "7"},  // prefix form
        {"b+", "abbbc", "bbb", nullptr},                   // unanchored: anywhere
        {"(a)|(b)", "b", "b", nullptr},
        {"", "anything", "", nullptr},
        {"^a.b$", "a\nb", nullptr, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(String::Formatted("%s on %s", c.expression, c.text).c_str());
        VXPtr<VXRegEx::Pattern> p = VXRegEx::COMPILE_EXPRESSION(c.expression);
        ASSERT_TRUE(p);
        EXPECT_EQ(p->match(c.text), c.whole != nullptr);
        VXPtr<VXRegEx::Matcher> m = p->createMatcher(c.text);
        String whole, first;
        EXPECT_EQ(m->getCapture(0, whole).getString(), "NO MATCH");  // before matching
        ASSERT_EQ(m->match(), c.whole != nullptr);
        if (!c.whole) continue;
        ASSERT_TRUE(m->getCapture(0, whole).isSuccess());
        EXPECT_EQ(whole, c.whole);
        EXPECT_EQ(m->getCapture(1, first).isSuccess(), c.first != nullptr);
        EXPECT_EQ(first, c.first ? c.first : "");
        EXPECT_EQ(m->getCapture(p->getCaptureCount() + 1, first).getString(), "NO SUCH CAPTURE");
    }
    for (const char* bad : {"(", "[a-", "a{2,1}", "*a", "\\"}) {
        EXPECT_FALSE(VXRegEx::COMPILE_EXPRESSION(bad)) << bad;
    }
    EXPECT_TRUE(VXRegEx::COMPILE_EXPRESSION("^a.b$")->match(String("a\0b", 3)));
}

TEST(RegExTest, SuccessiveMatchesMoveOnAndEnd) {
    const struct {
        const char *expression, *text;
        std::vector<String> found;
    } cases[] = {
        {"[0-9]+", "a1b22c333", {"1", "22", "333"}},
        {"x*", "ab", {"", "", ""}},  // empty matches step over one character
        {"a|", "aab", {"a", "a", "", ""}},
    };
    for (const auto& c : cases) {
        VXPtr<VXRegEx::Matcher> m =
            VXRegEx::COMPILE_EXPRESSION(c.expression)->createMatcher(c.text);
        std::vector<String> found;
        while (found.size() < 10 && m->match()) found.push_back(m->getCapture(0));
        EXPECT_EQ(found, c.found) << c.expression;
        EXPECT_FALSE(m->match());
        EXPECT_EQ(m->getCapture(0), "");  // after the last
    }
}

}  // namespace
