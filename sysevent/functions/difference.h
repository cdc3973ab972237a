// DIFF: the difference of two numbers, the distance between two calendar
// values of one kind, or a calendar value or duration shortened by a duration.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// DIFF(minuend,subtrahend).
// - Numbers: an unsigned difference when it is not negative; otherwise the
//   float difference (a negative float is the only way to a negative
//   number). Float differences are folded.
// - Times: calendar value minus duration keeps the calendar kind; two
//   calendar values of one kind give the duration between them; a duration
//   minus a duration is a duration. A time result never goes below zero: a
//   larger subtrahend gives zero. Other time pairs give "#NUM!", a time with
//   a non-time "#VAL!".
// - A boolean, empty or text minuend: "#VAL!".
class DIFF : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

}  // namespace VX::SysEvent
