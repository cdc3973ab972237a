// COUNT and COUNTIF, with their factory objects.
#include "sysevent/functions/counting.h"

#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

XCode COUNT::compute(Value& result) {
    result = Value(static_cast<unsigned long long>(getChildCount()));
    return XCode();
}

XCode COUNTIF::compute(Value& result) {
    unsigned long long count = 0;
    for (unsigned i = 0; i < getChildCount(); ++i) {
        Value arg = getArgument(i);
        if (XCode rc = arg.toBoolean(); rc.isErr()) return rc;
        if (arg.data.boolean) ++count;
    }
    result = Value(count);
    return XCode();
}

FunctionFactory::Factory<COUNT> s_functionFactoryCOUNT("COUNT", "[argument]*",
                                                       "Returns the number of arguments");
FunctionFactory::Factory<COUNTIF> s_functionFactoryCOUNTIF(
    "COUNTIF", "[argument]*", "Returns the number of arguments that evaluate to true");

}  // namespace VX::SysEvent
