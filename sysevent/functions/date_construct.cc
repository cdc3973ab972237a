// DATE, TIME, DATETIME and EPOCH, with their factory objects. DATE and TIME
// share one routine: from three numbers they build the calendar text and let
// VX::Clock validate it; from one calendar value they re-read it as the
// wanted kind.
#include "sysevent/functions/date_construct.h"

#include "host/runtime/clock.h"
#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

namespace {

// `format` takes the three numbers in argument order, unpadded.
XCode calendarValueOfParts(const FunctionNode& node, const char* format, DataSubType kind,
                           Value& result) {
    unsigned long long parts[3];
    for (unsigned i = 0; i < 3; ++i) {
        Value part = node.getArgument(i);
        if (XCode rc = part.toUIntStrict(); rc.isErr()) return rc;
        parts[i] = part.data.uint;
    }
    VX::Clock clock;
    if (clock.set(String::Formatted(format, parts[0], parts[1], parts[2]), 0).isErr()) {
        return failWith(DST_ERR_NUM);
    }
    result = Value(clock, kind);
    return result.correctTime();
}

XCode calendarValueOf(const Value& arg, DataSubType kind, Value& result) {
    if (arg.getDataType() != DT_TIME) return failWith(DST_ERR_VAL);
    if (arg.subtype == DST_REL_TIME) return failWith(DST_ERR_NUM);
    result = Value(VX::Clock(arg.data.time, 0), kind);
    return result.correctTime();
}

XCode oneOrThree(const FunctionNode& node) {
    return XCode::testExpression(node.getChildCount() == 1 || node.getChildCount() == 3);
}

}  // namespace

XCode DATE::verifyArguments() {
    return oneOrThree(*this);
}

XCode DATE::compute(Value& result) {
    if (getChildCount() == 1) return calendarValueOf(getArgument(0), DST_ABS_DATE, result);
    return calendarValueOfParts(*this, "%llu-%llu-%lluT00:00:00", DST_ABS_DATE, result);
}

XCode TIME::verifyArguments() {
    return oneOrThree(*this);
}

XCode TIME::compute(Value& result) {
    if (getChildCount() == 1) return calendarValueOf(getArgument(0), DST_ABS_TIME, result);
    return calendarValueOfParts(*this, "1970-01-01T%llu:%llu:%llu", DST_ABS_TIME, result);
}

XCode DATETIME::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode DATETIME::compute(Value& result) {
    Value date = getArgument(0);
    Value time = getArgument(1);
    if (date.subtype != DST_ABS_DATE_TIME && date.subtype != DST_ABS_DATE) {
        return failWith(DST_ERR_VAL);
    }
    if (time.subtype != DST_ABS_DATE_TIME && time.subtype != DST_ABS_TIME) {
        return failWith(DST_ERR_VAL);
    }
    if (XCode rc = date.toAbsDate(); rc.isErr()) return rc;
    if (XCode rc = time.toAbsTime(); rc.isErr()) return rc;
    result = Value(VX::Clock(date.data.time, 0), DST_ABS_DATE_TIME);
    result.data.time += time.data.time;
    return result.correctTime();
}

XCode EPOCH::verifyArguments() {
    return XCode::testExpression(getChildCount() == 0);
}

XCode EPOCH::compute(Value& result) {
    result = Value(VX::Time(0, 0), DST_ABS_DATE_TIME);
    return XCode();
}

FunctionFactory::Factory<DATE> s_functionFactoryDATE(
    "DATE", "year,month,day",
    "Builds a date value from the specified year, month, and day number arguments");
FunctionFactory::Factory<TIME> s_functionFactoryTIME(
    "TIME", "hour,minute,second",
    "Builds a time value from the specified hour, minute, and second number arguments");
FunctionFactory::Factory<DATETIME> s_functionFactoryDATETIME(
    "DATETIME", "date,time", "Builds a date/time value from the specified date and time arguments");
FunctionFactory::Factory<EPOCH> s_functionFactoryEPOCH("EPOCH", "",
                                                       "Returns the earliest date/time possible");

}  // namespace VX::SysEvent
