// Parser: turns formula text into nodes of the evaluation graph by
// precedence climbing over the lexer's tokens. Operators and function calls
// become function nodes made by the FunctionFactory, names become the nodes
// of published objects (through a NameResolver) or undefined references,
// literals become constant nodes. Every node built is shared engine-wide
// through the ExpressionRepository, so identical sub-expressions and literals
// exist once.
//
// A name may be a pattern that stands for several published names: wherever
// it stands, all the nodes it matches take its place as separate arguments
// (COUNTIF(line%.up)).
//
// Limits. The parser recurses only where the text nests: a parenthesis or
// a call opens two levels (its operand and the expression inside), a unary
// operator one, and a binary operator one while its right operand is read
// (while c is read in a + b * c, four are open: the whole expression, two
// right operands and c). A flat chain a + b + c + ... reads each operand at
// the same level, however long it is. MAX_NESTING bounds the open levels:
// 255 nested parentheses or calls, or 510 unary operators, so a parse needs
// at most about 200 KB of stack (optimised build). Separately, the tree
// built may be at most MAX_DEPTH function applications deep (a+b+c is two
// deep): its sharing key, the normalized text, grows with the depth, so a
// flat chain, as deep as it is long, costs keys of quadratic total length. Beyond either limit the
// parse fails with "<column>: Expression nested too deeply". Tokens are read as the parse needs
// them, so a text refused early is not read further: input of any shape and length is answered.
//
// A Parser lives for one parse and belongs to one thread. parse() takes the
// engine lock (re-entrant: callers usually hold it already).
#pragma once

#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/graph/function_node.h"
#include "sysevent/graph/node.h"
#include "sysevent/language/lexer.h"
#include "sysevent/language/name_resolver.h"

namespace VX::SysEvent {

class Parser {
public:
    static constexpr unsigned MAX_NESTING = 512;
    static constexpr unsigned MAX_DEPTH = 6000;

    // Resolves names through `resolver` (may be null: no published names,
    // every name is an undefined reference). It must outlive the parse.
    explicit Parser(NameResolver* resolver);
    ~Parser();
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    // Parses `text`; names are looked up as written first, then qualified by
    // `context` ("context.name") when the context is not empty. On success
    // getRoots() holds the result: one node, or one per match when the whole
    // text is a single pattern name (none when it matches nothing). On
    // failure the roots are empty and the code carries "<number>: <what>":
    // the lexer's error unchanged, or a parser error numbered with a 1-based
    // column (the one exception: "Regular expression '%s' is used as a
    // function" gives the 0-based position of the name). The code is the
    // generic failure code, except that "Invalid number of arguments" keeps
    // the code of the function's arity check.
    XCode parse(const String& context, const String& text);
    XCode parse(const String& text) { return parse(String(), text); }

    const VXVector<VXLWPtr<Node>>& getRoots() const { return m_roots; }

private:
    // A list of operands with the depth of the deepest: 0 for none, a name
    // or a literal, 1 + the deepest argument for a function application.
    struct Operands {
        VXVector<VXLWPtr<Node>> nodes;
        unsigned depth = 0;
    };

    XCode parseExpression(Operands& nodes, int minimum = 0);
    XCode parseAtom(Operands& nodes);
    // The operand kinds of parseAtom, each starting at the next token. Kept
    // apart so that each level of recursion carries only its own locals.
    XCode parseParenthesis(Operands& nodes);
    XCode parseNameOrCall(Operands& nodes);
    XCode parseUnary(Operands& nodes);
    XCode parseIdentifier(Operands& nodes);
    XCode parseConstant(Operands& nodes);
    // Adds the arguments up to (not including) the closing ')'; `depth`
    // receives the depth of the deepest argument.
    XCode parseFunctionArguments(FunctionNode* function, unsigned& depth);

    // Adds every node of `operands` to `function`.
    static XCode addArguments(FunctionNode* function, const Operands& operands);
    // `nodes` becomes the shared node equal to `function`, `depth` deep, or
    // the parse fails at `position` when that is deeper than MAX_DEPTH.
    XCode share(const VXLWPtr<FunctionNode>& function, unsigned depth, int position,
                Operands& nodes);
    // Position of the next token; the text length when none is left.
    int nextPosition() const;

    Lexer m_lexer;
    String m_context;
    VXVector<VXLWPtr<Node>> m_roots;
    NameResolver* m_resolver = nullptr;
    unsigned m_nesting = 0;  // parseExpression and parseAtom calls open now
};

}  // namespace VX::SysEvent
