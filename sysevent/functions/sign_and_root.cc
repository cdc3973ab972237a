// NEG, ABS, INT and SQRT, with their factory objects.
#include "sysevent/functions/sign_and_root.h"

#include <cmath>

#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

XCode NEG::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

XCode NEG::compute(Value& result) {
    Value x = getArgument(0);
    if (XCode rc = requireNumber(x); rc.isErr()) return rc;
    if (x.subtype == DST_UINT) {
        if (x.data.uint == 0) {
            result = x;
            return XCode();
        }
        if (XCode rc = x.toFloat(); rc.isErr()) return rc;
        result = Value(-x.data.flp);
        return XCode();
    }
    result = foldedFloat(-x.data.flp);
    return XCode();
}

XCode ABS::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

XCode ABS::compute(Value& result) {
    const Value& x = getArgument(0);
    if (XCode rc = requireNumber(x); rc.isErr()) return rc;
    result = x.subtype == DST_UINT ? x : foldedFloat(std::fabs(x.data.flp));
    return XCode();
}

XCode INT::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

XCode INT::compute(Value& result) {
    const Value& x = getArgument(0);
    if (XCode rc = requireNumber(x); rc.isErr()) return rc;
    result = x.subtype == DST_UINT ? x : foldedFloat(std::floor(x.data.flp));
    return XCode();
}

XCode SQRT::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

XCode SQRT::compute(Value& result) {
    Value x = getArgument(0);
    if (XCode rc = requireNumber(x); rc.isErr()) return rc;
    if (XCode rc = x.toFloat(); rc.isErr()) return rc;
    // Written so that NaN, which fails every comparison, is refused too.
    if (!(x.data.flp >= 0.0)) return failWith(DST_ERR_NUM);
    result = foldedFloat(std::sqrt(x.data.flp));
    return XCode();
}

FunctionFactory::Factory<NEG> s_functionFactoryNEG("NEG", "number", "Returns the negative number");
FunctionFactory::Factory<ABS> s_functionFactoryABS("ABS", "number",
                                                   "Returns the absolute value of a number");
FunctionFactory::Factory<INT> s_functionFactoryINT("INT", "number",
                                                   "Rounds a number down to the nearest integer");
FunctionFactory::Factory<SQRT> s_functionFactorySQRT("SQRT", "number",
                                                     "Returns the square root of a number");

}  // namespace VX::SysEvent
