// BOOL, ISERR and IDENTITY, with their factory objects.
#include "sysevent/functions/error_aware.h"

#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

XCode BOOL::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

XCode BOOL::compute(Value& result) {
    Value arg = getArgument(0);
    result = arg.toBoolean().isSuccess() ? arg : Value(false);
    return XCode();
}

XCode ISERR::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

XCode ISERR::compute(Value& result) {
    result = Value(getArgument(0).getDataType() == DT_ERROR);
    return XCode();
}

XCode IDENTITY::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

XCode IDENTITY::compute(Value& result) {
    result = getArgument(0);
    return XCode();
}

FunctionFactory::Factory<BOOL> s_functionFactoryBOOL(
    "BOOL", "param", "Converts the argument to a boolean value; errors are converted to false");
FunctionFactory::Factory<ISERR> s_functionFactoryISERR(
    "ISERR", "param", "Returns true if the argument evaluates to an error, false otherwise");
FunctionFactory::Factory<IDENTITY> s_functionFactoryIDENTITY("IDENTITY", "param",
                                                             "Returns the argument unmodified");

}  // namespace VX::SysEvent
