// Parser: precedence climbing (parseExpression), operands (parseAtom), name
// resolution, literal interning and function arguments.
#include "sysevent/language/parser.h"

#include <algorithm>

#include "host/crit.h"
#include "host/lock.h"
#include "sysevent/graph/expression_repository.h"
#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/proxy_repository.h"
#include "sysevent/language/literal_key.h"
#include "sysevent/language/operator_table.h"

namespace VX::SysEvent {

namespace {

XCode failAt(int position, const char* fmt) {
    XCode rc(XCode::GENERIC_FAILURE);
    rc.setStringF(fmt, static_cast<unsigned>(position));
    return rc;
}

XCode failAt(int position, const char* fmt, const String& name) {
    XCode rc(XCode::GENERIC_FAILURE);
    rc.setStringF(fmt, static_cast<unsigned>(position), name.c_str());
    return rc;
}

XCode tooDeep(int position) {
    return failAt(position + 1, "%u: Expression nested too deeply");
}

// Counts one open level of parsing (a parseExpression or parseAtom call) for
// the lifetime of the guard.
class NestingGuard {
public:
    explicit NestingGuard(unsigned& level) : m_level(level) { ++m_level; }
    ~NestingGuard() { --m_level; }
    NestingGuard(const NestingGuard&) = delete;
    NestingGuard& operator=(const NestingGuard&) = delete;

private:
    unsigned& m_level;
};

}  // namespace

Parser::Parser() = default;

Parser::Parser(NameResolver* resolver) : m_resolver(resolver), m_useDefaultResolver(false) {}

Parser::~Parser() = default;

int Parser::nextPosition() const {
    const Token* next = m_lexer.next();
    return next ? next->position : static_cast<int>(m_lexer.text().length());
}

XCode Parser::parse(const String& context, const String& text) {
    VXAutoLock lock(LOCK());
    m_roots.clear();
    m_nesting = 0;
    if (m_useDefaultResolver) m_resolver = NameResolver::GET_DEFAULT();
    if (XCode rc = m_lexer.analyze(text); rc.isErr()) return rc;
    m_context = context;
    Operands result;
    if (XCode rc = parseExpression(result, 0); rc.isErr()) return rc;
    if (!m_lexer.peekIf(TT_END)) {
        return failAt(nextPosition() + 1, "%u: Expecting end of expression");
    }
    m_roots = std::move(result.nodes);
    return XCode();
}

XCode Parser::addArguments(FunctionNode* function, const Operands& operands) {
    for (const VXLWPtr<Node>& node : operands.nodes) {
        if (XCode rc = function->addArgument(node.get()); rc.isErr()) return rc;
    }
    return XCode();
}

XCode Parser::share(const VXLWPtr<FunctionNode>& function, unsigned depth, int position,
                    Operands& nodes) {
    // Checked before sharing: the sharing key is built recursively, and a
    // tree past the limit is not kept anywhere.
    if (depth > MAX_DEPTH) return tooDeep(position);
    VXLWPtr<Node> shared = ExpressionRepository::GET_OR_ADD(function.get());
    nodes.nodes.clear();
    nodes.nodes.push_back(std::move(shared));
    nodes.depth = depth;
    return XCode();
}

XCode Parser::parseExpression(Operands& nodes, int minimum) {
    if (m_nesting >= MAX_NESTING) return tooDeep(nextPosition());
    NestingGuard guard(m_nesting);
    if (XCode rc = parseAtom(nodes); rc.isErr()) return rc;
    while (true) {
        const Token* next = m_lexer.next();
        const BinaryOperator* op = next ? FIND_BINARY_OPERATOR(next->type) : nullptr;
        if (!op || op->precedence < minimum) return XCode();
        const int position = next->position;
        m_lexer.pop(next->type);

        VXLWPtr<FunctionNode> function = FunctionFactory::CREATE(op->function);
        if (!function) {
            return failAt(position + 1, "%u: Unknown binary operator; function '%s' not available",
                          op->function);
        }
        if (XCode rc = addArguments(function.get(), nodes); rc.isErr()) return rc;
        Operands right;
        if (XCode rc = parseExpression(right, op->precedence + 1); rc.isErr()) return rc;
        if (XCode rc = addArguments(function.get(), right); rc.isErr()) return rc;
        // Binary operators take whatever their operands expand to: no arity
        // check, so a pattern operand may add several arguments.
        const unsigned depth = 1 + std::max(nodes.depth, right.depth);
        if (XCode rc = share(function, depth, position, nodes); rc.isErr()) return rc;
    }
}

XCode Parser::parseAtom(Operands& nodes) {
    nodes.nodes.clear();
    nodes.depth = 0;
    const Token* next = m_lexer.next();
    const TokenType type = next ? next->type : TT_END;
    const int position = nextPosition();
    if (m_nesting >= MAX_NESTING) return tooDeep(position);
    NestingGuard guard(m_nesting);

    switch (type) {
        case TT_LPAREN: {
            m_lexer.pop(TT_LPAREN);
            if (XCode rc = parseExpression(nodes, 0); rc.isErr()) return rc;
            if (!m_lexer.pop(TT_RPAREN)) return failAt(position + 1, "%u: Expecting ')'");
            return XCode();
        }
        case TT_NAME: {
            const String name = next->value.data.string;
            if (XCode rc = parseIdentifier(nodes); rc.isErr()) return rc;
            if (!m_lexer.popIf(TT_LPAREN)) return XCode();
            // A call. The name was resolved as a name first, on purpose: the
            // call leaves the same traces as any other use of the name.
            if (nodes.nodes.size() != 1) {
                return failAt(position, "%u: Regular expression '%s' is used as a function", name);
            }
            VXLWPtr<FunctionNode> function = FunctionFactory::CREATE(name);
            if (!function) return failAt(position + 1, "%u: Unknown function '%s'", name);
            unsigned depth = 0;
            if (XCode rc = parseFunctionArguments(function.get(), depth); rc.isErr()) return rc;
            if (!m_lexer.pop(TT_RPAREN)) return failAt(position + 1, "%u: Expecting ')'");
            if (XCode rc = function->verifyArguments(); rc.isErr()) {
                rc.setStringF(
                    "%u: Invalid number of arguments: %s(%s)", static_cast<unsigned>(position + 1),
                    function->getFunctionName().c_str(), function->getParameterText().c_str());
                return rc;
            }
            return share(function, depth + 1, position, nodes);
        }
        case TT_BOOL:
        case TT_NUMBER:
        case TT_TIME:
        case TT_TEXT:
            return parseConstant(nodes);
        case TT_NOT:
        case TT_BITNOT:
        case TT_MINUS: {
            m_lexer.pop(type);
            Operands operands;
            if (XCode rc = parseAtom(operands); rc.isErr()) return rc;
            const char* functionName = UNARY_OPERATOR_FUNCTION(type);
            VXLWPtr<FunctionNode> function = FunctionFactory::CREATE(functionName);
            if (!function) {
                return failAt(position + 1,
                              "%u: Unknown unary operator; function '%s' not available",
                              functionName);
            }
            if (XCode rc = addArguments(function.get(), operands); rc.isErr()) return rc;
            if (XCode rc = function->verifyArguments(); rc.isErr()) {
                // Named like a call's message: the function and what it takes.
                rc.setStringF(
                    "%u: Invalid number of arguments: %s(%s)", static_cast<unsigned>(position + 1),
                    function->getFunctionName().c_str(), function->getParameterText().c_str());
                return rc;
            }
            return share(function, operands.depth + 1, position, nodes);
        }
        default:
            // Includes a lone '*': it denotes no operand of its own.
            return failAt(position + 1, "%u: Expecting parameter or ')'");
    }
}

XCode Parser::parseIdentifier(Operands& nodes) {
    nodes.nodes.clear();
    nodes.depth = 0;
    Token token;
    m_lexer.pop(token);
    const String& name = token.value.data.string;

    bool resolved = false;
    if (m_resolver) {
        resolved = m_resolver->resolve(name, nodes.nodes).isSuccess();
        if (!resolved && !m_context.isEmpty()) {
            resolved = m_resolver->resolve(m_context + "." + name, nodes.nodes).isSuccess();
        }
    }
    if (!resolved) {
        // An undefined reference under the plain name: it binds once an
        // object of that name is created.
        nodes.nodes.clear();
        nodes.nodes.push_back(ProxyRepository::INSTANCE().getOrCreate(name));
    }
    nodes.depth = 0;
    return XCode();
}

XCode Parser::parseConstant(Operands& nodes) {
    Token token;
    m_lexer.pop(token);
    const String key = LITERAL_KEY(token.value);
    ExpressionRepository& repository = ExpressionRepository::INSTANCE();
    VXLWPtr<Node> node = repository.get(key);
    if (!node) {
        node = new Node(key, token.value);
        repository.add(key, node.get());
    }
    nodes.nodes.clear();
    nodes.nodes.push_back(std::move(node));
    nodes.depth = 0;
    return XCode();
}

XCode Parser::parseFunctionArguments(FunctionNode* function, unsigned& depth) {
    depth = 0;
    if (m_lexer.peekIf(TT_RPAREN)) return XCode();
    Operands arguments;
    while (true) {
        if (XCode rc = parseExpression(arguments, 0); rc.isErr()) return rc;
        if (XCode rc = addArguments(function, arguments); rc.isErr()) return rc;
        depth = std::max(depth, arguments.depth);
        if (m_lexer.popIf(TT_COMMA)) continue;
        if (m_lexer.peekIf(TT_RPAREN)) return XCode();
        const int position = nextPosition();
        m_lexer.pop(TT_END);  // removed whatever it is
        return failAt(position + 1, "%u: Expecting ',' or ')'");
    }
}

}  // namespace VX::SysEvent
