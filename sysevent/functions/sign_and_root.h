// The one-argument number functions NEG, ABS, INT and SQRT. Each requires a
// number ("#VAL!" otherwise) and folds a float result that is a whole,
// non-negative number back into an unsigned integer.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// NEG(number): the negated number. The unsigned 0 stays 0; any other unsigned
// integer becomes a negative float; a float is negated and folded, so
// NEG(NEG(3)) is the unsigned 3.
class NEG : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// ABS(number): an unsigned integer unchanged, a float's absolute value folded.
class ABS : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// INT(number): rounded down (INT(-1.5) is the float -2.0, INT(2.7) the
// unsigned 2).
class INT : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// SQRT(number): the square root, folded; a negative number or NaN gives
// "#NUM!".
class SQRT : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

}  // namespace VX::SysEvent
