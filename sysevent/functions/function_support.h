// Small helpers shared by the built-in functions: the error codes they fail
// with, the number checks they start with, the folding of float results back
// into unsigned integers and the frame of the accumulating functions.
// Header-only; every function file uses them.
#pragma once

#include <utility>

#include "host/runtime/xcode.h"
#include "sysevent/graph/function_node.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

// The engine code of an error subtype; the graph turns it back into the
// error value of the node.
inline XCode failWith(DataSubType errorSubtype) {
    return errToXCode(errorSubtype);
}

// Success when `v` is a number (unsigned or float), "#VAL!" otherwise.
inline XCode requireNumber(const Value& v) {
    return v.getDataType() == DT_NUMBER ? XCode() : failWith(DST_ERR_VAL);
}

// Turns a float that is a non-negative whole number below 2^64 into the
// unsigned integer of the same value; leaves every other value (fractions,
// negatives, infinities, NaN) as it is. There are no negative integers, so
// this is how integral results of float arithmetic become integers again.
inline void fold(Value& v) {
    (void)v.toUIntStrict();
}

// The float `d`, folded.
inline Value foldedFloat(double d) {
    Value v(d);
    fold(v);
    return v;
}

// The frame of the accumulating functions (SUM, PRODUCT, BITAND, ...): no
// argument gives "#VAL!"; otherwise the first argument, unconverted and of any
// kind, starts the accumulator and step(accumulator, argument) folds in each
// further argument in order. The first failing step ends the computation with
// its code. A single argument is therefore the result as it is.
template <typename Step>
XCode accumulate(const FunctionNode& node, Value& result, Step step) {
    const unsigned n = node.getChildCount();
    if (n == 0) {
        result = Value(DST_ERR_VAL);
        return XCode();
    }
    Value acc = node.getArgument(0);
    for (unsigned i = 1; i < n; ++i) {
        if (XCode rc = step(acc, node.getArgument(i)); rc.isErr()) return rc;
    }
    result = std::move(acc);
    return XCode();
}

}  // namespace VX::SysEvent
