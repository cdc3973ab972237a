// POWER: a number raised to a power, in floats.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// POWER(number,power): pow of the two numbers, folded (POWER(2, 10) is the
// unsigned 1024). Infinities and NaN are results, not errors: POWER(0, -1)
// is the float infinity.
class POWER : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

}  // namespace VX::SysEvent
