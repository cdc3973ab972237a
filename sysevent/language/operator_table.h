// The binary operators of the formula language: token, precedence and the
// function that implements each. A higher precedence binds tighter; every
// level is left-associative. Unary operators (!/not, ~, -) bind tighter than
// all of them and are handled by the parser directly.
#pragma once

#include "sysevent/language/token.h"

namespace VX::SysEvent {

struct BinaryOperator {
    TokenType token;
    int precedence;
    const char* function;
};

// The operator of `token`, or null when the token is no binary operator.
const BinaryOperator* FIND_BINARY_OPERATOR(TokenType token);

// The function of a unary operator token (TT_NOT, TT_BITNOT, TT_MINUS), or
// null for any other token.
const char* UNARY_OPERATOR_FUNCTION(TokenType token);

}  // namespace VX::SysEvent
