// VXEventLoop and _VXTimeoutEvent, including the steps by which a manual
// clock drives a loop.
#include "host/runtime/event_loop.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <utility>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/log.h"
#include "host/runtime/manual_time.h"

namespace {

constexpr int64_t NANOS_PER_MS = 1000000;
constexpr int64_t NANOS_PER_S = 1000000000;

// Start numbers order timers that fall due together, across all loops.
std::atomic<uint64_t> g_startSeq{0};

int64_t steadyNow() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

}  // namespace

int64_t VXEventLoop::TO_TIMER_NANOS(VX::Time t) {
    return static_cast<int64_t>(t.getSeconds()) * NANOS_PER_S + t.getNanoseconds();
}

VX::Time VXEventLoop::FROM_TIMER_NANOS(int64_t ns) {
    int64_t s = ns / NANOS_PER_S;
    int64_t rest = ns % NANOS_PER_S;
    if (rest < 0) {
        rest += NANOS_PER_S;
        --s;
    }
    return VX::Time(static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(s))),
                    static_cast<int32_t>(rest));
}

// ---------------------------------------------------------------------------
// VXEventLoop

VXEventLoop::VXEventLoop(VXLock& lock) : VXEventLoop(lock, *CRIT::INSTANCE()) {}

VXEventLoop::VXEventLoop(VXLock& lock, CRIT::Critical& critical)
    : lock_(lock), critical_(critical) {
    critical_.addLoop(this);
}

VXEventLoop::~VXEventLoop() {
    critical_.removeLoop(this);
    shutDown(false);
    std::deque<std::function<void()>> dropped;
    {
        std::lock_guard<std::mutex> guard(mutex_);
        dropped.swap(posted_);
    }
    // `dropped` dies here, outside mutex_: the calls may hold references whose
    // release reaches this loop again.
}

void VXEventLoop::post(std::function<void()> call) {
    std::unique_lock<std::mutex> guard(mutex_);
    if (stopping_) {
        guard.unlock();
        return;  // `call` is destroyed outside the mutex
    }
    posted_.push_back(std::move(call));
    if (!manual()) ensureThreadLocked();
    wake_.notify_all();
}

bool VXEventLoop::manual() const {
    return critical_.getScheduler().isManual();
}

bool VXEventLoop::isHandlerThread() const {
    std::lock_guard<std::mutex> guard(mutex_);
    const std::thread::id me = std::this_thread::get_id();
    return me == handlerThread_ || me == thread_.get_id();
}

void VXEventLoop::armLocked(_VXTimeoutEvent& event, unsigned ms, bool repeat) {
    disarmLocked(event);
    event.repeat_ = repeat;
    event.periodMs_ = repeat && ms == 0 ? 1 : ms;
    event.seq_ = ++g_startSeq;
    event.armed_ = true;
    event.manual_ = manual();
    const int64_t delay = static_cast<int64_t>(ms) * NANOS_PER_MS;
    if (event.manual_) {
        event.due_ = TO_TIMER_NANOS(critical_.getScheduler().now()) + delay;
        manualQueue_.insert({event.due_, event.seq_, &event});
    } else {
        event.due_ = steadyNow() + delay;
        auto it = realQueue_.insert({event.due_, event.seq_, &event}).first;
        if (it == realQueue_.begin()) wake_.notify_all();
    }
}

void VXEventLoop::disarmLocked(_VXTimeoutEvent& event) {
    if (!event.armed_) return;
    (event.manual_ ? manualQueue_ : realQueue_).erase({event.due_, event.seq_, &event});
    event.armed_ = false;
}

void VXEventLoop::ensureThreadLocked() {
    if (thread_.joinable() || stopping_) return;
    threadDone_ = false;
    try {
        thread_ = std::thread([this] { threadMain(); });
    } catch (...) {
        return;  // reported by the caller through thread_ not being joinable
    }
    static std::once_flag once;
    std::call_once(once, [] { std::atexit(&VXEventLoop::SHUT_DOWN_ALL_AT_EXIT); });
}

bool VXEventLoop::hasRealWorkLocked() const {
    return !posted_.empty() || (!realQueue_.empty() && realQueue_.begin()->due <= steadyNow());
}

bool VXEventLoop::runPostedLocked(std::unique_lock<std::mutex>& guard) {
    if (posted_.empty()) return false;
    std::function<void()> call = std::move(posted_.front());
    posted_.pop_front();
    handlerThread_ = std::this_thread::get_id();
    guard.unlock();
    // A posted call is client code (a queued Observer callback, say): what it
    // throws is reported and ends here, so that the loop's thread lives on
    // and the calls queued after it still run.
    try {
        call();
    } catch (const std::exception& e) {
        SYSEVENT_LOG(0, "[event loop] Queued callback failed: %s", e.what());
    } catch (...) {
        SYSEVENT_LOG(0, "[event loop] Queued callback failed");
    }
    call = nullptr;  // its captures are released outside mutex_
    guard.lock();
    handlerThread_ = std::thread::id();
    return true;
}

void VXEventLoop::fireLocked(std::unique_lock<std::mutex>& guard, Queue& queue, bool manual,
                             int64_t now) {
    const Entry entry = *queue.begin();
    queue.erase(queue.begin());
    _VXTimeoutEvent* event = entry.event;
    if (event->repeat_) {
        // The next period counts from this due time, so a repeating timer keeps
        // its phase. A real-time loop that fell behind by a whole period skips
        // the missed expiries instead of running them in a burst.
        int64_t next = entry.due + static_cast<int64_t>(event->periodMs_) * NANOS_PER_MS;
        if (!manual && next <= now)
            next = now + static_cast<int64_t>(event->periodMs_) * NANOS_PER_MS;
        event->due_ = next;
        queue.insert({next, event->seq_, event});
    } else {
        event->armed_ = false;
    }
    running_ = event;
    handlerThread_ = std::this_thread::get_id();
    const _VXTimeoutEvent::Function function = event->function_;
    void* const argument = event->argument_;
    guard.unlock();
    function(argument);  // may stop, restart or destroy `event`
    guard.lock();
    running_ = nullptr;
    handlerThread_ = std::thread::id();
    idle_.notify_all();
}

void VXEventLoop::threadMain() {
    std::unique_lock<std::mutex> guard(mutex_);
    while (!stopping_) {
        if (!manual() && hasRealWorkLocked()) {
            guard.unlock();
            {
                VXAutoLock held(lock_);
                guard.lock();
                // The mode may have switched while we waited for the lock;
                // under manual time only ADVANCE runs handlers.
                while (!stopping_ && !manual()) {
                    if (runPostedLocked(guard)) continue;
                    const int64_t now = steadyNow();
                    if (realQueue_.empty() || realQueue_.begin()->due > now) break;
                    fireLocked(guard, realQueue_, false, now);
                }
                guard.unlock();
            }
            guard.lock();
            continue;
        }
        if (manual() || realQueue_.empty()) {
            wake_.wait(guard);
        } else {
            const auto due = std::chrono::steady_clock::time_point(
                std::chrono::nanoseconds(realQueue_.begin()->due));
            wake_.wait_until(guard, due);
        }
    }
    threadDone_ = true;
    idle_.notify_all();
}

void VXEventLoop::shutDown(bool atExit) {
    std::unique_lock<std::mutex> guard(mutex_);
    stopping_ = true;
    wake_.notify_all();
    if (!thread_.joinable()) return;
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
        return;
    }
    if (atExit) {
        // The thread cannot finish a handler while we hold the loop's lock, and
        // a handler stuck elsewhere must not hold the process up for ever.
        if (lock_.isHeldByMe() ||
            !idle_.wait_for(guard, std::chrono::seconds(2), [this] { return threadDone_; })) {
            thread_.detach();
            return;
        }
    } else {
        idle_.wait(guard, [this] { return threadDone_; });
    }
    std::thread thread = std::move(thread_);
    guard.unlock();
    thread.join();
}

void VXEventLoop::SHUT_DOWN_ALL_AT_EXIT() {
    for (VXEventLoop* loop : CRIT::INSTANCE()->getLoops()) loop->shutDown(true);
}

void VXEventLoop::REBASE_TIMERS(const std::vector<VXEventLoop*>& loops, bool wasManual,
                                VX::Time oldManualNow, bool manual, VX::Time newManualNow) {
    if (!wasManual && !manual) return;
    const int64_t oldBase = TO_TIMER_NANOS(oldManualNow);
    const int64_t newBase = TO_TIMER_NANOS(newManualNow);
    for (VXEventLoop* loop : loops) {
        std::unique_lock<std::mutex> guard(loop->mutex_);
        const int64_t steady = steadyNow();
        Queue target;
        auto carry = [&](const Queue& from, int64_t fromBase, int64_t toBase) {
            for (const Entry& e : from) {
                const int64_t remaining = e.due > fromBase ? e.due - fromBase : 0;
                e.event->due_ = toBase + remaining;
                e.event->manual_ = manual;
                target.insert({e.event->due_, e.seq, e.event});
            }
        };
        if (manual) {
            carry(loop->realQueue_, steady, newBase);
            if (wasManual) carry(loop->manualQueue_, oldBase, newBase);
            loop->realQueue_.clear();
            loop->manualQueue_.swap(target);
        } else {
            target = loop->realQueue_;
            carry(loop->manualQueue_, oldBase, steady);
            loop->manualQueue_.clear();
            loop->realQueue_.swap(target);
            if (!loop->realQueue_.empty() || !loop->posted_.empty()) loop->ensureThreadLocked();
        }
        loop->wake_.notify_all();
    }
}

// ---------------------------------------------------------------------------
// _VXTimeoutEvent

_VXTimeoutEvent::_VXTimeoutEvent(VXEventLoop& loop, EventPrio::Type prio, Function function,
                                 void* argument)
    : VX::RefCounted(&loop.getLock()),
      loop_(loop),
      prio_(prio),
      function_(function),
      argument_(argument) {
    ++loop_.timerCount_;
}

_VXTimeoutEvent::~_VXTimeoutEvent() {
    --loop_.timerCount_;
    std::unique_lock<std::mutex> guard(loop_.mutex_);
    loop_.disarmLocked(*this);
    const std::thread::id me = std::this_thread::get_id();
    loop_.idle_.wait(guard, [&] { return loop_.running_ != this || loop_.handlerThread_ == me; });
}

XCode _VXTimeoutEvent::start(unsigned ms, bool repeat) {
    if (XCode refused = loop_.critical_.getScheduler().admitTimerStart(); refused.isErr()) {
        stop();
        return refused;
    }
    std::lock_guard<std::mutex> guard(loop_.mutex_);
    loop_.armLocked(*this, ms, repeat);
    if (!manual_) {
        loop_.ensureThreadLocked();
        if (!loop_.thread_.joinable()) {
            loop_.disarmLocked(*this);
            return XCode::Failure("COULD NOT START EVENT LOOP THREAD");
        }
    }
    return XCode();
}

void _VXTimeoutEvent::stop() {
    std::lock_guard<std::mutex> guard(loop_.mutex_);
    loop_.disarmLocked(*this);
}

bool _VXTimeoutEvent::isRunning() const {
    std::lock_guard<std::mutex> guard(loop_.mutex_);
    return armed_;
}

// ---------------------------------------------------------------------------
// Driving under a manual clock

bool VXEventLoop::runOnePosted() {
    {
        std::lock_guard<std::mutex> guard(mutex_);
        if (posted_.empty()) return false;
    }
    VXAutoLock held(lock_);
    std::unique_lock<std::mutex> guard(mutex_);
    return runPostedLocked(guard);
}

std::optional<VXEventLoop::DueTimer> VXEventLoop::nextManualTimer() const {
    std::lock_guard<std::mutex> guard(mutex_);
    if (manualQueue_.empty()) return std::nullopt;
    const Entry& head = *manualQueue_.begin();
    return DueTimer{head.due, head.seq};
}

void VXEventLoop::runManualTimer(const DueTimer& timer, VX::ManualScheduler& clock) {
    VXAutoLock held(lock_);
    std::unique_lock<std::mutex> guard(mutex_);
    if (manualQueue_.empty()) return;
    const Entry& head = *manualQueue_.begin();
    if (head.seq != timer.seq || head.due != timer.due) return;
    clock.set(FROM_TIMER_NANOS(head.due));
    fireLocked(guard, manualQueue_, true, head.due);
}
