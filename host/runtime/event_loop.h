// VXEventLoop and _VXTimeoutEvent: the host's event loop with its timers and
// posted calls.
//
// A loop is bound to one lock (for the engine's loop: the engine lock). Every
// timer handler and every posted call runs on the loop's thread while that
// lock is held, so handlers may touch state guarded by the lock without taking
// it themselves.
//
// Two modes, chosen by the scheduler in force (VX::Scheduler, owned by CRIT;
// every loop runs on it):
// - Real time: each loop runs its own thread, started lazily by the first
//   timer start or post (a loop that is never used costs no thread). Timers
//   follow the monotonic clock.
// - Manual time: no thread runs anything. VX::ManualScheduler::advance runs,
//   through runOnePosted and runManualTimer, on the calling thread with the
//   loop's lock held, every posted call and every timer that falls due, in
//   due order (ties: start order), with the manual clock reading each timer's
//   own due time while its handler runs.
// Switching schedulers carries every pending timer over with its remaining
// delay (REBASE_TIMERS): to a manual clock at its reading + remaining, to the
// real clock at now + remaining on the monotonic clock, and from one manual
// reading to another the same way. Posted calls not yet run stay queued and
// run in the new mode. Nothing is stranded.
//
// Lock order: a loop's lock before its internal mutex; the internal mutex is
// never held while user code runs.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <vector>

#include "host/runtime/lock.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/time.h"
#include "host/runtime/xcode.h"

namespace EventPrio {
// Recorded with each timer for the host's diagnostics; it does not reorder
// timers (due time, then start order, decides). The engine uses NORMAL (1).
enum Type : int { LOW = 0, NORMAL = 1, HIGH = 2 };
}  // namespace EventPrio

class _VXTimeoutEvent;
namespace CRIT {
class Critical;
}
namespace VX {
class ManualScheduler;
}

class VXEventLoop {
public:
    // A loop whose handlers run under `lock`, on the engine's scheduler. The
    // lock must outlive the loop.
    explicit VXEventLoop(VXLock& lock);
    // The same on the scheduler of `critical` (which makes its own loop so).
    VXEventLoop(VXLock& lock, CRIT::Critical& critical);
    // Stops and joins the loop's thread. Every timer of the loop must have been
    // destroyed already, and the caller must not hold the loop's lock (the
    // thread may be waiting for it). Posted calls not yet run are dropped.
    ~VXEventLoop();
    VXEventLoop(const VXEventLoop&) = delete;
    VXEventLoop& operator=(const VXEventLoop&) = delete;

    VXLock& getLock() const { return lock_; }

    // Queues `call` to run once on the loop's thread, under the loop's lock,
    // after the calls posted before it. Under manual time it runs during the
    // next ManualTime::ADVANCE. Calls posted after the loop began shutting
    // down are dropped.
    void post(std::function<void()> call);

    // True on the thread that runs this loop's handlers right now (the loop's
    // own thread, or the thread inside ManualTime::ADVANCE).
    bool isHandlerThread() const;

    // The timers made on this loop and not yet destroyed, armed or not.
    unsigned getTimerCount() const { return timerCount_.load(std::memory_order_relaxed); }

    // Driving the loop under a manual clock (VX::ManualScheduler::advance).
    // A pending manual timer: its due time and start number.
    struct DueTimer {
        int64_t due;
        uint64_t seq;
        friend bool operator<(const DueTimer& a, const DueTimer& b) {
            return a.due != b.due ? a.due < b.due : a.seq < b.seq;
        }
    };
    // Runs the oldest posted call under the loop's lock; false when none.
    bool runOnePosted();
    // The earliest pending manual timer, if any.
    std::optional<DueTimer> nextManualTimer() const;
    // Runs `timer` under the loop's lock, with `clock` reading its due time,
    // if it is still the earliest one (a handler elsewhere may have changed
    // the queue meanwhile; the caller then simply looks again).
    void runManualTimer(const DueTimer& timer, VX::ManualScheduler& clock);

    // Manual clock readings as timer due times (nanoseconds) and back.
    static int64_t TO_TIMER_NANOS(VX::Time t);
    static VX::Time FROM_TIMER_NANOS(int64_t ns);

    // Called by CRIT when the scheduler changes (see the file comment), with
    // the list of loops held; not for other callers.
    static void REBASE_TIMERS(const std::vector<VXEventLoop*>& loops, bool wasManual,
                              VX::Time oldManualNow, bool manual, VX::Time newManualNow);

private:
    friend class _VXTimeoutEvent;

    // A pending timer: due time in nanoseconds (monotonic clock, or manual
    // clock as seconds * 10^9 + nanoseconds), then a process-wide start number.
    struct Entry {
        int64_t due;
        uint64_t seq;
        _VXTimeoutEvent* event;
        friend bool operator<(const Entry& a, const Entry& b) {
            return a.due != b.due ? a.due < b.due : a.seq < b.seq;
        }
    };
    using Queue = std::set<Entry>;

    // All of the following expect mutex_ held.
    void armLocked(_VXTimeoutEvent& event, unsigned ms, bool repeat);
    void disarmLocked(_VXTimeoutEvent& event);
    void ensureThreadLocked();
    bool hasRealWorkLocked() const;
    // Runs one posted call or one due timer of the given queue with mutex_
    // released around the user code (the loop's lock must be held). False
    // when there was nothing to run.
    bool runPostedLocked(std::unique_lock<std::mutex>& guard);
    void fireLocked(std::unique_lock<std::mutex>& guard, Queue& queue, bool manual, int64_t now);

    void threadMain();
    // Asks the thread to end and waits for it; at exit, gives up after a
    // while (or at once when the caller holds the loop's lock) and detaches.
    void shutDown(bool atExit);
    static void SHUT_DOWN_ALL_AT_EXIT();

    // True while the scheduler in force runs a manual clock.
    bool manual() const;

    VXLock& lock_;
    CRIT::Critical& critical_;
    std::atomic<unsigned> timerCount_{0};
    mutable std::mutex mutex_;
    std::condition_variable wake_;  // the thread: work arrived or mode changed
    std::condition_variable idle_;  // a handler finished, or the thread ended

    // Guarded by mutex_.
    Queue realQueue_;
    Queue manualQueue_;
    std::deque<std::function<void()>> posted_;
    const _VXTimeoutEvent* running_ = nullptr;  // the timer whose handler runs now
    std::thread::id handlerThread_;             // the thread running handlers now
    std::thread thread_;
    bool stopping_ = false;
    bool threadDone_ = false;
};

// A timer on a loop. Either create it with new and hold it through
// VXLWPtr<_VXTimeoutEvent> (it is reference counted with the loop's lock), or
// own it as a plain member and never hand out counted pointers to it.
class _VXTimeoutEvent : public VX::RefCounted {
public:
    using Function = void (*)(void*);

    // `function(argument)` runs on the loop's thread with the loop's lock held
    // at each expiry. The loop must outlive the timer.
    _VXTimeoutEvent(VXEventLoop& loop, EventPrio::Type prio, Function function, void* argument);
    // Cancels a pending expiry. When the handler is running on another thread
    // right now, waits until it has returned, so the handler never sees a freed
    // timer; a handler may destroy its own timer. Destroying a timer while
    // holding a lock that its handler takes (other than the loop's lock, which
    // the handler already holds) deadlocks.
    ~_VXTimeoutEvent() override;

    // Arms the timer to expire `ms` milliseconds from now, once or every `ms`
    // milliseconds (a repeating period of 0 counts as 1). Starting a running
    // timer re-arms it from now. Fails, leaving the timer stopped, when the
    // scheduler in force refuses the start or the loop's thread cannot start.
    XCode start(unsigned ms, bool repeat = false);
    // Disarms the timer; a pending expiry does not happen. Stopping a stopped
    // timer does nothing.
    void stop();
    // True from start() until the expiry of a one-shot timer, or until stop().
    bool isRunning() const;

    EventPrio::Type getPriority() const { return prio_; }
    VXEventLoop& getEventLoop() const { return loop_; }

private:
    friend class VXEventLoop;

    VXEventLoop& loop_;
    const EventPrio::Type prio_;
    const Function function_;
    void* const argument_;

    // Guarded by the loop's mutex_.
    bool armed_ = false;
    bool manual_ = false;  // which queue holds it while armed
    bool repeat_ = false;
    unsigned periodMs_ = 0;
    int64_t due_ = 0;
    uint64_t seq_ = 0;
};
