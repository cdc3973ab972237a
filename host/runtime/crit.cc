// CRIT: the critical component, made on first use and never destroyed, and the
// engine's log sink.
//
// The engine loop's thread is not started here: it starts lazily on the first
// timer start or post outside manual time, so a process that never uses a
// timer has no extra thread. At exit the thread is asked to stop and joined
// (given up after a short wait, or at once when the exiting thread holds the
// engine lock, in which case the thread cannot run a handler any more).
#include "host/runtime/crit.h"

#include <algorithm>

#include "host/runtime/event_loop.h"

namespace CRIT {

Critical::Critical() : loop_(new VXEventLoop(lock_, *this)) {}

// A function-local static, not FAST_MUTEX: singletons made under FAST_MUTEX
// may reach the engine lock from their constructors.
Critical* INSTANCE() {
    static Critical* instance = new Critical();
    return instance;
}

void Critical::setScheduler(VX::Scheduler* scheduler, VX::Time previousNow) {
    if (!scheduler) scheduler = &realScheduler_;
    const bool wasManual = getScheduler().isManual();
    scheduler_.store(scheduler, std::memory_order_release);
    // Under the list's mutex, so that no loop is destroyed meanwhile.
    std::lock_guard<std::mutex> guard(loopsMutex_);
    VXEventLoop::REBASE_TIMERS(loops_, wasManual, previousNow, scheduler->isManual(),
                               scheduler->now());
}

void Critical::addLoop(VXEventLoop* loop) {
    std::lock_guard<std::mutex> guard(loopsMutex_);
    loops_.push_back(loop);
}

void Critical::removeLoop(VXEventLoop* loop) {
    std::lock_guard<std::mutex> guard(loopsMutex_);
    std::erase(loops_, loop);
}

std::vector<VXEventLoop*> Critical::getLoops() {
    std::lock_guard<std::mutex> guard(loopsMutex_);
    return loops_;
}

}  // namespace CRIT

namespace VX::SysEvent {

RTD::Monitor* MON = nullptr;

}  // namespace VX::SysEvent
