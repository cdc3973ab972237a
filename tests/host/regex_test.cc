// VXRegEx: search semantics with the anchors the engine's name patterns
// carry, captures, iteration, refused expressions and shared use.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "host/runtime/regex.h"

namespace {

struct MatchCase {
    const char* expression;
    const char* text;
    bool matches;
    const char* whole;  // capture 0 when it matches
    const char* first;  // capture 1, or null when the group is unset or absent
};

TEST(RegExTest, MatchesAndCaptures) {
    const MatchCase cases[] = {
        // whole-name forms, as made from line%.up and {sip[0-9]%}.state
        {"^line([^\\.\\:]+)\\.up$", "line1.up", true, "line1.up", "1"},
        {"^line([^\\.\\:]+)\\.up$", "line12.up", true, "line12.up", "12"},
        {"^line([^\\.\\:]+)\\.up$", "line.up", false, nullptr, nullptr},
        {"^line([^\\.\\:]+)\\.up$", "line1.2.up", false, nullptr, nullptr},
        {"^line([^\\.\\:]+)\\.up$", "line1:x.up", false, nullptr, nullptr},
        {"^line([^\\.\\:]+)\\.up$", "xline1.up", false, nullptr, nullptr},
        {"^line([^\\.\\:]+)\\.up$", "line1.upx", false, nullptr, nullptr},
        {"^sip[0-9]*\\.state$", "sip12.state", true, "sip12.state", nullptr},
        {"^sip[0-9]*\\.state$", "sip.state", true, "sip.state", nullptr},
        {"^sip[0-9]*\\.state$", "sipx.state", false, nullptr, nullptr},
        // prefix form: the whole match is the covered leading part
        {"^port([^\\.\\:]+)", "port7.a.b", true, "port7", "7"},
        // unanchored: a search anywhere in the text
        {"b+", "abbbc", true, "bbb", nullptr},
        {"", "anything", true, "", nullptr},
    };
    for (const MatchCase& c : cases) {
        SCOPED_TRACE(String::Formatted("%s on %s", c.expression, c.text).c_str());
        VXPtr<VXRegEx::Pattern> p = VXRegEx::COMPILE_EXPRESSION(c.expression);
        ASSERT_TRUE(p);
        EXPECT_EQ(p->match(c.text), c.matches);
        VXPtr<VXRegEx::Matcher> m = p->createMatcher(c.text);
        ASSERT_TRUE(m);
        ASSERT_EQ(m->match(), c.matches);
        if (!c.matches) continue;
        String whole;
        ASSERT_TRUE(m->getCapture(0, whole).isSuccess());
        EXPECT_EQ(whole, c.whole);
        String first;
        XCode rc = m->getCapture(1, first);
        if (c.first) {
            ASSERT_TRUE(rc.isSuccess());
            EXPECT_EQ(first, c.first);
        } else {
            EXPECT_TRUE(rc.isErr());
        }
    }
}

TEST(RegExTest, RefusedExpressionsGiveNull) {
    for (const char* bad : {"(", "[a-", "a{2,1}", "*a", "(?<n", "\\", "a)"}) {
        EXPECT_FALSE(VXRegEx::COMPILE_EXPRESSION(bad)) << bad;
    }
}

TEST(RegExTest, CapturesBeforeAfterAndBetweenSuccessiveMatches) {
    VXPtr<VXRegEx::Pattern> p = VXRegEx::COMPILE_EXPRESSION("(a)|(b)");
    ASSERT_TRUE(p);
    EXPECT_EQ(p->getCaptureCount(), 2u);
    EXPECT_EQ(p->getText(), "(a)|(b)");
    VXPtr<VXRegEx::Matcher> m = p->createMatcher("b");
    String s;
    EXPECT_TRUE(m->getCapture(0, s).isErr());  // before the first match
    ASSERT_TRUE(m->match());
    EXPECT_TRUE(m->getCapture(1, s).isErr());  // group 1 took no part
    ASSERT_TRUE(m->getCapture(2, s).isSuccess());
    EXPECT_EQ(s, "b");
    EXPECT_TRUE(m->getCapture(3, s).isErr());  // no such group
    EXPECT_EQ(m->getCapture(3), "");

    m = VXRegEx::COMPILE_EXPRESSION("[0-9]+")->createMatcher("a1b22c333");
    std::vector<String> found;
    while (m->match()) found.push_back(m->getCapture(0));
    EXPECT_EQ(found, (std::vector<String>{"1", "22", "333"}));
    EXPECT_FALSE(m->match());
    EXPECT_TRUE(m->getCapture(0, s).isErr());  // after the last

    // Empty matches move on by one character and end.
    m = VXRegEx::COMPILE_EXPRESSION("x*")->createMatcher("ab");
    int count = 0;
    while (m->match() && count < 10) ++count;
    EXPECT_EQ(count, 3);

    // Texts are bytes, not C strings.
    p = VXRegEx::COMPILE_EXPRESSION("^a.b$");
    EXPECT_TRUE(p->match(String("a\0b", 3)));
    EXPECT_FALSE(p->match("a"));
}

TEST(RegExTest, OnePatternServesSeveralThreads) {
    VXPtr<VXRegEx::Pattern> p = VXRegEx::COMPILE_EXPRESSION("^line([0-9]+)\\.up$");
    ASSERT_TRUE(p);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 2000; ++i) {
                const String n = String::stringOf(t * 10000 + i);
                VXPtr<VXRegEx::Matcher> m = p->createMatcher("line" + n + ".up");
                if (!m || !m->match() || m->getCapture(1) != n) ++wrong;
                if (p->match("line" + n + ".down")) ++wrong;
            }
        });
    }
    for (std::thread& th : threads) th.join();
    EXPECT_EQ(wrong.load(), 0);
}

}  // namespace
