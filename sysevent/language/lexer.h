// Lexer: splits formula text into tokens for the parser, reads numbers and
// times out of string values (Value::STRING_TO_NUMBER, STRING_TO_TIME), and
// turns name patterns into regular expressions (NAME_TO_REGEX).
//
// A Lexer lives on the stack of one parse or conversion and belongs to one
// thread. Each analyze() or start() starts afresh. analyze() keeps every
// token of the text; start() checks the text and then reads it on demand,
// one token ahead of the reader, so that a parser refusing a huge text early
// never stores or handles the tokens after the point of refusal.
#pragma once

#include "host/runtime/containers.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/language/token.h"

namespace VX::SysEvent {

class Lexer {
public:
    Lexer() = default;
    ~Lexer() = default;

    // Reads the whole text. On success tokens() holds every token in reading
    // order ending with TT_END, and the queue holds the same tokens ready to
    // be read. On failure returns the generic code with a message
    // "<number>: <what>" and leaves the queue empty; nothing after the first
    // error is read.
    XCode analyze(const String& text);
    // Checks the whole text as analyze() does and returns the same error.
    // On success the queue is read as by analyze(), but tokens() stays
    // empty; beyond a short text, the check keeps no token and the queue is
    // read on demand: it holds the next token only, and taking it reads the
    // one after. So a reader that stops early in a long text never pays for
    // the tokens it did not take.
    XCode start(const String& text);

    const String& text() const { return m_text; }
    const VXVector<Token>& tokens() const { return m_tokens; }

    // Queue reading. The next token is the queue's last element.
    // Whether the next token has type t; nothing is removed.
    bool peekIf(TokenType t) const { return !m_queue.empty() && m_queue.back().type == t; }
    // Removes the next token if it has type t; reports whether it did.
    bool popIf(TokenType t);
    // Removes the next token whatever its type; reports whether it had type
    // t. False when the queue is empty.
    bool pop(TokenType t);
    // Copy out the next token, without / with removing it. False when empty.
    bool peek(Token& out) const;
    bool pop(Token& out);
    // The next token in place (null when the queue is empty); valid until the
    // queue changes.
    const Token* next() const { return m_queue.empty() ? nullptr : &m_queue.back(); }

    // The anchored regular expression for a name pattern: '%' is a wildcard
    // for one or more characters other than '.' and ':', "{...}" embeds
    // regular-expression text ('%' there is a repetition, '*' a literal
    // asterisk). With prefixOnly the expression is not anchored at the end, so
    // it matches every name that begins with the pattern.
    static String NAME_TO_REGEX(const String& pattern, bool prefixOnly);

private:
    // Reads the token at pos (after white space), or TT_END at the end.
    XCode readToken(size_t& pos);
    void refill();
    XCode readName(size_t& pos);
    XCode readNumber(size_t& pos);
    XCode readDuration(size_t& pos);
    XCode readString(size_t& pos);
    XCode readSymbol(size_t& pos);
    void append(TokenType type, Value value, size_t position);

    String m_text;
    VXVector<Token> m_tokens;
    // The tokens in reverse order: reading removes from the end.
    VXVector<Token> m_queue;
    // Whole: analyze() fills the vectors; OnDemand: the queue holds the
    // token ahead of the reader; Check: tokens are read and dropped.
    enum class Mode { Whole, OnDemand, Check };
    Mode m_mode = Mode::Whole;
    size_t m_position = 0;  // where the next on-demand token starts
    bool m_finished = false;
};

}  // namespace VX::SysEvent
