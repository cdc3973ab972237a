// The comparisons EQ, NEQ (value equality) and LT, LE, GT, GE (ordering).
//
// EQ and NEQ never fail: values of different kinds are simply unequal, and
// two numbers are first brought to one kind, so EQ(1, 1.0) is true; floats
// are equal within one machine epsilon. The ordering functions share one
// routine that refuses arguments of different kinds (or different time
// kinds) with "#VAL!" and compares floats exactly.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// EQ(param1,param2): true when the two arguments are equal.
class EQ : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// NEQ(param1,param2): true when the two arguments are not equal.
class NEQ : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// The base of LT, LE, GT and GE: two arguments of one kind, ordered. Booleans
// order false before true, times of one kind by seconds then nanoseconds,
// texts by strcmp (byte order up to the first NUL) and are equal only when
// all bytes are; two empty values are equal.
class OrderingFunctionNode : public NonTemporalFunctionNode {
public:
    enum class Relation { Less, LessOrEqual, Greater, GreaterOrEqual };

    OrderingFunctionNode(const String& functionName, const String& parameterText, Relation relation)
        : NonTemporalFunctionNode(functionName, parameterText), m_relation(relation) {}
    XCode verifyArguments() override;
    XCode compute(Value& result) override;

private:
    const Relation m_relation;
};

// LT(param1,param2): the first is less than the second.
class LT : public OrderingFunctionNode {
public:
    LT(const String& functionName, const String& parameterText)
        : OrderingFunctionNode(functionName, parameterText, Relation::Less) {}
};

// LE(param1,param2): the first is less than or equal to the second.
class LE : public OrderingFunctionNode {
public:
    LE(const String& functionName, const String& parameterText)
        : OrderingFunctionNode(functionName, parameterText, Relation::LessOrEqual) {}
};

// GT(param1,param2): the first is greater than the second.
class GT : public OrderingFunctionNode {
public:
    GT(const String& functionName, const String& parameterText)
        : OrderingFunctionNode(functionName, parameterText, Relation::Greater) {}
};

// GE(param1,param2): the first is greater than or equal to the second.
class GE : public OrderingFunctionNode {
public:
    GE(const String& functionName, const String& parameterText)
        : OrderingFunctionNode(functionName, parameterText, Relation::GreaterOrEqual) {}
};

}  // namespace VX::SysEvent
