// The counters COUNT and COUNTIF. Both take any number of arguments and
// answer an unsigned integer (0 without arguments); an error or undefined
// argument still makes the result that error or "#VAL!", as for every
// function that does not handle errors itself.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// COUNT([argument]*): the number of arguments, whatever their values.
class COUNT : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode compute(Value& result) override;
};

// COUNTIF([argument]*): the number of arguments whose truth value is true; an
// argument without one (an empty value) fails the count.
class COUNTIF : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode compute(Value& result) override;
};

}  // namespace VX::SysEvent
