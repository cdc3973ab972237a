// The delay argument of the timer-driven functions (DEBOUNCE and its
// variants, DELAY, STABLE): a duration, read as whole milliseconds.
#pragma once

#include "host/runtime/xcode.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

// Reads `delay` into `ms`. Fails with the engine code of "#VAL!" unless the
// value is a time, and with that of "#NUM!" unless it is a duration
// (DST_REL_TIME) of 0 to 2^31 - 1 milliseconds; `ms` is then untouched.
// Sub-millisecond parts are dropped, so 1.9 ms counts as 1 ms.
XCode delayMilliseconds(const Value& delay, unsigned& ms);

}  // namespace VX::SysEvent
