// Parser: name resolution (plain, context-qualified, undefined reference),
// patterns expanding to several arguments, and the sharing of identical
// sub-expressions and literals.
#include "parser_support.h"

#include "sysevent/graph/expression_repository.h"

namespace VX::SysEvent::ParserTest {
namespace {

using ParserNames = ParserFixture;

Node* rootOf(Parser& parser, const String& text, const String& context = String()) {
    XCode rc = parser.parse(context, text);
    EXPECT_TRUE(rc.isSuccess()) << text.c_str() << ": " << rc.getString().c_str();
    if (rc.isErr() || parser.getRoots().size() != 1) return nullptr;
    return parser.getRoots()[0].get();
}

TEST_F(ParserNames, PlainNameBeforeContextQualified) {
    TestResolver resolver;
    Node* up = resolver.publish("rs1.up");
    Node* qualified = resolver.publish("rs1.line1.rs1.up");
    Parser parser(&resolver);
    EXPECT_EQ(rootOf(parser, "rs1.up", "rs1.line1"), up);
    EXPECT_EQ(resolver.calls, (std::vector<std::string>{"rs1.up"}));
    (void)qualified;
}

TEST_F(ParserNames, ContextQualifiedWhenThePlainNameIsMissing) {
    TestResolver resolver;
    Node* qualified = resolver.publish("line1.rs2up");
    Parser parser(&resolver);
    EXPECT_EQ(rootOf(parser, "rs2up", "line1"), qualified);
    EXPECT_EQ(resolver.calls, (std::vector<std::string>{"rs2up", "line1.rs2up"}));
}

TEST_F(ParserNames, UndefinedReferenceUnderThePlainName) {
    TestResolver resolver;
    Parser parser(&resolver);
    Node* root = rootOf(parser, "rs3up", "line1");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root, ProxyRepository::INSTANCE().get("rs3up").get());
    EXPECT_EQ(ProxyRepository::INSTANCE().get("line1.rs3up").get(), nullptr);
    EXPECT_EQ(root->getValue(), Value(DST_ERR_NA));
    EXPECT_EQ(resolver.calls, (std::vector<std::string>{"rs3up", "line1.rs3up"}));

    // Without a resolver every name is an undefined reference.
    Parser bare(nullptr);
    EXPECT_EQ(rootOf(bare, "rs3up"), root);
}

TEST_F(ParserNames, CallNamesAreResolvedAsNamesFirst) {
    TestResolver resolver;
    Parser parser(&resolver);
    ASSERT_NE(rootOf(parser, "TFANY(1)", "ctx"), nullptr);
    EXPECT_EQ(resolver.calls, (std::vector<std::string>{"TFANY", "ctx.TFANY"}));
    EXPECT_NE(ProxyRepository::INSTANCE().get("TFANY").get(), nullptr);
}

TEST_F(ParserNames, TheDefaultResolver) {
    TestResolver resolver;
    Node* published = resolver.publish("rs4.v");
    NameResolver::SET_DEFAULT(&resolver);
    Parser parser;
    Node* root = rootOf(parser, "rs4.v");
    NameResolver::SET_DEFAULT(nullptr);
    EXPECT_EQ(root, published);
}

TEST_F(ParserNames, PatternsExpandToSeveralArguments) {
    TestResolver resolver;
    resolver.publish("pa1.up");
    resolver.publish("pa2.up");
    resolver.publish("pa3.down");
    resolver.publish("pa4.x.up");
    const struct {
        const char* text;
        const char* result;
    } cases[] = {
        {"TFANY(pa%.up)", "TFANY(pa1.up,pa2.up)"},
        {"TFANY(0, pa%.up, 9)", "TFANY(0,pa1.up,pa2.up,9)"},
        {"pa%.up + 1", "SUM(pa1.up,pa2.up,1)"},
        {"TFANY({pa[13]}.%)", "TFANY(pa1.up,pa3.down)"},
        {"TFANY(nomatch%.x)", "TFANY()"},
        {"nomatch% + 1", "SUM(1)"},
        {"TFANY(nomatch%, nomatch%)", "TFANY()"},
        // The whole expression a pattern: one root per match, or none.
        {"pa%.up", "pa1.up ; pa2.up"},
        {"(pa%.up)", "pa1.up ; pa2.up"},
        {"nomatch%", ""},
        // A pattern used as a function name must stand for exactly one node.
        {"pa%.up(1)", "ERROR 0: Regular expression 'pa%.up' is used as a function"},
        {"x + nomatch%(1)", "ERROR 4: Regular expression 'nomatch%' is used as a function"},
        {"pa3.%(1)", "ERROR 1: Unknown function 'pa3.%'"},
        // A unary operator checks the count its operand expands to.
        {"TFONE(pa%.up)", "ERROR 1: Invalid number of arguments: TFONE(value) [0x12340001]"},
    };
    for (const auto& c : cases) EXPECT_EQ(PARSE(c.text, &resolver), String(c.result)) << c.text;

    const FunctionFactory::FactoryBase* neg = FunctionFactory::INSTANCE().get("NEG");
    ASSERT_NE(neg, nullptr);
    const String negMessage =
        "ERROR 1: Invalid number of arguments: NEG(" + neg->getParameterText() + ")";
    EXPECT_TRUE(PARSE("-pa%.up", &resolver).startsWith(negMessage));
    EXPECT_TRUE(PARSE("-nomatch%", &resolver).startsWith(negMessage));
}

TEST_F(ParserNames, IdenticalSubExpressionsAreShared) {
    Parser first(nullptr);
    Parser second(nullptr);
    auto* a = dynamic_cast<FunctionNode*>(rootOf(first, "TFANY(sh1, 1) + 2"));
    auto* b = dynamic_cast<FunctionNode*>(rootOf(second, "3 * TFANY( sh1 ,1 )"));
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_NE(a, b);
    // The shared call, and the literal 1 inside it.
    EXPECT_EQ(a->getChild(0), b->getChild(1));
    auto* call = dynamic_cast<FunctionNode*>(a->getChild(0));
    ASSERT_NE(call, nullptr);
    EXPECT_EQ(call->getChild(1), ExpressionRepository::INSTANCE().get("1").get());
    // The same text parsed again gives the same root.
    Parser third(nullptr);
    EXPECT_EQ(rootOf(third, "TFANY(sh1,1)+2"), a);

    // One literal node for every occurrence of a literal.
    auto* twice = dynamic_cast<FunctionNode*>(rootOf(third, "TFANY(7, 7, sh1, sh1)"));
    ASSERT_NE(twice, nullptr);
    EXPECT_EQ(twice->getChild(0), twice->getChild(1));
    EXPECT_EQ(twice->getChild(2), twice->getChild(3));
    EXPECT_EQ(twice->getChild(2), ProxyRepository::INSTANCE().get("sh1").get());
}

TEST_F(ParserNames, LiteralsShareOnlyWhenTheyAreTheSameValue) {
    Parser parser(nullptr);
    Node* two = rootOf(parser, "2");
    Node* twoFloat = rootOf(parser, "2.0");
    Node* twoFloatAgain = rootOf(parser, "2.000");
    EXPECT_NE(two, twoFloat);
    EXPECT_EQ(twoFloat, twoFloatAgain);
    EXPECT_EQ(two->getValue(), Value(2ULL));
    EXPECT_EQ(twoFloat->getValue(), Value(2.0));

    // Beyond six significant digits floats stay apart.
    Node* tenth = rootOf(parser, "0.1");
    Node* nearTenth = rootOf(parser, "0.1000001");
    EXPECT_NE(tenth, nearTenth);
    EXPECT_EQ(nearTenth->getValue(), Value(0.1000001));
    EXPECT_EQ(rootOf(parser, "0.10"), tenth);

    // 1e3 is the float 1000, not the integer.
    EXPECT_NE(rootOf(parser, "1e3"), rootOf(parser, "1000"));
    // Equal durations written differently are one node.
    EXPECT_EQ(rootOf(parser, "90s"), rootOf(parser, "1m30s"));
    // Strings differ by their bytes, also past an embedded NUL.
    EXPECT_NE(rootOf(parser, "'nul'"), rootOf(parser, String("'nul\0x'", 7)));
    // A string and a name of the same text are different things.
    EXPECT_NE(rootOf(parser, "'sh2'"), rootOf(parser, "sh2"));
}

TEST_F(ParserNames, FailedParseKeepsNoRoots) {
    Parser parser(nullptr);
    ASSERT_TRUE(parser.parse("fp1 + 1").isSuccess());
    ASSERT_EQ(parser.getRoots().size(), 1u);
    EXPECT_TRUE(parser.parse("fp1 +").isErr());
    EXPECT_TRUE(parser.getRoots().empty());
    EXPECT_TRUE(parser.parse("'").isErr());
    EXPECT_TRUE(parser.getRoots().empty());
}

}  // namespace
}  // namespace VX::SysEvent::ParserTest
