// SUM: the sum of numbers, the shift of a calendar value by durations, or
// the concatenation of texts.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// SUM([summand]*). No argument: "#VAL!"; one argument: that argument, of any
// kind. Otherwise, by the kind of the running sum:
// - numbers: unsigned integers add modulo 2^64; a float anywhere makes the
//   sum a float, folded back to an integer when it is whole and >= 0;
// - a calendar value plus durations moves it (a date stays at midnight, a
//   time of day on 1970-01-01); a duration plus a calendar value becomes that
//   kind (the duration first cut to it); two calendar values give "#NUM!";
// - texts concatenate;
// - any mix of kinds, a boolean or an empty value with anything: "#VAL!".
class SUM : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode compute(Value& result) override;
};

}  // namespace VX::SysEvent
