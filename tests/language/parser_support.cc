// Test support for the parser (see parser_support.h).
#include "parser_support.h"

namespace VX::SysEvent::ParserTest {

void REGISTER_TEST_FUNCTIONS() {
    static bool done = false;
    if (done) return;
    done = true;
    // Never destroyed: the factory table must not point at dead factories.
    static auto* factories = new std::vector<std::unique_ptr<FunctionFactory::FactoryBase>>();
    factories->emplace_back(new FunctionFactory::Factory<AnyArity>("TFANY", "[value]*", "test"));
    factories->emplace_back(new FunctionFactory::Factory<OneArgument>("TFONE", "value", "test"));
    factories->emplace_back(
        new FunctionFactory::Factory<OneOrTwo>("TFROUND", "number[,digits]", "test"));
    for (const char* name : {"WITHIN",    "OR",  "XOR",  "AND",     "BITOR", "BITXOR", "BITAND",
                             "EQ",        "NEQ", "LT",   "LE",      "GT",    "GE",     "BITLSHIFT",
                             "BITRSHIFT", "SUM", "DIFF", "PRODUCT", "DIV",   "MOD"}) {
        if (!FunctionFactory::INSTANCE()->get(name)) {
            factories->emplace_back(
                new FunctionFactory::Factory<AnyArity>(name, "[value]*", "test"));
        }
    }
    for (const char* name : {"NOT", "BITNOT", "NEG"}) {
        if (!FunctionFactory::INSTANCE()->get(name)) {
            factories->emplace_back(
                new FunctionFactory::Factory<OneArgument>(name, "value", "test"));
        }
    }
}

HiddenFunction::HiddenFunction(const char* name) : m_name(name) {
    FunctionFactory& factory = *FunctionFactory::INSTANCE();
    while (FunctionFactory::FactoryBase* f = factory.get(m_name)) {
        m_saved.push_back(f);
        factory.unregisterFactory(m_name);
    }
}

HiddenFunction::~HiddenFunction() {
    for (FunctionFactory::FactoryBase* f : m_saved) {
        FunctionFactory::INSTANCE()->registerFactory(m_name, f);
    }
}

Node* TestResolver::publish(const String& name, const Value& value) {
    VXLWPtr<Node> node(new Node(name, value));
    m_published[name.str()] = node;
    return node.get();
}

XCode TestResolver::resolve(const String& name, VXVector<VXLWPtr<Node>>& nodes) {
    calls.push_back(name.str());
    nodes.clear();
    if (!IS_PATTERN(name)) {
        auto it = m_published.find(name.str());
        if (it == m_published.end()) return XCode::Failure("VARIABLE DOES NOT EXIST: " + name);
        nodes.push_back(it->second);
        return XCode();
    }
    VXPtr<VXRegEx::Pattern> re = VXRegEx::COMPILE_EXPRESSION(Lexer::NAME_TO_REGEX(name, false));
    if (!re) return XCode::Failure("INVALID REGULAR EXPRESSION");
    for (const auto& [published, node] : m_published) {
        if (re->match(String(published))) nodes.push_back(node);
    }
    return XCode();
}

String PARSE(const String& text, NameResolver* resolver, const String& context) {
    Parser parser(resolver);
    XCode rc = parser.parse(context, text);
    if (rc.isErr()) {
        EXPECT_TRUE(parser.getRoots().empty()) << text.c_str();
        String out = "ERROR " + rc.getString();
        if (rc.getValue() != XCode::GENERIC_FAILURE) out.concatf(" [0x%08X]", rc.getValue());
        return out;
    }
    String out;
    for (const VXLWPtr<Node>& root : parser.getRoots()) {
        if (!out.isEmpty()) out += " ; ";
        out += root->getNormalizedExpression();
    }
    return out;
}

}  // namespace VX::SysEvent::ParserTest
