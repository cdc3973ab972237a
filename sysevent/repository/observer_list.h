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
#include <memory>

namespace VX::SysEvent {

template <class O>
class ObserverList {
public:
    // Adds a registration ahead of the others. Returns true when it is the
    // first live one (the owner then starts to be interested in its value).
    bool add(O* observer) {
        if (!m_state) m_state = std::make_unique<State>();
        m_state->registrations.push_front(Registration{observer, 1});
        return ++m_state->live == 1;
    }

    // Withdraws the newest live registration of `observer`. Returns true when
    // that was the last live registration of any observer (the owner then
    // stops being interested); false also when `observer` had none.
    bool remove(O* observer) {
        if (!m_state) return false;
        for (Registration& r : m_state->registrations) {
            if (r.observer != observer || r.useCount == 0) continue;
            --r.useCount;
            const bool died = r.useCount == 0;
            if (died) {
                --m_state->live;
                ++m_state->dead;
            }
            const bool none = m_state->live == 0;
            purge();
            return died && none;
        }
        return false;
    }

    // Calls f(observer) for every live registration, newest first, with the
    // notification depth raised. Registrations added meanwhile are not
    // called; those removed meanwhile are not called any more.
    template <class F>
    void notify(F&& f) {
        if (!m_state) return;
        State& state = *m_state;
        ++state.depth;
        for (auto it = state.registrations.begin(); it != state.registrations.end(); ++it) {
            if (it->useCount > 0) f(it->observer);
        }
        --state.depth;
        purge();
    }

    // Withdraws every registration; returns true when some were live.
    bool clear() {
        if (!m_state) return false;
        const bool hadLive = m_state->live > 0;
        for (Registration& r : m_state->registrations) r.useCount = 0;
        m_state->live = 0;
        m_state->dead = m_state->registrations.size();
        purge();
        return hadLive;
    }

    // Erases dead registrations unless a notification is running; the list
    // itself goes once nothing is left in it.
    void purge() {
        if (!m_state || m_state->depth != 0 || m_state->dead == 0) return;
        m_state->registrations.remove_if([](const Registration& r) { return r.useCount == 0; });
        m_state->dead = 0;
        if (m_state->registrations.empty()) m_state.reset();
    }

    size_t liveCount() const { return m_state ? m_state->live : 0; }
    bool empty() const { return !m_state || m_state->live == 0; }

private:
    struct Registration {
        O* observer;
        unsigned useCount;
    };
    // Most published objects are never observed: they carry one pointer
    // until the first registration.
    struct State {
        std::list<Registration> registrations;
        size_t live = 0;
        size_t dead = 0;  // registrations at use count zero, not erased yet
        unsigned depth = 0;
    };
    std::unique_ptr<State> m_state;
};

}  // namespace VX::SysEvent
