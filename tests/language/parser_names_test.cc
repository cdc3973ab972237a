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

TEST_F(ParserNames, ResolutionOrder) {
    TestResolver resolver;
    Node* up = resolver.publish("rs1.up");
    resolver.publish("rs1.line1.rs1.up");
    Node* qualified = resolver.publish("line1.rs2up");
    const struct {
        const char* text;
        const char* context;
        Node* root;  // nullptr: not a published node
        std::vector<std::string> calls;
    } cases[] = {
        // The plain name first, then the context-qualified one.
        {"rs1.up", "rs1.line1", up, {"rs1.up"}},
        {"rs2up", "line1", qualified, {"rs2up", "line1.rs2up"}},
        // Neither: an undefined reference under the plain name.
        {"rs3up", "line1", nullptr, {"rs3up", "line1.rs3up"}},
        // Call names are resolved as names first.
        {"TFANY(1)", "ctx", nullptr, {"TFANY", "ctx.TFANY"}},
    };
    Parser parser(&resolver);
    std::vector<Node*> roots;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        resolver.calls.clear();
        roots.push_back(rootOf(parser, c.text, c.context));
        ASSERT_NE(roots.back(), nullptr);
        if (c.root) {
            EXPECT_EQ(roots.back(), c.root);
        }
        EXPECT_EQ(resolver.calls, c.calls);
    }
    EXPECT_EQ(roots[2], ProxyRepository::INSTANCE()->get("rs3up").get());
    EXPECT_EQ(ProxyRepository::INSTANCE()->get("line1.rs3up").get(), nullptr);
    EXPECT_EQ(roots[2]->getValue(), Value(DST_ERR_NA));
    EXPECT_NE(ProxyRepository::INSTANCE()->get("TFANY").get(), nullptr);

    // Without a resolver every name is an undefined reference.
    Parser bare(nullptr);
    EXPECT_EQ(rootOf(bare, "rs3up"), roots[2]);
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

    const FunctionFactory::FactoryBase* neg = FunctionFactory::INSTANCE()->get("NEG");
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
    EXPECT_EQ(call->getChild(1), ExpressionRepository::INSTANCE()->get("1").get());
    // The same text parsed again gives the same root.
    Parser third(nullptr);
    EXPECT_EQ(rootOf(third, "TFANY(sh1,1)+2"), a);

    // One literal node for every occurrence of a literal.
    auto* twice = dynamic_cast<FunctionNode*>(rootOf(third, "TFANY(7, 7, sh1, sh1)"));
    ASSERT_NE(twice, nullptr);
    EXPECT_EQ(twice->getChild(0), twice->getChild(1));
    EXPECT_EQ(twice->getChild(2), twice->getChild(3));
    EXPECT_EQ(twice->getChild(2), ProxyRepository::INSTANCE()->get("sh1").get());
}

TEST_F(ParserNames, LiteralsShareOnlyWhenTheyAreTheSameValue) {
    const struct {
        String a, b;
        bool shared;
    } cases[] = {
        {"2", "2.0", false},
        {"2.0", "2.000", true},
        {"0.1", "0.10", true},
        {"0.1", "0.1000001", false},  // beyond six significant digits
        {"1e3", "1000", false},       // the float 1000, not the integer
        {"90s", "1m30s", true},
        {"'nul'", String("'nul\0x'", 7), false},  // bytes past an embedded NUL
        {"'sh2'", "sh2", false},                  // a string is no name
    };
    Parser parser(nullptr);
    for (const auto& c : cases) {
        Node* a = rootOf(parser, c.a);
        EXPECT_EQ(a == rootOf(parser, c.b), c.shared) << c.a.c_str() << " vs " << c.b.c_str();
    }
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
