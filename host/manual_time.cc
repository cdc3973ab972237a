// VX::ManualTime: the manual clock's state. ADVANCE lives with the event loop,
// which owns the timers it runs (event_loop.cc).
#include "host/manual_time.h"

#include <atomic>
#include <mutex>

namespace VX {

namespace {

std::atomic<bool> g_enabled{false};
std::mutex g_mutex;
Time g_now;

}  // namespace

void ManualTime::ENABLE(Time start) {
    {
        std::lock_guard<std::mutex> guard(g_mutex);
        g_now = start;
    }
    g_enabled.store(true);
}

void ManualTime::DISABLE() { g_enabled.store(false); }

bool ManualTime::IS_ENABLED() { return g_enabled.load(std::memory_order_relaxed); }

Time ManualTime::CURRENT() {
    std::lock_guard<std::mutex> guard(g_mutex);
    return g_now;
}

void ManualTime::SET_CURRENT(Time t) {
    std::lock_guard<std::mutex> guard(g_mutex);
    g_now = t;
}

}  // namespace VX
