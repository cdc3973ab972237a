// The divisions DIV, QUOTIENT and MOD. A division by zero, 0/0 and an
// overflowing float quotient all give "#DIV/0!".
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// DIV(dividend,divisor): the float quotient of two numbers, folded (DIV(6, 3)
// is the unsigned 2); or a duration divided by a whole number (modulo 2^32),
// still a duration. A calendar dividend gives "#NUM!"; a boolean, empty or
// text dividend, or a divisor that is not a number, "#VAL!".
class DIV : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// QUOTIENT(numerator,denominator): the quotient of two numbers truncated
// toward zero, folded (QUOTIENT(-7, 2) is the float -3.0).
class QUOTIENT : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// MOD(dividend,divisor): the remainder of the division of two whole,
// non-negative numbers; a fraction or a negative number gives "#NUM!".
class MOD : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

}  // namespace VX::SysEvent
