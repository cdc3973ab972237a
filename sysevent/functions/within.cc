// WITHIN and its factory object.
#include "sysevent/functions/within.h"

#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

XCode WITHIN::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode WITHIN::compute(Event& result) {
    // Copies: reading the second argument may recompute nodes below both.
    const Event expr = getArgumentEvent(0);
    const Event period = getArgumentEvent(1);
    if (period.value.getDataType() != DT_TIME) return errToXCode(DST_ERR_VAL);
    if (period.value.subtype != DST_REL_TIME) return errToXCode(DST_ERR_NUM);
    Value truth = expr.value;
    if (XCode rc = truth.toBoolean(); rc.isErr()) return rc;
    // VX::Time subtracts with a borrow into the seconds and orders by signed
    // seconds, then nanoseconds.
    const VX::Time span = expr.end - expr.start;
    result.setTime(expr);
    result.value = Value(truth.data.boolean && span <= period.value.data.time);
    return XCode();
}

FunctionFactory::Factory<WITHIN> s_functionFactoryWITHIN(
    "WITHIN", "temp-expr,period",
    "Returns true if the temporal-expression argument evaluates to true within the specified "
    "time period");

void WITHIN::describeState(VXVector<FunctionState>& out) const {
    if (getChildCount() != 2) return;
    // The events as they stand: explaining must not bring a dirty argument
    // up to date.
    const Event& temporal = getChild(0)->peekLastEvent();
    out.push_back(FunctionState("span", Value(temporal.end - temporal.start, DST_REL_TIME)));
    out.push_back(FunctionState("period", getChild(1)->peekLastEvent().value));
}

}  // namespace VX::SysEvent
