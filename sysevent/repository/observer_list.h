// ObserverList<O>: the registrations of observers on one published object,
// newest first, each with a use count. Removing a registration while a
// notification runs only drops its count to zero: it is skipped from then on
// and erased once the outermost notification has finished, so a callback may
// remove (or add) observers of the object that is notifying it.
//
// Not locked: the owner's lock (the engine lock) guards it.
#pragma once

#include <cstddef>
#include <list>

namespace VX::SysEvent {

template <class O>
class ObserverList {
public:
    // Adds a registration ahead of the others. Returns true when it is the
    // first live one (the owner then starts to be interested in its value).
    bool add(O* observer) {
        m_registrations.push_front(Registration{observer, 1});
        return ++m_live == 1;
    }

    // Withdraws the newest live registration of `observer`. Returns true when
    // that was the last live registration of any observer (the owner then
    // stops being interested); false also when `observer` had none.
    bool remove(O* observer) {
        for (Registration& r : m_registrations) {
            if (r.observer != observer || r.useCount == 0) continue;
            --r.useCount;
            const bool died = r.useCount == 0;
            if (died) --m_live;
            purge();
            return died && m_live == 0;
        }
        return false;
    }

    // Calls f(observer) for every live registration, newest first, with the
    // notification depth raised. Registrations added meanwhile are not
    // called; those removed meanwhile are not called any more.
    template <class F>
    void notify(F&& f) {
        ++m_depth;
        for (auto it = m_registrations.begin(); it != m_registrations.end(); ++it) {
            if (it->useCount > 0) f(it->observer);
        }
        --m_depth;
        purge();
    }

    // Withdraws every registration; returns true when some were live.
    bool clear() {
        const bool hadLive = m_live > 0;
        for (Registration& r : m_registrations) r.useCount = 0;
        m_live = 0;
        purge();
        return hadLive;
    }

    // Erases dead registrations unless a notification is running.
    void purge() {
        if (m_depth == 0)
            m_registrations.remove_if([](const Registration& r) { return r.useCount == 0; });
    }

    size_t liveCount() const { return m_live; }
    bool empty() const { return m_live == 0; }

private:
    struct Registration {
        O* observer;
        unsigned useCount;
    };
    std::list<Registration> m_registrations;
    size_t m_live = 0;
    unsigned m_depth = 0;
};

}  // namespace VX::SysEvent
