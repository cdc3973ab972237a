// The logical functions AND, OR, XOR, NOT and the selection IF. They read
// their arguments as truth values (Value::toBoolean: numbers true unless zero,
// texts true unless empty, times true unless zero) and never see an error or
// undefined argument: the graph screens those first.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// AND([bool]*): true when every argument is true. No argument: "#VAL!".
// Every argument is converted, even once the outcome is fixed, so a
// conversion failure anywhere is the result.
class AND : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode compute(Value& result) override;
};

// OR([bool]*): true when at least one argument is true. No argument: "#VAL!".
class OR : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode compute(Value& result) override;
};

// XOR([bool]*): true when an odd number of arguments are true. No argument:
// "#VAL!".
class XOR : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode compute(Value& result) override;
};

// NOT(bool): the negated truth value of its one argument.
class NOT : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// IF(condition,true-expr,false-expr): a copy of the second or the third
// argument, of whatever kind, by the truth of the first. All three are
// evaluated and screened, so an error in the branch not taken is still the
// result.
class IF : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

}  // namespace VX::SysEvent
