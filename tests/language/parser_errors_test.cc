// Parser: every error with its exact text, number and code, and the limits
// that keep deeply nested input from exhausting the stack.
#include <pthread.h>

#include <string>

#include "parser_support.h"

namespace VX::SysEvent::ParserTest {
namespace {

using ParserErrors = ParserFixture;

TEST_F(ParserErrors, MessagesAndColumns) {
    const struct {
        const char* text;
        const char* error;
    } cases[] = {
        {"TFANY(a", "ERROR 8: Expecting ',' or ')'"},
        {"1 +", "ERROR 4: Expecting parameter or ')'"},
        {"a b", "ERROR 3: Expecting end of expression"},
        {"(a) (b)", "ERROR 5: Expecting end of expression"},
        {"f(a)", "ERROR 1: Unknown function 'f'"},
        {"x + NOSUCH(1)", "ERROR 5: Unknown function 'NOSUCH'"},
        {"TFANY(a,)", "ERROR 9: Expecting parameter or ')'"},
        {"TFANY(,a)", "ERROR 7: Expecting parameter or ')'"},
        {"TFANY(a b)", "ERROR 9: Expecting ',' or ')'"},
        {"TFANY(a;", "ERROR 8: Unknown binary operator; function 'SEQUENCE' not available"},
        {"(a", "ERROR 1: Expecting ')'"},
        {"x + (a b", "ERROR 5: Expecting ')'"},
        {")", "ERROR 1: Expecting parameter or ')'"},
        {"", "ERROR 1: Expecting parameter or ')'"},
        {"   ", "ERROR 4: Expecting parameter or ')'"},
        {"*", "ERROR 1: Expecting parameter or ')'"},
        {"a * * b", "ERROR 5: Expecting parameter or ')'"},
        {",", "ERROR 1: Expecting parameter or ')'"},
        {"a ; b", "ERROR 3: Unknown binary operator; function 'SEQUENCE' not available"},
        {"a = b", "ERROR 3: Unexpected character '='"},
        {"'open", "ERROR 5: Unterminated string"},
        {"TFONE()", "ERROR 1: Invalid number of arguments: TFONE(value) [0x12340001]"},
        {"x + TFONE(1,2)", "ERROR 5: Invalid number of arguments: TFONE(value) [0x12340001]"},
        {"TFROUND()",
         "ERROR 1: Invalid number of arguments: TFROUND(number[,digits]) [0x12340001]"},
        {"TFONE(1", "ERROR 8: Expecting ',' or ')'"},
    };
    for (const auto& c : cases) EXPECT_EQ(PARSE(c.text), String(c.error)) << c.text;
}

TEST_F(ParserErrors, CatalogueArityMessage) {
    FunctionFactory::FactoryBase* round = FunctionFactory::INSTANCE()->get("ROUND");
    if (!round) GTEST_SKIP() << "ROUND is not in the catalogue of this build";
    const String parsed = PARSE("ROUND()");
    EXPECT_TRUE(parsed.startsWith("ERROR 1: Invalid number of arguments: ROUND(" +
                                  round->getParameterText() + ")"))
        << parsed.c_str();
}

TEST_F(ParserErrors, MissingOperatorFunctions) {
    const struct {
        const char* function;
        const char* text;
        const char* error;
    } cases[] = {
        {"NEG", "1 + -a", "ERROR 5: Unknown unary operator; function 'NEG' not available"},
        {"BITNOT", "~a", "ERROR 1: Unknown unary operator; function 'BITNOT' not available"},
        {"MOD", "a % b", "ERROR 3: Unknown binary operator; function 'MOD' not available"},
    };
    for (const auto& c : cases) {
        HiddenFunction hidden(c.function);
        EXPECT_EQ(PARSE(c.text), String(c.error));
    }
    EXPECT_EQ(PARSE("-a % ~b"), String("MOD(NEG(a),BITNOT(b))"));

    // A function registered under the name of the ';' operator makes it work,
    // between "within" and "or".
    {
        FunctionFactory::Factory<AnyArity> sequence("SEQUENCE", "[value]*", "test");
        EXPECT_EQ(PARSE("a ; b or c within d ; e"),
                  String("WITHIN(SEQUENCE(a,OR(b,c)),SEQUENCE(d,e))"));
    }
    EXPECT_EQ(PARSE("a ; b"),
              String("ERROR 3: Unknown binary operator; function 'SEQUENCE' not available"));
}

// `head` followed by `piece` n times. Built by appending: prepending a literal
// to a temporary trips a false -Wrestrict of GCC 12 at -O3.
std::string repeat(const std::string& piece, size_t n, const std::string& head = "") {
    std::string out = head;
    out.reserve(head.size() + piece.size() * n);
    for (size_t i = 0; i < n; ++i) out += piece;
    return out;
}

TEST_F(ParserErrors, NestingLimitOfOpenLevels) {
    // A parenthesis opens two levels (operand and inner expression), and the
    // whole text one more: half the limit, less one, is the deepest nesting.
    const size_t parens = Parser::MAX_NESTING / 2 - 1;
    EXPECT_EQ(PARSE(repeat("(", parens) + "a" + repeat(")", parens)), String("a"));
    const String atParens =
        String::Formatted("ERROR %zu: Expression nested too deeply", parens + 2);
    EXPECT_EQ(PARSE(repeat("(", parens + 1) + "a" + repeat(")", parens + 1)), atParens);

    // Input far beyond the limit ends in the same clear error, whatever the
    // construct that nests.
    const size_t deep = 100000;
    EXPECT_EQ(PARSE(repeat("(", deep) + "1" + repeat(")", deep)), atParens);
    EXPECT_EQ(PARSE(repeat("(", deep)), atParens);
    EXPECT_EQ(PARSE(repeat("TFONE(", deep) + "1" + repeat(")", deep)),
              String::Formatted("ERROR %zu: Expression nested too deeply", (parens + 1) * 6 + 1));
    // A unary operator opens one level.
    const size_t unary = Parser::MAX_NESTING - 2;
    EXPECT_TRUE(PARSE(repeat("-", unary) + "1").startsWith("NEG(NEG("));
    const String atUnary = String::Formatted("ERROR %zu: Expression nested too deeply", unary + 2);
    EXPECT_EQ(PARSE(repeat("-", unary + 1) + "1"), atUnary);
    EXPECT_EQ(PARSE(repeat("-", deep) + "1"), atUnary);
    EXPECT_EQ(PARSE(repeat("!", deep) + "1"), atUnary);
    EXPECT_EQ(PARSE(repeat("not ", deep) + "a"),
              String::Formatted("ERROR %zu: Expression nested too deeply", 4 * (unary + 1) + 1));
}

// Huge texts are answered without reading them twice over: a lexical error
// anywhere wins, as when the whole text is read first; otherwise the parse
// stops where it refuses.
TEST_F(ParserErrors, HugeTextsAreAnswered) {
    const size_t parens = Parser::MAX_NESTING / 2 - 1;
    const size_t mega = 1 << 20;
    const struct {
        std::string text;
        String result;
    } cases[] = {
        {repeat("(", mega),
         String::Formatted("ERROR %zu: Expression nested too deeply", parens + 2)},
        {repeat("(", mega) + "'", String::Formatted("ERROR %zu: Unterminated string", mega + 1)},
        {repeat("1+", 400000) + "1",
         String::Formatted("ERROR %u: Expression nested too deeply", 2 * Parser::MAX_DEPTH + 2)},
        {"a b $", "ERROR 5: Unexpected character '$'"},
        {repeat("2024-01-15 + ", 50) + "1", "SUM(SUM("},
    };
    for (const auto& c : cases) {
        EXPECT_TRUE(PARSE(String(c.text)).startsWith(c.result)) << c.text.substr(0, 20);
    }
}

TEST_F(ParserErrors, DepthLimitOfTheTree) {
    const size_t limit = Parser::MAX_DEPTH;
    // a+a+...: every operator adds one level to the left.
    EXPECT_TRUE(PARSE(repeat("+a", limit, "a")).startsWith("SUM(SUM("));
    EXPECT_TRUE(PARSE(repeat("TFONE(", 200) + repeat("1+", 312) + "1" + repeat(")", 200))
                    .startsWith("TFONE(TFONE("));
    // The operator that makes it one too deep is number limit + 1, at index
    // 2 * limit + 1.
    EXPECT_EQ(PARSE(repeat("+a", limit + 1, "a")),
              String::Formatted("ERROR %zu: Expression nested too deeply", 2 * limit + 2));
    // A flat chain is no nesting: c1 + c2 + ... + c5000 is one level of
    // precedence climbing, however long.
    std::string chain = "c1";
    for (int i = 2; i <= 5000; ++i) {
        chain += " + c";
        chain += std::to_string(i);
    }
    const String flat = PARSE(chain);
    EXPECT_TRUE(flat.startsWith("SUM(SUM(SUM(") && flat.endsWith(",c4999),c5000)"))
        << flat.substring(0, 40).c_str();

    // Flat is fine at any width.
    const String wide = PARSE(repeat(",a", 50000, "TFANY(a") + ")");
    EXPECT_TRUE(wide.startsWith("TFANY(a,a,a,")) << wide.substring(0, 40).c_str();
}

// The stack that the deepest parse must fit: a quarter of a megabyte in an
// optimised build (it needs about 200 KB); instrumented and unoptimised builds
// have frames several times larger.
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

// Parses `text` on a thread with a stack of `stackBytes` and returns the
// result; a stack overflow would end the test process.
String parseOnSmallStack(const std::string& text, size_t stackBytes) {
    struct Job {
        std::string text;
        String result;
    } job{text, String()};
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstacksize(&attr, stackBytes);
    pthread_t thread;
    auto run = [](void* p) -> void* {
        auto* j = static_cast<Job*>(p);
        j->result = PARSE(String(j->text));
        return nullptr;
    };
    EXPECT_EQ(pthread_create(&thread, &attr, run, &job), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attr);
    return job.result;
}

TEST_F(ParserErrors, WorstCaseNestingFitsASmallStack) {
    // Every operator of a higher precedence than the one before opens one
    // more level of precedence climbing before the call opens the next.
    FunctionFactory::Factory<AnyArity> sequence("SEQUENCE", "[value]*", "test");
    const std::string climb =
        "a within a ; a || a ^^ a && a | a ^ a & a == a < a << a + a * TFANY(";
    const size_t stack = kParseStack;
    String result = parseOnSmallStack(repeat(climb, 1000), stack);
    EXPECT_TRUE(result.endsWith("Expression nested too deeply")) << result.c_str();
    result = parseOnSmallStack(repeat("TFANY(", 100000), stack);
    EXPECT_TRUE(result.endsWith("Expression nested too deeply")) << result.c_str();
}

}  // namespace
}  // namespace VX::SysEvent::ParserTest
