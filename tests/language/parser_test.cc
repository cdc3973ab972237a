// What the formula tool cannot show of the language: the regular
// expressions a name pattern becomes, which nodes identical texts share,
// and the limits that keep deeply nested input from exhausting the stack.
// Literals, error texts, trees and pattern expansion are in the
// engine_language golden transcript.
#include <gtest/gtest.h>
#include <pthread.h>

#include <string>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/regex.h"
#include "sysevent/graph/expression_repository.h"
#include "sysevent/graph/function_node.h"
#include "sysevent/graph/proxy_repository.h"
#include "sysevent/language/lexer.h"
#include "sysevent/language/parser.h"

namespace VX::SysEvent {
namespace {

TEST(Lexer, NameToRegex) {
    const struct {
        const char* pattern;
        bool prefix;
        const char* regex;
        std::vector<std::pair<const char*, bool>> names;
    } cases[] = {
        // '%' is one or more characters, never across a '.' or a ':'.
        {"line%.up",
         false,
         "^line([^\\.\\:]+)\\.up$",
         {{"line1.up", true},
          {"line.up", false},
          {"line1.x.up", false},
          {"line1:x.up", false},
          {"line1.up.down", false},
          {"linexup", false}}},
        {"line%", true, "^line([^\\.\\:]+)", {{"line1.up.down", true}}},
        {"{sip[0-9]%}.state",
         false,
         "^sip[0-9]*\\.state$",
         {{"sip12.state", true}, {"sip.state", true}, {"sipx.state", false}}},
        {"a:b.c", false, "^a\\:b\\.c$", {{"a:b.c", true}, {"axb.c", false}}},
        {"{a*}", false, "^a\\*$", {{"a*", true}, {"aa", false}}},  // '*' is literal
        {"{.%}", false, "^.*$", {{"any.name:at_all", true}}},
        {"%.%", false, "^([^\\.\\:]+)\\.([^\\.\\:]+)$", {{"a.b", true}, {"a.b.c", false}}},
        {"x{(a|b)}y", false, "^x(a|b)y$", {{"xby", true}}},
        {"", false, "^$", {}},
        {"", true, "^", {}},
    };
    for (const auto& c : cases) {
        const String regex = Lexer::NAME_TO_REGEX(c.pattern, c.prefix);
        EXPECT_EQ(regex, c.regex) << c.pattern;
        VXPtr<VXRegEx::Pattern> re = VXRegEx::COMPILE_EXPRESSION(regex);
        ASSERT_TRUE(re) << c.pattern;
        for (const auto& [name, matches] : c.names) {
            EXPECT_EQ(re->match(name), matches) << c.pattern << " vs " << name;
        }
    }
}

// The normalized expressions of the roots of a parse joined by " ; ", or
// "ERROR <text>"; a failed parse must keep no roots.
String PARSE(const String& text) {
    Parser parser(nullptr);
    XCode rc = parser.parse(String(), text);
    if (rc.isErr()) {
        EXPECT_TRUE(parser.getRoots().empty()) << text.substring(0, 20).c_str();
        return "ERROR " + rc.getString();
    }
    String out;
    for (const VXLWPtr<Node>& root : parser.getRoots()) {
        if (!out.isEmpty()) out += " ; ";
        out += root->getNormalizedExpression();
    }
    return out;
}

// The root of a successful parse, held for the rest of the program: shared
// nodes live only while somebody holds them.
Node* rootOf(const String& text) {
    static std::vector<VXLWPtr<Node>> held;
    Parser parser(nullptr);
    EXPECT_TRUE(parser.parse(String(), text).isSuccess()) << text.c_str();
    if (parser.getRoots().size() != 1) return nullptr;
    held.push_back(parser.getRoots()[0]);
    return held.back().get();
}

TEST(Parser, IdenticalSubExpressionsAndLiteralsAreShared) {
    auto* a = dynamic_cast<FunctionNode*>(rootOf("SUM(sh1, 1) * 2"));
    auto* b = dynamic_cast<FunctionNode*>(rootOf("3 - SUM( sh1 ,1 )"));
    ASSERT_TRUE(a && b);
    EXPECT_EQ(a->getChild(0), b->getChild(1));
    auto* call = dynamic_cast<FunctionNode*>(a->getChild(0));
    ASSERT_NE(call, nullptr);
    EXPECT_EQ(call->getChild(1), ExpressionRepository::INSTANCE()->get("1").get());
    EXPECT_EQ(rootOf("SUM(sh1,1)*2"), a);
    auto* twice = dynamic_cast<FunctionNode*>(rootOf("SUM(7, 7, sh1, sh1)"));
    ASSERT_NE(twice, nullptr);
    EXPECT_EQ(twice->getChild(0), twice->getChild(1));
    EXPECT_EQ(twice->getChild(2), twice->getChild(3));
    EXPECT_EQ(twice->getChild(2), ProxyRepository::INSTANCE()->get("sh1").get());

    const struct {
        String a, b;
        bool shared;
    } literals[] = {
        {"2", "2.0", false},
        {"2.0", "2.000", true},
        {"0.1", "0.10", true},
        {"0.1", "0.1000001", false},  // beyond six significant digits
        {"1e3", "1000", false},       // the float 1000, not the integer
        {"90s", "1m30s", true},
        {"'nul'", String("'nul\0x'", 7), false},  // bytes past an embedded NUL
        {"'sh2'", "sh2", false},                  // a string is no name
    };
    for (const auto& c : literals) {
        EXPECT_EQ(rootOf(c.a) == rootOf(c.b), c.shared) << c.a.c_str() << " vs " << c.b.c_str();
    }
}

std::string repeat(const std::string& piece, size_t n, const std::string& head = "") {
    std::string out = head;
    for (size_t i = 0; i < n; ++i) out += piece;
    return out;
}

String tooDeep(size_t position) {
    return String::Formatted("ERROR %zu: Expression nested too deeply", position);
}

TEST(Parser, NestingAndDepthLimits) {
    // A parenthesis opens two levels (operand and inner expression), and the
    // whole text one more; a unary operator opens one.
    const size_t parens = Parser::MAX_NESTING / 2 - 1, unary = Parser::MAX_NESTING - 2;
    const size_t deep = 100000, limit = Parser::MAX_DEPTH, mega = 1 << 20;
    std::string chain = "c1";
    for (int i = 2; i <= 5000; ++i) chain += " + c" + std::to_string(i);
    const struct {
        std::string text;
        String result;  // the whole result, or its beginning
    } cases[] = {
        {repeat("(", parens) + "a" + repeat(")", parens), "a"},
        {repeat("(", parens + 1) + "a" + repeat(")", parens + 1), tooDeep(parens + 2)},
        {repeat("(", deep) + "1" + repeat(")", deep), tooDeep(parens + 2)},
        {repeat("(", mega), tooDeep(parens + 2)},
        {repeat("NOT(", deep) + "1" + repeat(")", deep), tooDeep((parens + 1) * 4 + 1)},
        {repeat("-", unary) + "1", "NEG(NEG("},
        {repeat("-", unary + 1) + "1", tooDeep(unary + 2)},
        {repeat("!", deep) + "1", tooDeep(unary + 2)},
        {repeat("not ", deep) + "a", tooDeep(4 * (unary + 1) + 1)},
        // A lexical error anywhere wins, as when the whole text is read first.
        {repeat("(", mega) + "'", String::Formatted("ERROR %zu: Unterminated string", mega + 1)},
        // A flat chain is one level of precedence climbing, however long; the
        // tree it builds is bounded separately.
        {chain, "SUM(SUM(SUM("},
        {repeat("+a", limit, "a"), "SUM(SUM("},
        {repeat("+a", limit + 1, "a"), tooDeep(2 * limit + 2)},
        {repeat("NOT(", 200) + repeat("1+", 312) + "1" + repeat(")", 200), "NOT(NOT("},
        {repeat(",a", 50000, "SUM(a") + ")", "SUM(a,a,a,"},
    };
    for (const auto& c : cases) {
        EXPECT_TRUE(PARSE(String(c.text)).startsWith(c.result)) << c.text.substr(0, 20);
    }
    EXPECT_TRUE(PARSE(String(chain)).endsWith(",c4999),c5000)"));
}

// The deepest parse needs about 200 KB of stack in an optimised build;
// instrumented and unoptimised builds have frames several times larger.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__OPTIMIZE__)
constexpr size_t kParseStack = 4 << 20;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr size_t kParseStack = 4 << 20;
#else
constexpr size_t kParseStack = 256 << 10;
#endif
#else
constexpr size_t kParseStack = 256 << 10;
#endif

TEST(Parser, WorstCaseNestingFitsASmallStack) {
    // Every operator of a higher precedence than the one before opens one
    // more level of precedence climbing before the call opens the next.
    const std::string climb = "a within a || a ^^ a && a | a ^ a & a == a < a << a + a * SUM(";
    for (const std::string& text : {repeat(climb, 1000), repeat("SUM(", 100000)}) {
        struct Job {
            std::string text;
            String result;
        } job{text, String()};
        pthread_attr_t attr;
        pthread_attr_init(&attr);
        pthread_attr_setstacksize(&attr, kParseStack);
        pthread_t thread;
        auto run = [](void* p) -> void* {
            auto* j = static_cast<Job*>(p);
            j->result = PARSE(String(j->text));
            return nullptr;
        };
        ASSERT_EQ(pthread_create(&thread, &attr, run, &job), 0);
        pthread_join(thread, nullptr);
        pthread_attr_destroy(&attr);
        EXPECT_TRUE(job.result.endsWith("Expression nested too deeply")) << job.result.c_str();
    }
}

}  // namespace
}  // namespace VX::SysEvent
