// VX::ManualTime: the manual clock's state. ADVANCE lives with the event loop,
// which owns the timers it runs (event_loop.cc); switching the mode tells the
// loops, which carry their pending timers over to the new clock.
#include "host/runtime/manual_time.h"

#include <atomic>
#include <mutex>

#include "host/runtime/event_loop.h"

namespace VX {

namespace {

std::atomic<bool> g_enabled{false};
std::mutex g_mutex;
Time g_now;

}  // namespace

void ManualTime::ENABLE(Time start) {
    bool wasEnabled;
    Time oldNow;
    {
        std::lock_guard<std::mutex> guard(g_mutex);
        wasEnabled = g_enabled.load();
        oldNow = g_now;
        g_now = start;
        g_enabled.store(true);
    }
    VXEventLoop::REBASE_TIMERS(wasEnabled, oldNow, true, start);
}

void ManualTime::DISABLE() {
    bool wasEnabled;
    Time oldNow;
    {
        std::lock_guard<std::mutex> guard(g_mutex);
        wasEnabled = g_enabled.load();
        oldNow = g_now;
        g_enabled.store(false);
    }
    if (wasEnabled) VXEventLoop::REBASE_TIMERS(true, oldNow, false, Time());
}

bool ManualTime::IS_ENABLED() {
    return g_enabled.load(std::memory_order_relaxed);
}

Time ManualTime::CURRENT() {
    std::lock_guard<std::mutex> guard(g_mutex);
    return g_now;
}

void ManualTime::SET_CURRENT(Time t) {
    std::lock_guard<std::mutex> guard(g_mutex);
    g_now = t;
}

}  // namespace VX
