// SUM, with its factory object.
#include "sysevent/functions/sum.h"

#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

namespace {

XCode addNumber(Value& acc, const Value& arg) {
    if (arg.getDataType() != DT_NUMBER) return failWith(DST_ERR_VAL);
    Value b = arg;
    if (XCode rc = Value::NORMALIZE_NUMBERS(acc, b); rc.isErr()) return rc;
    if (acc.subtype == DST_UINT) {
        acc.data.uint += b.data.uint;  // wraps modulo 2^64 by design
    } else {
        acc = foldedFloat(acc.data.flp + b.data.flp);
    }
    return XCode();
}

XCode addTime(Value& acc, const Value& arg) {
    if (arg.getDataType() != DT_TIME) return failWith(DST_ERR_VAL);
    if (acc.subtype != DST_REL_TIME) {
        // A calendar value moves by durations only.
        if (arg.subtype != DST_REL_TIME) return failWith(DST_ERR_NUM);
    } else {
        // A duration added to a calendar value takes that value's kind first.
        XCode rc;
        switch (arg.subtype) {
            case DST_ABS_DATE_TIME:
                rc = acc.toAbsDateTime();
                break;
            case DST_ABS_DATE:
                rc = acc.toAbsDate();
                break;
            case DST_ABS_TIME:
                rc = acc.toAbsTime();
                break;
            default:
                break;
        }
        if (rc.isErr()) return rc;
    }
    acc.data.time += arg.data.time;
    return acc.correctTime();
}

XCode addText(Value& acc, const Value& arg) {
    if (arg.getDataType() != DT_STRING) return failWith(DST_ERR_VAL);
    acc.data.string += arg.data.string;
    return XCode();
}

XCode addTo(Value& acc, const Value& arg) {
    switch (acc.getDataType()) {
        case DT_NUMBER:
            return addNumber(acc, arg);
        case DT_TIME:
            return addTime(acc, arg);
        case DT_STRING:
            return addText(acc, arg);
        default:
            return failWith(DST_ERR_VAL);
    }
}

}  // namespace

XCode SUM::compute(Value& result) {
    return accumulate(*this, result, addTo);
}

FunctionFactory::Factory<SUM> s_functionFactorySUM(
    "SUM", "[summand]*", "Computes the sum of numbers or concatenates strings");

}  // namespace VX::SysEvent
