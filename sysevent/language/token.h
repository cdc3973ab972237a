// Token and TokenType: the lexer's output. A token is a plain value record:
// its kind, the literal value it carries (names carry their text) and the
// index in the formula text of its first character.
//
// The TokenType numbers are fixed; the parser dispatches on them.
#pragma once

#include "sysevent/value/value.h"

namespace VX::SysEvent {

enum TokenType : int {
    TT_END = 0,
    TT_NAME = 1,    // value: the name's text (DST_STRING)
    TT_BOOL = 2,    // "true", "false"
    TT_NUMBER = 3,  // DST_UINT or DST_FLP; "inf" is +infinity
    TT_TIME = 4,    // date-time, date, time of day or duration
    TT_TEXT = 5,    // a quoted string
    TT_LPAREN = 6,
    TT_RPAREN = 7,
    TT_COMMA = 8,
    TT_NOT = 9,  // ! or "not"
    TT_BITNOT = 10,
    TT_OR = 11,   // || or "or"
    TT_XOR = 12,  // ^^ or "xor"
    TT_AND = 13,  // && or "and"
    TT_BITOR = 14,
    TT_BITXOR = 15,
    TT_BITAND = 16,
    TT_EQ = 17,
    TT_NEQ = 18,
    TT_LT = 19,
    TT_LE = 20,
    TT_GT = 21,
    TT_GE = 22,
    TT_BITLSHIFT = 23,
    TT_BITRSHIFT = 24,
    TT_PLUS = 25,
    TT_MINUS = 26,
    TT_STAR = 27,
    TT_SLASH = 28,
    TT_PERCENT = 29,
    TT_SEMICOLON = 30,
    TT_WITHIN = 31
};

struct Token {
    TokenType type = TT_END;
    // Value(DST_UNDEF) for every token that carries no literal.
    Value value;
    // Index of the token's first character; the text length for TT_END.
    int position = 0;

    Token() = default;
    Token(TokenType t, Value v, int pos) : type(t), value(std::move(v)), position(pos) {}
};

}  // namespace VX::SysEvent
