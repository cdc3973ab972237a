// WITHIN(temp-expr,period): true when the first argument is true and its
// event spans no more than the period (a duration); a span equal to the
// period counts as within. The result carries the first argument's times.
//
// Since a non-temporal function's event spans its arguments' last changes,
// WITHIN(AND(a,b), 5s) is true when a and b are both true and their last
// changes lie at most 5 seconds apart.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

class WITHIN : public FunctionNode {
public:
    using FunctionNode::FunctionNode;

    // Exactly two arguments.
    XCode verifyArguments() override;
    // Fails with "#VAL!" when the period is not a time, with "#NUM!" when it
    // is not a duration, and with the conversion's error when the first
    // argument cannot be read as a boolean.
    XCode compute(Event& result) override;
    // The span of the first argument and the period for explaining the node's value (see
    // FunctionNode).
    void describeState(VXVector<FunctionState>& out) const override;
};

}  // namespace VX::SysEvent
