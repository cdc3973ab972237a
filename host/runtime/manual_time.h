// VX::ManualScheduler: the engine's clock standing still until it is told to
// move. While it is in force (VX::ManualTime::ENABLE), VX::Time::NOW,
// VX::Clock::NOW and every timer of every event loop follow it: advance()
// runs, on the calling thread and under each loop's lock, every posted call
// and every timer falling due on the way, in due order, with the clock
// reading each timer's own due time while its handler runs. Tests never sleep
// on real time.
//
// A test that needs the clock to behave otherwise (refuse timer starts, for
// one) derives from ManualScheduler and installs its own instance.
#pragma once

#include <cstdint>
#include <mutex>

#include "host/runtime/scheduler.h"
#include "host/runtime/time.h"

namespace VX {

class ManualScheduler : public Scheduler {
public:
    explicit ManualScheduler(Time start = Time()) : now_(start) {}

    Time now() override;
    bool isManual() const override { return true; }

    // Sets the reading without running anything.
    void set(Time t);
    // Moves the clock forward by `ms` milliseconds, running every posted call
    // of every event loop and every timer that falls due on the way
    // (including timers started by those handlers, and each period of a
    // repeating timer). Afterwards the clock reads the old time + `ms`.
    void advance(unsigned ms);

private:
    std::mutex mutex_;
    Time now_;
};

// The manual clock of the process as a switch, for tests and the tool's
// --manual-time mode.
class ManualTime {
public:
    // Puts a manual clock standing still at `start` in force. Timers pending
    // on the real clock are carried over with their remaining delay (counted
    // from `start`); so are manual timers when it was in force already.
    static void ENABLE(Time start);
    // The same with the caller's scheduler, which must stay alive until the
    // next ENABLE or DISABLE.
    static void ENABLE(ManualScheduler& scheduler, Time start);
    // Advances the manual clock in force (see ManualScheduler::advance).
    // Does nothing while the real clock is in force.
    static void ADVANCE(unsigned ms);
    // Back to the real clock. Pending manual timers are carried over to the
    // real clock with their remaining delay; queued posted calls run on the
    // loops' threads.
    static void DISABLE();

    static bool IS_ENABLED();
    static Time CURRENT();
};

}  // namespace VX
