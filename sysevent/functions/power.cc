// POWER, with its factory object.
#include "sysevent/functions/power.h"

#include <cmath>

#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

XCode POWER::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode POWER::compute(Value& result) {
    Value base = getArgument(0);
    Value exponent = getArgument(1);
    if (XCode rc = requireNumber(base); rc.isErr()) return rc;
    if (XCode rc = requireNumber(exponent); rc.isErr()) return rc;
    if (XCode rc = base.toFloat(); rc.isErr()) return rc;
    if (XCode rc = exponent.toFloat(); rc.isErr()) return rc;
    result = foldedFloat(std::pow(base.data.flp, exponent.data.flp));
    return XCode();
}

FunctionFactory::Factory<POWER> s_functionFactoryPOWER("POWER", "number,power",
                                                       "Raises the number to the power");

}  // namespace VX::SysEvent
