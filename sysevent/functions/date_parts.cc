// SECOND, MINUTE, HOUR, DAY, WEEKDAY, MONTH and YEAR, with their factory
// objects.
#include "sysevent/functions/date_parts.h"

#include <cstdint>
#include <ctime>

#include "host/runtime/clock.h"
#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

namespace {

using Part = DatePartFunctionNode::Part;

XCode partOfCalendarValue(const VX::Time& t, Part part, unsigned long long& out) {
    VX::Clock clock;
    if (clock.set(t, 0).isErr()) return failWith(DST_ERR_NUM);
    const struct tm fields = clock.getClockStruct();
    int field = 0;
    switch (part) {
        case Part::Second:
            field = fields.tm_sec;
            break;
        case Part::Minute:
            field = fields.tm_min;
            break;
        case Part::Hour:
            field = fields.tm_hour;
            break;
        case Part::Day:
            field = fields.tm_mday;
            break;
        case Part::Weekday:
            field = fields.tm_wday + 1;
            break;
        case Part::Month:
            field = fields.tm_mon + 1;
            break;
        case Part::Year:
            field = fields.tm_year + 1900;
            break;
    }
    out = static_cast<unsigned long long>(field);
    return XCode();
}

XCode partOfDuration(const VX::Time& t, Part part, unsigned long long& out) {
    // The seconds widened with their sign, then divided as unsigned: a
    // duration of 2^31 s or more (negative as a signed count) gives large
    // parts rather than an error.
    const unsigned long long s =
        static_cast<unsigned long long>(static_cast<int64_t>(t.getSeconds()));
    switch (part) {
        case Part::Second:
            out = s % 60;
            return XCode();
        case Part::Minute:
            out = s / 60 % 60;
            return XCode();
        case Part::Hour:
            out = s / 3600 % 24;
            return XCode();
        case Part::Day:
            out = s / 86400;
            return XCode();
        default:
            // A duration has no weekday, month or year.
            return failWith(DST_ERR_NUM);
    }
}

}  // namespace

XCode DatePartFunctionNode::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

XCode DatePartFunctionNode::compute(Value& result) {
    const Value& arg = getArgument(0);
    if (arg.getDataType() != DT_TIME) return failWith(DST_ERR_VAL);
    unsigned long long part = 0;
    XCode rc = arg.subtype == DST_REL_TIME ? partOfDuration(arg.data.time, m_part, part)
                                           : partOfCalendarValue(arg.data.time, m_part, part);
    if (rc.isErr()) return rc;
    result = Value(part);
    return XCode();
}

FunctionFactory::Factory<SECOND> s_functionFactorySECOND(
    "SECOND", "date-time", "Returns the seconds part of a date/time value");
FunctionFactory::Factory<MINUTE> s_functionFactoryMINUTE(
    "MINUTE", "date-time", "Returns the minutes part of a date/time value");
FunctionFactory::Factory<HOUR> s_functionFactoryHOUR("HOUR", "date-time",
                                                     "Returns the hours part of a date/time value");
FunctionFactory::Factory<DAY> s_functionFactoryDAY("DAY", "date-time",
                                                   "Returns the day of a date/time value");
FunctionFactory::Factory<WEEKDAY> s_functionFactoryWEEKDAY(
    "WEEKDAY", "date-time", "Returns the weekday of a date/time value (sunday=1)");
FunctionFactory::Factory<MONTH> s_functionFactoryMONTH("MONTH", "date-time",
                                                       "Returns the month of a date/time value");
FunctionFactory::Factory<YEAR> s_functionFactoryYEAR("YEAR", "date-time",
                                                     "Returns the year of a date/time value");

}  // namespace VX::SysEvent
