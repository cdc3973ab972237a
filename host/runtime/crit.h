// The critical component: owner of the engine's event loop and of the engine
// lock, the one lock that guards all engine state. Both live for the whole
// process. VX::SysEvent::MON is the engine's log sink (null: nothing is logged).
#pragma once

#include "host/runtime/lock.h"
#include "host/runtime/monitor.h"

class VXEventLoop;

namespace CRIT {

class Critical {
public:
    VXLock& getLock() { return lock_; }
    VXEventLoop& getEventLoop() { return *loop_; }

private:
    friend Critical& INSTANCE();
    Critical();
    VXLock lock_;
    VXEventLoop* loop_;  // never destroyed
};

Critical& INSTANCE();

}  // namespace CRIT

namespace VX::SysEvent {

inline VXLock& LOCK() {
    return CRIT::INSTANCE().getLock();
}
inline VXEventLoop& EVENT_LOOP() {
    return CRIT::INSTANCE().getEventLoop();
}

// Set by the host; read under the engine lock.
extern RTD::Monitor* MON;

}  // namespace VX::SysEvent
