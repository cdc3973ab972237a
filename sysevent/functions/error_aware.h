// The three functions that see error and undefined arguments themselves
// (handlesErrorsManually): BOOL, ISERR and IDENTITY. Every other non-temporal
// function gets the first such argument's error as its result without being
// called. None of the three ever fails.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// BOOL(param): the argument's truth value; false whenever it has none (an
// error, an undefined or an empty value).
class BOOL : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    bool handlesErrorsManually() const override { return true; }
    XCode compute(Value& result) override;
};

// ISERR(param): true when the argument is one of the five error values;
// false for everything else, undefined included.
class ISERR : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    bool handlesErrorsManually() const override { return true; }
    XCode compute(Value& result) override;
};

// IDENTITY(param): the argument unchanged; an undefined argument stays
// undefined instead of becoming "#VAL!".
class IDENTITY : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    bool handlesErrorsManually() const override { return true; }
    XCode compute(Value& result) override;
};

}  // namespace VX::SysEvent
