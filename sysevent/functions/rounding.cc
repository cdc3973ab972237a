// CEILING, FLOOR, MROUND and ROUND, with their factory objects.
#include "sysevent/functions/rounding.h"

#include <cmath>

#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

namespace {

double roundUp(double d) {
    return std::ceil(d);
}
double roundDown(double d) {
    return std::floor(d);
}
double roundHalfAway(double d) {
    return std::round(d);
}

// The folded result r, or "#DIV/0!" when r is infinite or NaN.
XCode finiteResult(double r, Value& result) {
    if (!std::isfinite(r)) return failWith(DST_ERR_DIV0);
    result = foldedFloat(r);
    return XCode();
}

}  // namespace

XCode MultipleRoundingFunctionNode::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1 || getChildCount() == 2);
}

XCode MultipleRoundingFunctionNode::compute(Value& result) {
    Value x = getArgument(0);
    if (XCode rc = requireNumber(x); rc.isErr()) return rc;
    double multiple = 1.0;
    if (getChildCount() == 2) {
        Value m = getArgument(1);
        if (XCode rc = m.toFloat(); rc.isErr()) return rc;
        multiple = m.data.flp;
    }
    if (XCode rc = x.toFloat(); rc.isErr()) return rc;
    return finiteResult(m_rounding(x.data.flp / multiple) * multiple, result);
}

CEILING::CEILING(const String& functionName, const String& parameterText)
    : MultipleRoundingFunctionNode(functionName, parameterText, roundUp) {}

FLOOR::FLOOR(const String& functionName, const String& parameterText)
    : MultipleRoundingFunctionNode(functionName, parameterText, roundDown) {}

MROUND::MROUND(const String& functionName, const String& parameterText)
    : MultipleRoundingFunctionNode(functionName, parameterText, roundHalfAway) {}

XCode ROUND::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1 || getChildCount() == 2);
}

XCode ROUND::compute(Value& result) {
    Value x = getArgument(0);
    if (XCode rc = requireNumber(x); rc.isErr()) return rc;
    double scale = 1.0;
    if (getChildCount() == 2) {
        Value digits = getArgument(1);
        const bool negative = digits.subtype == DST_FLP && digits.data.flp < 0.0;
        if (negative) digits.data.flp = -digits.data.flp;
        if (XCode rc = digits.toUIntStrict(); rc.isErr()) return rc;
        const double power = std::pow(10.0, static_cast<double>(digits.data.uint));
        scale = negative ? 1.0 / power : power;
    }
    if (XCode rc = x.toFloat(); rc.isErr()) return rc;
    return finiteResult(std::round(x.data.flp * scale) / scale, result);
}

FunctionFactory::Factory<CEILING> s_functionFactoryCEILING(
    "CEILING", "number[,significance]",
    "Rounds a number up to the nearest integer or to the nearest multiple of significance");
FunctionFactory::Factory<FLOOR> s_functionFactoryFLOOR(
    "FLOOR", "number[,significance]",
    "Rounds a number down to the nearest integer or to the multiple of significance");
FunctionFactory::Factory<MROUND> s_functionFactoryMROUND(
    "MROUND", "number[,multiple]",
    "Returns a number rounded to the desired multiple; the default multiple is 1");
FunctionFactory::Factory<ROUND> s_functionFactoryROUND(
    "ROUND", "number[,digits]",
    "Returns a number rounded to the desired fractional digits; the default number of digits "
    "is 0");

}  // namespace VX::SysEvent
