// VXEventTimeout<T>: one timer of a timer-driven function node. It owns a
// _VXTimeoutEvent on the engine's event loop and calls a member function of
// its owner (always T::onTimeout) when that event expires. The expiry runs on
// the loop's thread with the engine lock held, so the member function may
// touch the graph directly.
//
// Lifetime: the wrapper lives inside its owner (a function node, or a DELAY
// record) and must not move, since the event carries its address. Destroying
// it destroys the event, which cancels an expiry that has not happened yet:
// an owner that is gone is never called.
#pragma once

#include "host/runtime/crit.h"
#include "host/runtime/event_loop.h"
#include "host/runtime/time.h"
#include "host/runtime/xcode.h"

namespace VX::SysEvent {

template <typename T>
class VXEventTimeout {
public:
    using Method = void (T::*)();

    // A stopped timer that will call (target->*method)() on expiry. `target`
    // must outlive the wrapper.
    explicit VXEventTimeout(T* target, Method method = &T::onTimeout)
        : m_pTarget(target),
          m_method(method),
          m_event(EVENT_LOOP(), EventPrio::NORMAL, &VXEventTimeout::HANDLE_EVENT, this) {}
    // Destroys the event: a pending expiry never happens.
    ~VXEventTimeout() = default;
    VXEventTimeout(const VXEventTimeout&) = delete;
    VXEventTimeout& operator=(const VXEventTimeout&) = delete;

    // Arms the timer `ms` milliseconds from now; a running timer is re-armed,
    // so the delay counts from this call. The running flag is set first and
    // cleared again when the start fails (the engine's scheduler may refuse
    // it, or the loop's thread may not start), so it never claims an expiry
    // that will not come.
    XCode start(unsigned ms, bool repeat = false) {
        m_running = true;
        m_repeat = repeat;
        m_due = VX::Time::NOW() + VX::Time::fromMilliseconds(ms);
        XCode rc = m_event.start(ms, repeat);
        if (rc.isErr()) m_running = false;
        return rc;
    }

    // Disarms the timer; a pending expiry does not happen.
    void stop() {
        m_event.stop();
        m_running = false;
    }

    // True from start() until a one-shot expiry or stop().
    bool isRunning() const { return m_running; }
    // When the last start falls due (engine clock); meaningful while running.
    const VX::Time& getDueTime() const { return m_due; }

    // The event's function. Nothing of the wrapper is touched after the call
    // into the owner: the owner may destroy itself (and so this wrapper) there.
    static void HANDLE_EVENT(void* argument) {
        auto* self = static_cast<VXEventTimeout*>(argument);
        if (!self->m_repeat) self->m_running = false;
        T* target = self->m_pTarget;
        const Method method = self->m_method;
        (target->*method)();
    }

private:
    T* const m_pTarget;
    const Method m_method;
    _VXTimeoutEvent m_event;  // owned; never handed out through counted pointers
    bool m_running = false;
    bool m_repeat = false;
    VX::Time m_due;
};

}  // namespace VX::SysEvent
