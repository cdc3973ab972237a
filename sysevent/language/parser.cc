// Parser: precedence climbing (parseExpression), operands (parseAtom), name
// resolution, literal interning and function arguments.
#include "sysevent/language/parser.h"

#include <algorithm>

#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "sysevent/graph/expression_repository.h"
#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/proxy_repository.h"
#include "sysevent/language/literal_key.h"
#include "sysevent/language/operator_table.h"

namespace VX::SysEvent {

namespace {

// The error paths are kept out of line, so that their temporaries take no
// room in the frames of the recursive parse functions.
[[gnu::noinline, gnu::cold]] XCode failAt(int position, const char* fmt) {
    XCode rc(XCode::GENERIC_FAILURE);
    rc.setStringF(fmt, static_cast<unsigned>(position));
    return rc;
}

[[gnu::noinline, gnu::cold]] XCode failAt(int position, const char* fmt, const char* name) {
    XCode rc(XCode::GENERIC_FAILURE);
    rc.setStringF(fmt, static_cast<unsigned>(position), name);
    return rc;
}

[[gnu::noinline, gnu::cold]] XCode tooDeep(int position) {
    return failAt(position + 1, "%u: Expression nested too deeply");
}

// The arity check's own code, with the parser's message.
[[gnu::noinline, gnu::cold]] XCode invalidArguments(XCode rc, int position,
                                                    const FunctionNode& function) {
    rc.setStringF("%u: Invalid number of arguments: %s(%s)", static_cast<unsigned>(position + 1),
                  function.getFunctionName().c_str(), function.getParameterText().c_str());
    return rc;
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

Parser::Parser(NameResolver* resolver) : m_resolver(resolver) {}

Parser::~Parser() = default;

int Parser::nextPosition() const {
    const Token* next = m_lexer.next();
    return next ? next->position : static_cast<int>(m_lexer.text().length());
}

XCode Parser::parse(const String& context, const String& text) {
    VXAutoLock lock(LOCK());
    m_roots.clear();
    m_nesting = 0;
    if (XCode rc = m_lexer.start(text); rc.isErr()) return rc;
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
    XCode rc = parseAtom(nodes);
    while (rc.isSuccess()) {
        const Token* next = m_lexer.next();
        const BinaryOperator* op = next ? FIND_BINARY_OPERATOR(next->type) : nullptr;
        if (!op || op->precedence < minimum) break;
        const int position = next->position;
        m_lexer.pop(op->token);
        VXLWPtr<FunctionNode> function = FunctionFactory::CREATE(op->function);
        if (!function) {
            return failAt(position + 1, "%u: Unknown binary operator; function '%s' not available",
                          op->function);
        }
        rc = addArguments(function.get(), nodes);
        Operands right;
        if (rc.isSuccess()) rc = parseExpression(right, op->precedence + 1);
        if (rc.isSuccess()) rc = addArguments(function.get(), right);
        // Binary operators take whatever their operands expand to: no arity
        // check, so a pattern operand may add several arguments.
        if (rc.isSuccess()) {
            rc = share(function, 1 + std::max(nodes.depth, right.depth), position, nodes);
        }
    }
    return rc;
}

XCode Parser::parseAtom(Operands& nodes) {
    nodes.nodes.clear();
    nodes.depth = 0;
    const Token* next = m_lexer.next();
    const TokenType type = next ? next->type : TT_END;
    if (m_nesting >= MAX_NESTING) return tooDeep(nextPosition());
    NestingGuard guard(m_nesting);
    switch (type) {
        case TT_LPAREN:
            return parseParenthesis(nodes);
        case TT_NAME:
            return parseNameOrCall(nodes);
        case TT_BOOL:
        case TT_NUMBER:
        case TT_TIME:
        case TT_TEXT:
            return parseConstant(nodes);
        case TT_NOT:
        case TT_BITNOT:
        case TT_MINUS:
            return parseUnary(nodes);
        default:
            // Includes a lone '*': it denotes no operand of its own.
            return failAt(nextPosition() + 1, "%u: Expecting parameter or ')'");
    }
}

XCode Parser::parseParenthesis(Operands& nodes) {
    const int position = nextPosition();
    m_lexer.pop(TT_LPAREN);
    XCode rc = parseExpression(nodes, 0);
    if (rc.isErr()) return rc;
    if (!m_lexer.pop(TT_RPAREN)) return failAt(position + 1, "%u: Expecting ')'");
    return rc;
}

XCode Parser::parseNameOrCall(Operands& nodes) {
    const int position = nextPosition();
    const String name = m_lexer.next()->value.data.string;
    XCode rc = parseIdentifier(nodes);
    if (rc.isErr() || !m_lexer.popIf(TT_LPAREN)) return rc;
    // A call. The name was resolved as a name first, on purpose: the call
    // leaves the same traces as any other use of the name.
    if (nodes.nodes.size() != 1) {
        return failAt(position, "%u: Regular expression '%s' is used as a function", name.c_str());
    }
    VXLWPtr<FunctionNode> function = FunctionFactory::CREATE(name);
    if (!function) return failAt(position + 1, "%u: Unknown function '%s'", name.c_str());
    unsigned depth = 0;
    rc = parseFunctionArguments(function.get(), depth);
    if (rc.isErr()) return rc;
    if (!m_lexer.pop(TT_RPAREN)) return failAt(position + 1, "%u: Expecting ')'");
    rc = function->verifyArguments();
    if (rc.isErr()) return invalidArguments(rc, position, *function);
    return share(function, depth + 1, position, nodes);
}

XCode Parser::parseUnary(Operands& nodes) {
    const int position = nextPosition();
    const TokenType type = m_lexer.next()->type;
    m_lexer.pop(type);
    Operands operands;
    XCode rc = parseAtom(operands);
    if (rc.isErr()) return rc;
    const char* functionName = UNARY_OPERATOR_FUNCTION(type);
    VXLWPtr<FunctionNode> function = FunctionFactory::CREATE(functionName);
    if (!function) {
        return failAt(position + 1, "%u: Unknown unary operator; function '%s' not available",
                      functionName);
    }
    rc = addArguments(function.get(), operands);
    if (rc.isErr()) return rc;
    rc = function->verifyArguments();
    // Named like a call's message: the function and what it takes.
    if (rc.isErr()) return invalidArguments(rc, position, *function);
    return share(function, operands.depth + 1, position, nodes);
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
        nodes.nodes.push_back(ProxyRepository::INSTANCE()->getOrCreate(name));
    }
    nodes.depth = 0;
    return XCode();
}

XCode Parser::parseConstant(Operands& nodes) {
    Token token;
    m_lexer.pop(token);
    const String key = LITERAL_KEY(token.value);
    ExpressionRepository& repository = *ExpressionRepository::INSTANCE();
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
        XCode rc = parseExpression(arguments, 0);
        if (rc.isSuccess()) rc = addArguments(function, arguments);
        if (rc.isErr()) return rc;
        depth = std::max(depth, arguments.depth);
        if (m_lexer.popIf(TT_COMMA)) continue;
        if (m_lexer.peekIf(TT_RPAREN)) return XCode();
        const int position = nextPosition();
        m_lexer.pop(TT_END);  // removed whatever it is
        return failAt(position + 1, "%u: Expecting ',' or ')'");
    }
}

}  // namespace VX::SysEvent
