// The calendar constructors DATE, TIME, DATETIME and EPOCH. They read no
// clock. Calendar values are in zone 0: a date is midnight of its day, a time
// of day a point on 1970-01-01.
#pragma once

#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// DATE(year,month,day): the date of three whole numbers ("#NUM!" for a
// fraction or a date the calendar refuses, "#VAL!" for a text or boolean).
// DATE(value): the date of a calendar value ("#VAL!" for a non-time, "#NUM!"
// for a duration).
class DATE : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// TIME(hour,minute,second): the time of day of three whole numbers.
// TIME(value): the time of day of a calendar value, moved to 1970-01-01.
// Failures as for DATE.
class TIME : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// DATETIME(date,time): the date of the first argument (a date or date-time)
// at the time of day of the second (a time of day or date-time); any other
// kind gives "#VAL!".
class DATETIME : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

// EPOCH(): the earliest date-time, 1970-01-01T00:00:00.
class EPOCH : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode verifyArguments() override;
    XCode compute(Value& result) override;
};

}  // namespace VX::SysEvent
