// The date-part functions SECOND, MINUTE, HOUR, DAY, WEEKDAY, MONTH and YEAR.
// Of a calendar value (zone 0) they give the calendar field; of a duration
// they give its seconds, minutes and hours within the day and its whole days,
// and refuse the calendar-only parts (WEEKDAY, MONTH, YEAR) with "#NUM!". A
// non-time argument gives "#VAL!". Results are unsigned integers.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// One routine for all seven; the subclasses only name their part.
class DatePartFunctionNode : public NonTemporalFunctionNode {
public:
    enum class Part { Second, Minute, Hour, Day, Weekday, Month, Year };

    DatePartFunctionNode(const String& functionName, const String& parameterText, Part part)
        : NonTemporalFunctionNode(functionName, parameterText), m_part(part) {}
    XCode verifyArguments() override;
    XCode compute(Value& result) override;

private:
    const Part m_part;
};

// SECOND(date-time): 0..59; of a duration its seconds modulo 60.
class SECOND : public DatePartFunctionNode {
public:
    SECOND(const String& functionName, const String& parameterText)
        : DatePartFunctionNode(functionName, parameterText, Part::Second) {}
};

// MINUTE(date-time): 0..59; of a duration its minutes modulo 60.
class MINUTE : public DatePartFunctionNode {
public:
    MINUTE(const String& functionName, const String& parameterText)
        : DatePartFunctionNode(functionName, parameterText, Part::Minute) {}
};

// HOUR(date-time): 0..23; of a duration its hours modulo 24.
class HOUR : public DatePartFunctionNode {
public:
    HOUR(const String& functionName, const String& parameterText)
        : DatePartFunctionNode(functionName, parameterText, Part::Hour) {}
};

// DAY(date-time): the day of the month from 1; of a duration its whole days.
class DAY : public DatePartFunctionNode {
public:
    DAY(const String& functionName, const String& parameterText)
        : DatePartFunctionNode(functionName, parameterText, Part::Day) {}
};

// WEEKDAY(date-time): Sunday 1 to Saturday 7.
class WEEKDAY : public DatePartFunctionNode {
public:
    WEEKDAY(const String& functionName, const String& parameterText)
        : DatePartFunctionNode(functionName, parameterText, Part::Weekday) {}
};

// MONTH(date-time): January 1 to December 12.
class MONTH : public DatePartFunctionNode {
public:
    MONTH(const String& functionName, const String& parameterText)
        : DatePartFunctionNode(functionName, parameterText, Part::Month) {}
};

// YEAR(date-time): the year, e.g. 2021.
class YEAR : public DatePartFunctionNode {
public:
    YEAR(const String& functionName, const String& parameterText)
        : DatePartFunctionNode(functionName, parameterText, Part::Year) {}
};

}  // namespace VX::SysEvent
