// VX::Scheduler: the clock the engine reads and the policy by which its
// timers run. The engine's critical component (CRIT) owns the one in force:
// VX::Time::NOW reads it, and every event loop asks it whether timers follow
// the real monotonic clock on the loop's own thread or a manual clock that
// only moves when told (VX::ManualScheduler, manual_time.h). Swapping it
// (CRIT::Critical::setScheduler) carries every pending timer over with its
// remaining delay.
#pragma once

#include "host/runtime/time.h"
#include "host/runtime/xcode.h"

namespace VX {

class Scheduler {
public:
    virtual ~Scheduler() = default;

    // The wall-clock time: what VX::Time::NOW returns.
    virtual Time now() = 0;
    // True when timers fall due on now() and run only when the scheduler
    // drives the loops (no loop thread runs); false for the real clock.
    virtual bool isManual() const = 0;
    // Asked before a timer is armed: a failure is returned by the start and
    // nothing is armed. The real scheduler admits every start (its own
    // failure, a loop thread that cannot start, is the loop's to report); a
    // host that cannot run timers refuses here.
    virtual XCode admitTimerStart() { return XCode(); }
};

// The real clock: CLOCK_REALTIME for now(), the monotonic clock for timers.
class RealScheduler : public Scheduler {
public:
    Time now() override;
    bool isManual() const override { return false; }
};

}  // namespace VX
