// Typed accessors: read a named value straight into a native type, or write
// an unsigned integer, without handling Value objects. They sit on top of the
// Repository's static operations and take the engine lock through them.
#pragma once

#include "host/runtime/clock.h"
#include "host/runtime/string.h"
#include "host/runtime/time.h"
#include "host/runtime/xcode.h"

namespace VX::SysEvent {

// Each GET_VALUE reads `name` through Repository::GET_VALUE and stores its
// payload in `out`. A look-up failure is returned unchanged. A value of the
// wrong kind fails with the generic code and the text "INVALID DATA TYPE";
// nothing is converted, and `out` is left unchanged on every failure.
//
// bool: only booleans.
XCode GET_VALUE(const String& name, bool& out);
// Unsigned 64-bit: only unsigned integers (a float is refused, not rounded).
XCode GET_VALUE(const String& name, unsigned long long& out);
// double: only floats (an integer is refused).
XCode GET_VALUE(const String& name, double& out);
// VX::Clock: date-times, dates and times of day, as a calendar in zone 0.
XCode GET_VALUE(const String& name, VX::Clock& out);
// VX::Time: any time kind, durations included.
XCode GET_VALUE(const String& name, VX::Time& out);
// String: only text values.
XCode GET_VALUE(const String& name, String& out);

// Sets `name` to the unsigned integer `n` through Repository::SET_VALUE, so an
// unknown name becomes a new variable. Returns its result.
XCode SET_VALUE(const String& name, unsigned long long n);

}  // namespace VX::SysEvent
