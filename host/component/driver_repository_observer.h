// IDriverRepositoryObserver: told by the driver repository when drivers of
// a registered kind are added or removed. DriverRepositoryObserver is its
// reference-counted implementation base for components that observe.
#pragma once

#include "host/component/driver.h"
#include "host/component/inherit.h"
#include "host/component/object.h"
#include "host/runtime/string.h"

class IDriverRepository;

class IDriverRepositoryObserver : public virtual IUnknown {
public:
    static const VX::UUID& IID();

    // A matching driver has been registered under `driverName`. Runs with the
    // repository's lock held. The result is not looked at by the repository.
    virtual XCode onDriverAdded(String& driverName, VXPPtr<IDriverRepository>& repository,
                                VXPPtr<IDriver>& driver) = 0;
    // A matching driver has been unregistered; `driver` is still alive while
    // this runs. Runs with the repository's lock held.
    virtual void onDriverRemoved(VXPPtr<IDriverRepository>& repository,
                                 VXPPtr<IDriver>& driver) = 0;

protected:
    ~IDriverRepositoryObserver() override = default;
};

// The repository keeps observers as plain pointers and never counts them, so
// a DriverRepositoryObserver may live on the stack or as a member, as long as
// it unregisters itself before it is destroyed.
class DriverRepositoryObserver
    : public CInherit<DriverRepositoryObserver, CObject, IDriverRepositoryObserver> {
public:
    explicit DriverRepositoryObserver(VXLock* lock = nullptr) : CInherit(lock) {}

protected:
    ~DriverRepositoryObserver() override = default;
};
