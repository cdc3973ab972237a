// VX::ManualScheduler and the VX::ManualTime switch. Advancing drives every
// event loop on the engine's scheduler through the loops' manual-clock steps
// (event_loop.cc); switching puts a scheduler in force through CRIT, which
// carries the pending timers over.
#include "host/runtime/manual_time.h"

#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/event_loop.h"

namespace VX {

namespace {

constexpr int64_t NANOS_PER_MS = 1000000;

// The manual clock ENABLE(start) puts in force. Never destroyed: loops may
// still read it from static destructors.
ManualScheduler& processManualScheduler() {
    static ManualScheduler* scheduler = new ManualScheduler();
    return *scheduler;
}

}  // namespace

Time ManualScheduler::now() {
    std::lock_guard<std::mutex> guard(mutex_);
    return now_;
}

void ManualScheduler::set(Time t) {
    std::lock_guard<std::mutex> guard(mutex_);
    now_ = t;
}

void ManualScheduler::advance(unsigned ms) {
    const int64_t end =
        VXEventLoop::TO_TIMER_NANOS(now()) + static_cast<int64_t>(ms) * NANOS_PER_MS;
    CRIT::Critical* critical = CRIT::INSTANCE();
    for (;;) {
        // Loops are looked up afresh each round: handlers may make new ones.
        const std::vector<VXEventLoop*> loops = critical->getLoops();
        bool ranPosted = false;
        for (VXEventLoop* loop : loops) {
            if ((ranPosted = loop->runOnePosted())) break;
        }
        if (ranPosted) continue;
        // The earliest timer due by `end` over all loops runs next.
        VXEventLoop* earliest = nullptr;
        VXEventLoop::DueTimer earliestTimer{};
        for (VXEventLoop* loop : loops) {
            const std::optional<VXEventLoop::DueTimer> next = loop->nextManualTimer();
            if (next && next->due <= end && (!earliest || *next < earliestTimer)) {
                earliest = loop;
                earliestTimer = *next;
            }
        }
        if (!earliest) break;
        earliest->runManualTimer(earliestTimer, *this);
    }
    set(VXEventLoop::FROM_TIMER_NANOS(end));
}

void ManualTime::ENABLE(Time start) {
    ENABLE(processManualScheduler(), start);
}

void ManualTime::ENABLE(ManualScheduler& scheduler, Time start) {
    CRIT::Critical* critical = CRIT::INSTANCE();
    // Read before `start` is set: the scheduler may be the one in force.
    const Time previousNow = critical->getScheduler().now();
    scheduler.set(start);
    critical->setScheduler(&scheduler, previousNow);
}

void ManualTime::ADVANCE(unsigned ms) {
    if (auto* manual = dynamic_cast<ManualScheduler*>(&CRIT::INSTANCE()->getScheduler()))
        manual->advance(ms);
}

void ManualTime::DISABLE() {
    CRIT::Critical* critical = CRIT::INSTANCE();
    if (!critical->getScheduler().isManual()) return;
    critical->setScheduler(nullptr, critical->getScheduler().now());
}

bool ManualTime::IS_ENABLED() {
    return CRIT::INSTANCE()->getScheduler().isManual();
}

Time ManualTime::CURRENT() {
    return CRIT::INSTANCE()->getScheduler().now();
}

}  // namespace VX
