// Parser: trees (as normalized expressions) for precedence, associativity,
// unary operators, calls and literals.
#include "parser_support.h"

namespace VX::SysEvent::ParserTest {
namespace {

struct Case {
    const char* text;
    const char* tree;
};

using ParserGrammar = ParserFixture;

TEST_F(ParserGrammar, Trees) {
    const Case cases[] = {
        {"1 + 2 * 3", "SUM(1,PRODUCT(2,3))"},
        {"(1 + 2) * 3", "PRODUCT(SUM(1,2),3)"},
        {"a < b == c", "EQ(LT(a,b),c)"},
        {"a == b < c", "EQ(a,LT(b,c))"},
        {"not a and b", "AND(NOT(a),b)"},
        {"x within 5s", "WITHIN(x,5s)"},
        {"1 - -2", "DIFF(1,NEG(2))"},
        {"-a*b", "PRODUCT(NEG(a),b)"},
        {"a+b+c", "SUM(SUM(a,b),c)"},
        {"a-b-c", "DIFF(DIFF(a,b),c)"},
        {"a/b*c % d", "MOD(PRODUCT(DIV(a,b),c),d)"},
        {"a%b", "a%b"},
        {"a-(b-c)", "DIFF(a,DIFF(b,c))"},
        {"a || b && c", "OR(a,AND(b,c))"},
        {"a or b xor c and d", "OR(a,XOR(b,AND(c,d)))"},
        {"a and b xor c or d", "OR(XOR(AND(a,b),c),d)"},
        {"a | b ^ c & d", "BITOR(a,BITXOR(b,BITAND(c,d)))"},
        {"a & b ^ c | d", "BITOR(BITXOR(BITAND(a,b),c),d)"},
        {"a && b | c", "AND(a,BITOR(b,c))"},
        {"a & b == c", "BITAND(a,EQ(b,c))"},
        {"a != b >= c", "NEQ(a,GE(b,c))"},
        {"a <= b << c", "LE(a,BITLSHIFT(b,c))"},
        {"a >> b + c", "BITRSHIFT(a,SUM(b,c))"},
        {"a > b >> c - d", "GT(a,BITRSHIFT(b,DIFF(c,d)))"},
        {"a && b within 1s || c", "WITHIN(AND(a,b),OR(1s,c))"},
        {"a within b within c", "WITHIN(WITHIN(a,b),c)"},
        {"!a == ~b", "EQ(NOT(a),BITNOT(b))"},
        {"!!a", "NOT(NOT(a))"},
        {"- - 1", "NEG(NEG(1))"},
        {"-(a+b)", "NEG(SUM(a,b))"},
        {"~a << 2", "BITLSHIFT(BITNOT(a),2)"},
        {"((a))", "a"},
        {"TFANY()", "TFANY()"},
        {"TFANY(a, 1+2, 'x')", "TFANY(a,SUM(1,2),'x')"},
        {"TFANY(TFANY(a), (b))", "TFANY(TFANY(a),b)"},
        {"TFONE(a) * 2", "PRODUCT(TFONE(a),2)"},
        {"-TFONE(a)", "NEG(TFONE(a))"},
        {"TFROUND(1.5, 0)", "TFROUND(1.5,0)"},
        {"true", "true"},
        {"false || true", "OR(false,true)"},
        {"42", "42"},
        {"0x1F", "31"},
        {"2.0", "2.0"},
        {"0.1", "0.1"},
        {"0.1000001", "0.1000001"},
        {"1e20", "1e+20"},
        {"inf", "inf"},
        {"\"a'b\"", "'a'b'"},
        {"''", "''"},
        {"2024-01-15", "2024-01-15"},
        {"12:30:00", "12:30:00"},
        {"2024-01-15T10:00:00", "2024-01-15T10:00:00"},
        {"1h30m + 90s", "SUM(1h30m,1m30s)"},
    };
    for (const auto& c : cases) EXPECT_EQ(PARSE(c.text), String(c.tree)) << c.text;
}

TEST_F(ParserGrammar, LiteralsCarryTheirValues) {
    Parser parser(nullptr);
    ASSERT_TRUE(parser.parse("TFANY(2, 2.0, 1e3, 'it''s', 1500ms)").isErr());
    ASSERT_TRUE(parser.parse("TFANY(2, 2.0, 1e3, 'x', 1500ms)").isSuccess());
    ASSERT_EQ(parser.getRoots().size(), 1u);
    auto* call = dynamic_cast<FunctionNode*>(parser.getRoots()[0].get());
    ASSERT_NE(call, nullptr);
    ASSERT_EQ(call->getChildCount(), 5u);
    const Value expected[] = {Value(2ULL), Value(2.0), Value(1000.0), Value("x"),
                              Value(VX::Time(1, 500000000), DST_REL_TIME)};
    for (unsigned i = 0; i < 5; ++i) {
        const Value& v = call->getChild(i)->peekLastEvent().value;
        EXPECT_EQ(v.subtype, expected[i].subtype) << i;
        EXPECT_EQ(v, expected[i]) << i;
    }
}

}  // namespace
}  // namespace VX::SysEvent::ParserTest
