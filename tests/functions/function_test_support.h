// Test support for the function library: evaluating a formula end to end
// (lexer, parser, graph), applying a function from the factory to literal
// argument nodes (for arguments no formula can write: undefined and empty
// values), builders for expected values, and the check that compares kind
// and value.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <vector>

#include "host/runtime/string.h"
#include "sysevent/value/value.h"

inline void PrintTo(const String& s, std::ostream* os) {
    *os << '"' << s.str() << '"';
}

namespace VX::SysEvent {
// Subtype number and display text, with floats at full precision.
void PrintTo(const Value& v, std::ostream* os);
}  // namespace VX::SysEvent

namespace VX::SysEvent::FunctionTest {

// Expected values.
inline Value U(unsigned long long u) {
    return Value(u);
}
inline Value F(double d) {
    return Value(d);
}
inline Value B(bool b) {
    return Value(b);
}
inline Value S(const char* text) {
    return Value(text);
}
const Value kDiv0(DST_ERR_DIV0);
const Value kNA(DST_ERR_NA);
const Value kNum(DST_ERR_NUM);
const Value kVal(DST_ERR_VAL);
const Value kUndef(DST_UNDEF);
const Value kEmpty(DST_EMPTY);

Value Duration(int32_t seconds, int32_t nanoseconds = 0);
// From "YYYY-MM-DDThh:mm:ss" in zone 0.
Value DateTime(const char* text);
// From "YYYY-MM-DD": midnight of that day.
Value DateOf(const char* text);
// From "hh:mm:ss": that time of day on 1970-01-01.
Value TimeOfDay(const char* text);

// The value of `formula` (parsed without published names, so unknown names
// are unbound references reading "#N/A!"). A parse failure is a test
// failure and gives DST_UNDEF.
Value EVAL(const char* formula);
// The parse error of `formula`, or the empty text when it parses.
String PARSE_ERROR(const char* formula);
// The value of function `name` applied to literal nodes holding `args`.
Value APPLY(const char* name, const std::vector<Value>& args);

// Same kind and equal value (Value equality; a NaN float matches a NaN).
::testing::AssertionResult SAME(const Value& actual, const Value& expected);

struct Row {
    const char* formula;
    Value expected;
};

// Evaluates every row and checks it with SAME, naming the formula.
void CHECK_ROWS(const std::vector<Row>& rows);

}  // namespace VX::SysEvent::FunctionTest
