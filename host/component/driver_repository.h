// The driver repository: the process-wide registry of drivers by driver name,
// in which other components find each other. DRIVER is its static face:
// each DRIVER call holds the repository's lock for its duration.
//
// The repository's lock is the engine lock (VX::SysEvent::LOCK()): the
// engine's components are its drivers and observers, and their callbacks
// reach engine state. With one lock there is no lock order to get wrong
// between the repository and the engine.
//
// Listing order is registration order, always. Observers are called in
// order of their `priority` (lower first), then of registration; each call
// works on a snapshot, so callbacks may add or remove drivers and observers
// (an observer removed during a notification is not called afterwards; one
// added during it is not called for that change).
#pragma once

#include "host/component/driver.h"
#include "host/component/driver_repository_observer.h"
#include "host/component/unknown.h"
#include "host/component/uuid.h"
#include "host/runtime/containers.h"
#include "host/runtime/string.h"

// The repository's operations; see DRIVER for their contracts. Each takes
// the repository's lock itself (it is re-entrant), so calls through
// DRIVER::INSTANCE() are safe too.
class IDriverRepository : public virtual IUnknown {
public:
    static const VX::UUID& IID();

    virtual XCode add(const VXPPtr<IDriver>& driver) = 0;
    virtual XCode remove(const VXPPtr<IDriver>& driver) = 0;
    virtual XCode remove(const String& driverName) = 0;
    virtual XCode getIf(const String& driverName, const VX::UUID& iid, void** out) = 0;
    // getIf without the failure text: false where getIf fails.
    virtual bool findIf(const String& driverName, const VX::UUID& iid, void** out) = 0;
    virtual XCode getDrivers(const VX::UUID& did, const String& namePrefix, const VX::UUID& iid,
                             VXVector<VXPPtr<IDriver>>& list) = 0;
    virtual XCode addRepositoryObserver(const String& observerName, const VX::UUID& did,
                                        const VX::UUID& iid, const String& namePrefix,
                                        unsigned priority, bool notifyExisting,
                                        bool notifyRemainingOnRemoval,
                                        IDriverRepositoryObserver* observer) = 0;
    virtual XCode removeRepositoryObserver(const String& observerName) = 0;

protected:
    ~IDriverRepository() override = default;
};

class DRIVER {
public:
    // The repository; made on first use and never destroyed.
    static VXPPtr<IDriverRepository> INSTANCE();

    // Registers `driver` under its driver name and keeps a reference to it
    // (that reference keeps a published component alive), then tells the
    // matching observers. Fails with "INVALID DRIVER" for a null driver or an
    // empty name, and "DRIVER ALREADY EXISTS: <name>" when the name is taken.
    static XCode ADD(const VXPPtr<IDriver>& driver);
    // Unregisters the driver (by object, or by name), tells the matching
    // observers while the driver is still alive, then drops the reference.
    // Fails with "DRIVER DOES NOT EXIST: <name>" when it is not registered.
    static XCode REMOVE(const VXPPtr<IDriver>& driver);
    static XCode REMOVE(const String& driverName);
    // The named driver's interface `iid` (as IUnknown::queryInterface, *out
    // holds one reference). Fails with "DRIVER DOES NOT EXIST: <name>" or
    // "INTERFACE NOT SUPPORTED: <name>".
    static XCode GET_IF(const String& driverName, const VX::UUID& iid, void** out);
    template <class I>
    static XCode GET_IF(const String& driverName, VXPPtr<I>& out);
    // GET_IF for callers to whom a missing driver is an expected answer
    // (a name that may or may not be published): false where GET_IF fails,
    // without making its text.
    static bool FIND_IF(const String& driverName, const VX::UUID& iid, void** out);
    template <class I>
    static bool FIND_IF(const String& driverName, VXPPtr<I>& out);
    // Appends (the list is not emptied) every driver of type `did` whose name
    // starts with `namePrefix` (empty: every name) and which offers `iid`, in
    // registration order. A nil `did` or `iid` matches every driver. Succeeds
    // also when nothing matches.
    static XCode GET_INTERFACES(const VX::UUID& did, const String& namePrefix, const VX::UUID& iid,
                                VXVector<VXPPtr<IDriver>>& list);
    // The same, giving each driver's interface I.
    template <class I>
    static XCode GET_INTERFACES(const VX::UUID& did, const String& namePrefix,
                                VXVector<VXPPtr<I>>& list);

    // Registers `observer` (not counted; it must unregister before it dies)
    // under `observerName` for drivers matching `did`, `iid` and
    // `namePrefix` as in GET_INTERFACES. Observers with a lower `priority`
    // are called first. With `notifyExisting`, onDriverAdded runs at once
    // for each matching driver already registered; with
    // `notifyRemainingOnRemoval`, REMOVE_REPOSITORY_OBSERVER calls
    // onDriverRemoved for each matching driver still registered. Fails with
    // "INVALID OBSERVER" for a null observer or an empty name, and
    // "OBSERVER ALREADY EXISTS: <name>" when the name is taken.
    static XCode ADD_REPOSITORY_OBSERVER(const String& observerName, const VX::UUID& did,
                                         const VX::UUID& iid, const String& namePrefix,
                                         unsigned priority, bool notifyExisting,
                                         bool notifyRemainingOnRemoval,
                                         IDriverRepositoryObserver* observer);
    // Fails with "OBSERVER DOES NOT EXIST: <name>".
    static XCode REMOVE_REPOSITORY_OBSERVER(const String& observerName);
};

template <class I>
bool DRIVER::FIND_IF(const String& driverName, VXPPtr<I>& out) {
    void* raw = nullptr;
    if (!FIND_IF(driverName, I::IID(), &raw)) {
        out = nullptr;
        return false;
    }
    I* typed = static_cast<I*>(raw);
    out = typed;
    typed->release();  // out's reference replaces the one FIND_IF took
    return true;
}

template <class I>
XCode DRIVER::GET_IF(const String& driverName, VXPPtr<I>& out) {
    void* raw = nullptr;
    XCode rc = GET_IF(driverName, I::IID(), &raw);
    out = nullptr;
    if (rc.isErr()) return rc;
    I* typed = static_cast<I*>(raw);
    out = typed;
    typed->release();  // out's reference replaces the one GET_IF took
    return XCode();
}

template <class I>
XCode DRIVER::GET_INTERFACES(const VX::UUID& did, const String& namePrefix,
                             VXVector<VXPPtr<I>>& list) {
    VXVector<VXPPtr<IDriver>> drivers;
    XCode rc = GET_INTERFACES(did, namePrefix, I::IID(), drivers);
    if (rc.isErr()) return rc;
    list.reserve(list.size() + drivers.size());
    for (VXPPtr<IDriver>& driver : drivers) {
        VXPPtr<I> itf;
        if (driver->queryIf(itf).isSuccess()) list.push_back(std::move(itf));
    }
    return XCode();
}
