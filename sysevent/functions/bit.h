// The bit functions BITAND, BITOR, BITXOR (over any number of arguments),
// BITNOT and the shifts BITLSHIFT, BITRSHIFT, all on unsigned 64-bit numbers.
// Floats take part only when they are whole and non-negative ("#NUM!"
// otherwise), except in BITNOT, which rounds them.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// The base of BITAND, BITOR and BITXOR. No argument: "#VAL!"; one argument:
// that argument unchanged, of any kind; more: every argument a number, whole
// and non-negative, combined bit by bit.
class BitwiseFunctionNode : public NonTemporalFunctionNode {
public:
    enum class Operation { And, Or, Xor };

    BitwiseFunctionNode(const String& functionName, const String& parameterText,
                        Operation operation)
        : NonTemporalFunctionNode(functionName, parameterText), m_operation(operation) {}
    XCode compute(Value& result) override;

private:
    const Operation m_operation;
};

// BITAND([number]*).
class BITAND : public BitwiseFunctionNode {
public:
    BITAND(const String& functionName, const String& parameterText)
        : BitwiseFunctionNode(functionName, parameterText, Operation::And) {}
};

// BITOR([number]*); registered with the parameter text "[number]".
class BITOR : public BitwiseFunctionNode {
public:
    BITOR(const String& functionName, const String& parameterText)
        : BitwiseFunctionNode(functionName, parameterText, Operation::Or) {}
};

// BITXOR([number]*).
class BITXOR : public BitwiseFunctionNode {
public:
    BITXOR(const String& functionName, const String& parameterText)
        : BitwiseFunctionNode(functionName, parameterText, Operation::Xor) {}
};

// BITNOT(number): the 64-bit complement; a float is first rounded to the
// nearest integer (ties to even), a negative one gives "#NUM!".
class BITNOT : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// The base of the shifts: number and count whole and non-negative. Counts of
// 64 and more shift every bit out and give 0.
class ShiftFunctionNode : public NonTemporalFunctionNode {
public:
    ShiftFunctionNode(const String& functionName, const String& parameterText, bool left)
        : NonTemporalFunctionNode(functionName, parameterText), m_left(left) {}
    XCode verifyArguments() override;
    XCode compute(Value& result) override;

private:
    const bool m_left;
};

// BITLSHIFT(number,bits): shifted left; bits above bit 63 are dropped.
class BITLSHIFT : public ShiftFunctionNode {
public:
    BITLSHIFT(const String& functionName, const String& parameterText)
        : ShiftFunctionNode(functionName, parameterText, true) {}
};

// BITRSHIFT(number,bits): shifted right, zeros coming in.
class BITRSHIFT : public ShiftFunctionNode {
public:
    BITRSHIFT(const String& functionName, const String& parameterText)
        : ShiftFunctionNode(functionName, parameterText, false) {}
};

}  // namespace VX::SysEvent
