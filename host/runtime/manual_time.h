// VX::ManualTime: a test clock. While enabled, VX::Time::NOW, VX::Clock::NOW
// and every timer of the engine's event loop follow a manual clock that moves
// only when a test calls ADVANCE. Due timers then run on the calling thread,
// with the engine lock held, in due order, each with the clock reading its own
// due time. Tests never sleep on real time.
#pragma once

#include <cstdint>

#include "host/runtime/time.h"

namespace VX {

class ManualTime {
public:
    // Switches to the manual clock standing still at `start`. Timers pending
    // on the real clock are carried over with their remaining delay (counted
    // from `start`); so are manual timers when it was enabled already.
    static void ENABLE(Time start);
    // Moves the clock forward by `ms` milliseconds, running every posted call
    // of every event loop and every timer that falls due on the way (including
    // timers started by those handlers, and each period of a repeating
    // timer). Afterwards the clock reads the old time + `ms`. Does nothing
    // while the manual clock is off.
    static void ADVANCE(unsigned ms);
    // Back to the real clock. Pending manual timers are carried over to the
    // real clock with their remaining delay; queued posted calls run on the
    // loops' threads.
    static void DISABLE();

    static bool IS_ENABLED();
    static Time CURRENT();
    // Used by the event loop while it runs due timers: the clock reads `t`.
    static void SET_CURRENT(Time t);
};

}  // namespace VX
