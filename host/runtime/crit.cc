// CRIT: the critical component, made on first use and never destroyed, and the
// engine's log sink.
//
// The engine loop's thread is not started here: it starts lazily on the first
// timer start or post outside manual time, so a process that never uses a
// timer has no extra thread. At exit the thread is asked to stop and joined
// (given up after a short wait, or at once when the exiting thread holds the
// engine lock, in which case the thread cannot run a handler any more).
#include "host/runtime/crit.h"

#include "host/runtime/event_loop.h"

namespace CRIT {

Critical::Critical() : loop_(new VXEventLoop(lock_)) {}

// A function-local static, not FAST_MUTEX: singletons made under FAST_MUTEX
// may reach the engine lock from their constructors.
Critical& INSTANCE() {
    static Critical* instance = new Critical();
    return *instance;
}

}  // namespace CRIT

namespace VX::SysEvent {

RTD::Monitor* MON = nullptr;

}  // namespace VX::SysEvent
