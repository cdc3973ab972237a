// VX::SysEvent::Observer: the client's handle for watching named values.
//
// A client registers name patterns (addTo with a text) or single published
// objects (addTo with an IRead) and receives a value-change callback with the
// object's name and new value, and a destroy callback with the name of an
// observed object that dies. Patterns keep working for objects published
// later: the Observer watches the driver repository from construction to
// destruction and subscribes to (or drops) matching objects as they appear
// in (or leave) it.
//
// How a callback is delivered is the business of its VX::Function: at once in
// the notifying thread (direct, or synchronous under an event loop's lock),
// or queued to an event loop. Direct and synchronous callbacks run with the
// engine lock held and may call the Repository, which re-enters the lock.
//
// A client may instead subclass and override notifyValueChanged and
// notifyValueDestroyed; the callbacks are then ignored unless the override
// forwards to the base.
//
// A callable that throws is reported on the engine monitor (level 0) with the
// object's name; the exception goes no further, so the change still reaches
// every other observer.
#pragma once

#include "host/component/driver_repository_observer.h"
#include "host/runtime/containers.h"
#include "host/runtime/function.h"
#include "host/runtime/regex.h"
#include "host/runtime/string.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/repository/read_observer.h"
#include "sysevent/value/value.h"

class IDriver;
class IDriverRepository;

namespace VX::SysEvent {

// The driver repository observer is a protected base, not a private one: a
// subclass destroys its virtual base IUnknown, which it may only reach
// through a base it can access.
class Observer : public IReadObserver, protected DriverRepositoryObserver {
public:
    using ValueChangeCallback = VX::Function<void(String, Value)>;
    using DestroyCallback = VX::Function<void(String)>;

    // Each constructor registers the Observer with the driver repository
    // under getDriverRepositoryObserverName(). Missing callbacks are direct
    // ones without a callable: their notifications are dropped.
    Observer();
    explicit Observer(ValueChangeCallback onValueChange);
    Observer(ValueChangeCallback onValueChange, DestroyCallback onDestroy);
    // Unregisters from the driver repository and unsubscribes from every
    // object, under the engine lock; then the callbacks are released, which
    // drops queued calls not yet run unless their Function asked to keep them.
    ~Observer() override;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

    // Replace a callback under the engine lock; the previous one is released.
    void setValueChangeCallback(ValueChangeCallback onValueChange);
    void setDestroyCallback(DestroyCallback onDestroy);

    // Subscribes to every published object whose name matches `pattern` (a
    // plain name, or a text with "%" or "{") now, and to each one published
    // later. With notifyNow, each object found reports its current value at
    // once, so does each object published later, and a plain name with no
    // object behind it (or a pattern that does not compile) reports "#N/A!"
    // at once. Reports no error: the pattern is recorded whatever it matched.
    // Adding a recorded pattern again only replaces its notifyNow flag.
    void addTo(const String& pattern, bool notifyNow);
    // Forgets `pattern` and unsubscribes from the objects it matches now.
    void removeFrom(const String& pattern);
    // Subscribes to one object unless it is subscribed already; with
    // notifyNow the object reports its current value at once.
    void addTo(VXPPtr<IRead>& object, bool notifyNow);
    // Unsubscribes from one object: drops every registration this Observer
    // holds on it (also those made by overlapping patterns); nothing happens
    // when it is not observed.
    void removeFrom(VXPPtr<IRead>& object);
    // Unsubscribes from every object and forgets every pattern.
    void removeFromAll();

    // "SysEvent::Observer[<address>]": the name under which the Observer is
    // registered with the driver repository.
    String getDriverRepositoryObserverName() const;
    // Register and unregister with the driver repository; failures are not
    // reported (the constructors and the destructor call them).
    void addToDriverRepository();
    void removeFromDriverRepository();

    // From the observed objects (engine lock held, notifying thread).
    using IReadObserver::onValueChanged;
    void onValueDestroyed(IRead* object) override;
    void onValueChanged(VXPPtr<IRead>& source, const Value& oldValue,
                        const Value& newValue) override;

    // Hand the name (and value) to the callback's delivery; no callable: no
    // call. Override to receive the notifications without callbacks.
    virtual void notifyValueDestroyed(const String& name);
    virtual void notifyValueChanged(const String& name, const Value& value);

    // From the driver repository (its lock, the engine lock, held): a
    // published object appeared or is about to vanish. Objects without IRead
    // (expression sets) are ignored.
    XCode onDriverAdded(String& driverName, VXPPtr<IDriverRepository>& repository,
                        VXPPtr<IDriver>& driver) override;
    void onDriverRemoved(VXPPtr<IDriverRepository>& repository, VXPPtr<IDriver>& driver) override;

private:
    // notifyValueChanged, with whatever client code it runs kept from
    // throwing into the notifying object.
    void deliverChange(const String& name, const Value& value);
    // Drops every registration this Observer holds on `object` (one per entry
    // in m_observed) and its entries.
    void unsubscribe(IRead* object);
    // Removes every entry of `object` from m_observed without touching the
    // object (it is dying, or its registrations are gone already).
    void forget(IRead* object);

    // One running call of the value-change callback. The callback is called
    // in place, not through a counted copy; a callable that replaces it, or
    // destroys this Observer, while it runs leaves the implementation with
    // the outermost running call, which releases it after it returns.
    struct Delivery {
        Delivery* outer;
        bool destroyed = false;
        VXVector<ValueChangeCallback> retired;  // outermost call only
    };
    // Keeps the current value-change callback alive until no call runs.
    void retireValueChangeCallback();

    // Both guarded by the engine lock.
    DestroyCallback m_destroyCallback;
    ValueChangeCallback m_valueChangeCallback;
    Delivery* m_delivery = nullptr;  // the innermost running call
    // Every pattern given to addTo(String, bool), with its notifyNow flag and
    // its compiled form (null when it does not compile): objects appear far
    // more often than patterns are added, so each pattern is compiled once.
    struct Pattern {
        bool notifyNow = false;
        VXPtr<VXRegEx::Pattern> regex;
    };
    VXStringHashTable<Pattern> m_names;
    // The objects whose observer lists hold this Observer, exactly once per
    // registration (an object matched by two patterns is listed twice), so
    // that unsubscribing everything listed leaves no registration behind to
    // dangle after the Observer is gone. Not owned: an object tells
    // onValueDestroyed before it dies.
    VXVector<IRead*> m_observed;
};

}  // namespace VX::SysEvent
