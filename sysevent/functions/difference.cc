// DIFF, with its factory object.
#include "sysevent/functions/difference.h"

#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

namespace {

XCode subtractNumbers(Value a, Value b, Value& result) {
    if (XCode rc = requireNumber(b); rc.isErr()) return rc;
    if (XCode rc = Value::NORMALIZE_NUMBERS(a, b); rc.isErr()) return rc;
    if (a.subtype == DST_UINT) {
        if (b.data.uint <= a.data.uint) {
            result = Value(a.data.uint - b.data.uint);
            return XCode();
        }
        if (XCode rc = a.toFloat(); rc.isErr()) return rc;
        if (XCode rc = b.toFloat(); rc.isErr()) return rc;
        result = Value(a.data.flp - b.data.flp);  // negative: nothing to fold
        return XCode();
    }
    result = foldedFloat(a.data.flp - b.data.flp);
    return XCode();
}

XCode subtractTimes(const Value& a, const Value& b, Value& result) {
    if (b.getDataType() != DT_TIME) return failWith(DST_ERR_VAL);
    Value r;
    if (a.subtype != DST_REL_TIME) {
        if (b.subtype == DST_REL_TIME) {
            r = a;
        } else if (b.subtype == a.subtype) {
            r = Value(a.data.time, DST_REL_TIME);  // the distance between the two
        } else {
            return failWith(DST_ERR_NUM);
        }
    } else {
        if (b.subtype != DST_REL_TIME) return failWith(DST_ERR_NUM);
        r = a;
    }
    // Times do not go below zero: what would be negative is clamped to zero.
    if (r.data.time < b.data.time) {
        r.data.time = VX::Time();
    } else {
        r.data.time -= b.data.time;
    }
    if (XCode rc = r.correctTime(); rc.isErr()) return rc;
    result = r;
    return XCode();
}

}  // namespace

XCode DIFF::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode DIFF::compute(Value& result) {
    const Value& a = getArgument(0);
    const Value& b = getArgument(1);
    switch (a.getDataType()) {
        case DT_NUMBER:
            return subtractNumbers(a, b, result);
        case DT_TIME:
            return subtractTimes(a, b, result);
        default:
            return failWith(DST_ERR_VAL);
    }
}

FunctionFactory::Factory<DIFF> s_functionFactoryDIFF("DIFF", "minuend,subtrahend",
                                                     "Subtracts the subtrahend from the minuend");

}  // namespace VX::SysEvent
