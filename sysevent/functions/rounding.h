// The rounding functions CEILING, FLOOR, MROUND (to a multiple) and ROUND (to
// decimal digits). Results are folded; a result that is not finite (the way a
// multiple of 0 shows) gives "#DIV/0!".
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// The base of CEILING, FLOOR and MROUND: op(x / m) * m, with the multiple m
// 1 by default or the second argument as a float (of any kind that converts).
class MultipleRoundingFunctionNode : public NonTemporalFunctionNode {
public:
    using Rounding = double (*)(double);

    MultipleRoundingFunctionNode(const String& functionName, const String& parameterText,
                                 Rounding rounding)
        : NonTemporalFunctionNode(functionName, parameterText), m_rounding(rounding) {}
    XCode verifyArguments() override;
    XCode compute(Value& result) override;

private:
    const Rounding m_rounding;
};

// CEILING(number[,significance]): rounded up to a multiple.
class CEILING : public MultipleRoundingFunctionNode {
public:
    CEILING(const String& functionName, const String& parameterText);
};

// FLOOR(number[,significance]): rounded down to a multiple.
class FLOOR : public MultipleRoundingFunctionNode {
public:
    FLOOR(const String& functionName, const String& parameterText);
};

// MROUND(number[,multiple]): rounded to the nearest multiple, halves away
// from zero (MROUND(-2.5) is the float -3.0).
class MROUND : public MultipleRoundingFunctionNode {
public:
    MROUND(const String& functionName, const String& parameterText);
};

// ROUND(number[,digits]): rounded to `digits` fractional digits (0 by
// default), halves away from zero; negative digits round to tens, hundreds,
// ... Digits must be whole: a fraction gives "#NUM!", a non-number "#VAL!".
class ROUND : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

}  // namespace VX::SysEvent
