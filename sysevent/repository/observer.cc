// Observer: subscriptions by pattern and by object, kept current as published
// objects come and go, and the hand-over of each notification to a callback.
//
// Every table here is guarded by the engine lock. Notifications reach the
// client while that lock is held, and a direct client callback may call back
// into this Observer (addTo, removeFrom, ...), so loops over the tables work
// on snapshots and never keep iterators across a call out.
#include "sysevent/repository/observer.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "host/component/driver_repository.h"
#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "host/runtime/log.h"
#include "host/runtime/monitor.h"
#include "sysevent/language/lexer.h"
#include "sysevent/repository/identifiers.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {

namespace {

// The patterns of the name table matching `name`, with their notifyNow
// flags, copied so that a callback may change the table while the caller
// walks the copy.
template <class Table>
VXVector<bool> matching(const Table& names, const String& name) {
    VXVector<bool> flags;
    for (const auto& [text, pattern] : names) {
        if (pattern.regex && pattern.regex->match(name)) flags.push_back(pattern.notifyNow);
    }
    return flags;
}

// Runs one hand-over of a notification to client code (a callable, or an
// override of notifyValueChanged); an exception it throws ends here, reported
// with the object's name, so that the notifying object goes on to its other
// observers.
template <class F>
void shielded(const String& name, F&& call) {
    try {
        call();
    } catch (const std::exception& e) {
        SYSEVENT_LOG(0, "[%s] Observer callback failed: %s", name.c_str(), e.what());
    } catch (...) {
        SYSEVENT_LOG(0, "[%s] Observer callback failed", name.c_str());
    }
}

// The IRead of a driver, or null for drivers that cannot be read (expression
// sets).
VXPPtr<IRead> readInterfaceOf(VXPPtr<IDriver>& driver) {
    VXPPtr<IRead> object;
    if (!driver) return object;
    VXLockPtr<IDriver> held(driver);
    driver->queryIf(object);
    return object;
}

}  // namespace

Observer::Observer() {
    addToDriverRepository();
}

Observer::Observer(ValueChangeCallback onValueChange)
    : m_valueChangeCallback(std::move(onValueChange)) {
    addToDriverRepository();
}

Observer::Observer(ValueChangeCallback onValueChange, DestroyCallback onDestroy)
    : m_destroyCallback(std::move(onDestroy)), m_valueChangeCallback(std::move(onValueChange)) {
    addToDriverRepository();
}

Observer::~Observer() {
    VXAutoLock engine(LOCK());
    removeFromDriverRepository();
    removeFromAll();
    // A callable destroying its own Observer: every running call learns that
    // it must not touch the Observer any more.
    for (Delivery* d = m_delivery; d; d = d->outer) d->destroyed = true;
    retireValueChangeCallback();
    // Release the callbacks while the engine lock is still held: a queued
    // call that the engine's loop is about to take then either ran already or
    // finds its queue emptied, and never starts after this returns.
    m_valueChangeCallback = ValueChangeCallback();
    m_destroyCallback = DestroyCallback();
}

void Observer::setValueChangeCallback(ValueChangeCallback onValueChange) {
    VXAutoLock engine(LOCK());
    retireValueChangeCallback();
    m_valueChangeCallback = std::move(onValueChange);
}

void Observer::retireValueChangeCallback() {
    if (!m_delivery) return;
    Delivery* outermost = m_delivery;
    while (outermost->outer) outermost = outermost->outer;
    outermost->retired.push_back(m_valueChangeCallback);
}

void Observer::setDestroyCallback(DestroyCallback onDestroy) {
    VXAutoLock engine(LOCK());
    m_destroyCallback = std::move(onDestroy);
}

void Observer::addTo(const String& pattern, bool notifyNow) {
    VXAutoLock engine(LOCK());
    XCode rc;
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        rc = repository->addObserver(*this, pattern, notifyNow);
    }
    // Only a plain name without an object, or a pattern that does not
    // compile, fails; a wildcard that matches nothing yet succeeds quietly.
    if (rc.isErr() && notifyNow) deliverChange(pattern, Value(DST_ERR_NA));
    Pattern& entry = m_names[pattern];
    entry.notifyNow = notifyNow;
    if (!entry.regex)
        entry.regex = VXRegEx::COMPILE_EXPRESSION(Lexer::NAME_TO_REGEX(pattern, false));
}

void Observer::removeFrom(const String& pattern) {
    VXAutoLock engine(LOCK());
    m_names.erase(pattern);
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    repository->removeObserver(*this, pattern);
}

void Observer::addTo(VXPPtr<IRead>& object, bool notifyNow) {
    VXAutoLock engine(LOCK());
    if (!object) return;
    if (std::find(m_observed.begin(), m_observed.end(), object.get()) != m_observed.end()) return;
    {
        VXLockPtr<IRead> held(object);
        held->addValueObserver(this, notifyNow);
    }
    m_observed.push_back(object.get());
}

void Observer::removeFrom(VXPPtr<IRead>& object) {
    VXAutoLock engine(LOCK());
    if (!object) return;
    VXLockPtr<IRead> held(object);
    unsubscribe(held.get());
}

void Observer::removeFromAll() {
    VXAutoLock engine(LOCK());
    VXVector<IRead*> observed;
    observed.swap(m_observed);
    m_names.clear();
    for (IRead* object : observed) object->removeValueObserver(this);
}

String Observer::getDriverRepositoryObserverName() const {
    return String::Formatted("SysEvent::Observer[%p]", static_cast<const void*>(this));
}

void Observer::addToDriverRepository() {
    DRIVER::ADD_REPOSITORY_OBSERVER(getDriverRepositoryObserverName(), DID_Variable(), IRead::IID(),
                                    DRIVER_NAME_PREFIX, 0, false, false,
                                    static_cast<IDriverRepositoryObserver*>(this));
}

void Observer::removeFromDriverRepository() {
    DRIVER::REMOVE_REPOSITORY_OBSERVER(getDriverRepositoryObserverName());
}

void Observer::onValueDestroyed(IRead* object) {
    VXAutoLock engine(LOCK());
    forget(object);
    const String name = object->getName();
    shielded(name, [&] { notifyValueDestroyed(name); });
}

void Observer::onValueChanged(VXPPtr<IRead>& source, const Value& /*oldValue*/,
                              const Value& newValue) {
    // A published object notifies with its lock (the engine lock) held and
    // keeps itself alive for the delivery, so the common case needs neither
    // another reference nor another pass through the lock.
    IRead* object = source.get();
    if (!object) return;
    VXLock* lock = object->getLock();
    if (!lock || lock->isHeldByMe()) {
        deliverChange(object->getName(), newValue);
        return;
    }
    String name;
    {
        VXLockPtr<IRead> held(source);
        name = held->getName();
    }
    deliverChange(name, newValue);
}

void Observer::notifyValueDestroyed(const String& name) {
    // A copy keeps the implementation alive should the callable replace the
    // callback while it runs.
    DestroyCallback callback = m_destroyCallback;
    if (!callback.hasCallable()) return;
    callback(name);
}

void Observer::notifyValueChanged(const String& name, const Value& value) {
    if (!m_valueChangeCallback.hasCallable()) return;
    // Unwinds also when the callable throws (the caller catches).
    struct Running {
        Observer* self;
        Delivery delivery;
        explicit Running(Observer* o) : self(o), delivery{o->m_delivery, false, {}} {
            o->m_delivery = &delivery;
        }
        ~Running() {
            if (!delivery.destroyed) self->m_delivery = delivery.outer;
        }
    } running(this);
    m_valueChangeCallback(name, value);
}

XCode Observer::onDriverAdded(String& /*driverName*/, VXPPtr<IDriverRepository>& /*repository*/,
                              VXPPtr<IDriver>& driver) {
    VXAutoLock engine(LOCK());
    VXPPtr<IRead> object = readInterfaceOf(driver);
    if (!object) return XCode();
    const String name = object->getName();
    // Once per matching pattern: overlapping patterns subscribe twice, and
    // each change then arrives twice, as for objects found by addTo.
    for (const bool notifyNow : matching(m_names, name)) {
        object->addValueObserver(this, notifyNow);
        m_observed.push_back(object.get());
    }
    return XCode();
}

void Observer::onDriverRemoved(VXPPtr<IDriverRepository>& /*repository*/, VXPPtr<IDriver>& driver) {
    VXAutoLock engine(LOCK());
    VXPPtr<IRead> object = readInterfaceOf(driver);
    if (!object) return;
    const String name = object->getName();
    for (const bool notifyNow : matching(m_names, name)) {
        unsubscribe(object.get());
        if (notifyNow) deliverChange(name, Value(DST_ERR_NA));
    }
}

void Observer::deliverChange(const String& name, const Value& value) {
    shielded(name, [&] { notifyValueChanged(name, value); });
}

void Observer::unsubscribe(IRead* object) {
    const auto held = std::count(m_observed.begin(), m_observed.end(), object);
    for (auto i = held; i > 0; --i) object->removeValueObserver(this);
    forget(object);
}

void Observer::forget(IRead* object) {
    m_observed.erase(std::remove(m_observed.begin(), m_observed.end(), object), m_observed.end());
}

}  // namespace VX::SysEvent
