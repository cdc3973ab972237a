// The operator tables, indexed by token number for a constant-time look-up
// in the parser's inner loop.
#include "sysevent/language/operator_table.h"

#include <array>

namespace VX::SysEvent {

namespace {

constexpr BinaryOperator kBinary[] = {
    {TT_WITHIN, 0, "WITHIN"},
    {TT_SEMICOLON, 1, "SEQUENCE"},
    {TT_OR, 2, "OR"},
    {TT_XOR, 3, "XOR"},
    {TT_AND, 4, "AND"},
    {TT_BITOR, 5, "BITOR"},
    {TT_BITXOR, 6, "BITXOR"},
    {TT_BITAND, 7, "BITAND"},
    {TT_EQ, 8, "EQ"},
    {TT_NEQ, 8, "NEQ"},
    {TT_LT, 9, "LT"},
    {TT_LE, 9, "LE"},
    {TT_GT, 9, "GT"},
    {TT_GE, 9, "GE"},
    {TT_BITLSHIFT, 10, "BITLSHIFT"},
    {TT_BITRSHIFT, 10, "BITRSHIFT"},
    {TT_PLUS, 11, "SUM"},
    {TT_MINUS, 11, "DIFF"},
    {TT_STAR, 12, "PRODUCT"},
    {TT_SLASH, 12, "DIV"},
    {TT_PERCENT, 12, "MOD"},
};

constexpr int kTokenCount = TT_WITHIN + 1;

constexpr std::array<const BinaryOperator*, kTokenCount> makeIndex() {
    std::array<const BinaryOperator*, kTokenCount> index{};
    for (const BinaryOperator& op : kBinary) index[op.token] = &op;
    return index;
}

constexpr std::array<const BinaryOperator*, kTokenCount> kIndex = makeIndex();

}  // namespace

const BinaryOperator* FIND_BINARY_OPERATOR(TokenType token) {
    if (token < 0 || token >= kTokenCount) return nullptr;
    return kIndex[token];
}

const char* UNARY_OPERATOR_FUNCTION(TokenType token) {
    switch (token) {
        case TT_NOT:
            return "NOT";
        case TT_BITNOT:
            return "BITNOT";
        case TT_MINUS:
            return "NEG";
        default:
            return nullptr;
    }
}

}  // namespace VX::SysEvent
