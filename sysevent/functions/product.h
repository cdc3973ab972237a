// PRODUCT: the product of numbers, a duration scaled by whole numbers, or a
// text repeated.
#pragma once

#include <cstddef>

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// PRODUCT([factor]*). No argument: "#VAL!"; one argument: that argument, of
// any kind. Otherwise, by the kind of the running product:
// - numbers times numbers: unsigned integers multiply modulo 2^64; a float
//   anywhere makes the product a float, folded when whole and >= 0;
// - a whole number times a duration, or a duration times whole numbers:
//   the duration scaled by the number modulo 2^32; a calendar value, or a
//   fraction as factor, gives "#NUM!";
// - a text times a whole number n: the text repeated n times (0: the empty
//   text). A repetition longer than MAX_REPEATED_TEXT_LENGTH bytes gives
//   "#NUM!" instead of trying to allocate it;
// - a boolean or empty product, or a number times a text: "#VAL!".
class PRODUCT : public NonTemporalFunctionNode {
public:
    // The longest text that repetition builds. The count is a 64-bit number
    // from a formula, so an unbounded repetition could exhaust the memory of
    // the whole process; 1 MiB is far beyond any text the engine displays.
    static constexpr size_t MAX_REPEATED_TEXT_LENGTH = size_t{1} << 20;

    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode compute(Value& result) override;
};

}  // namespace VX::SysEvent
