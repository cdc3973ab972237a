// The critical component: owner of the engine's event loop, of the engine
// lock (the one lock that guards all engine state) and of the clock and
// timer policy in force (VX::Scheduler), together with the event loops that
// run on it. All live for the whole process. VX::SysEvent::MON is the
// engine's log sink (null: nothing is logged).
#pragma once

#include <atomic>
#include <mutex>
#include <vector>

#include "host/runtime/lock.h"
#include "host/runtime/monitor.h"
#include "host/runtime/scheduler.h"

class VXEventLoop;

namespace CRIT {

class Critical {
public:
    VXLock& getLock() { return lock_; }
    VXEventLoop& getEventLoop() { return *loop_; }

    // The scheduler in force: the real one unless another was set.
    VX::Scheduler& getScheduler() { return *scheduler_.load(std::memory_order_acquire); }
    // Puts `scheduler` in force (null: the real one) and carries every
    // pending timer of every loop over to it with its remaining delay. The
    // scheduler must stay alive until it is replaced. `previousNow` is what
    // the scheduler being replaced read at the switch (a manual one may have
    // been moved already by the caller).
    void setScheduler(VX::Scheduler* scheduler, VX::Time previousNow);

    // The event loops that run on this scheduler, in creation order. Every
    // loop joins at construction and leaves at destruction.
    void addLoop(VXEventLoop* loop);
    void removeLoop(VXEventLoop* loop);
    std::vector<VXEventLoop*> getLoops();

private:
    friend Critical* INSTANCE();
    Critical();

    VXLock lock_;
    VX::RealScheduler realScheduler_;
    std::atomic<VX::Scheduler*> scheduler_{&realScheduler_};
    std::mutex loopsMutex_;  // guards loops_; taken before a loop's internal mutex
    std::vector<VXEventLoop*> loops_;
    VXEventLoop* loop_;  // never destroyed
};

Critical* INSTANCE();

}  // namespace CRIT

namespace VX::SysEvent {

inline VXLock& LOCK() {
    return CRIT::INSTANCE()->getLock();
}
inline VXEventLoop& EVENT_LOOP() {
    return CRIT::INSTANCE()->getEventLoop();
}

// Set by the host; read under the engine lock.
extern RTD::Monitor* MON;

}  // namespace VX::SysEvent
