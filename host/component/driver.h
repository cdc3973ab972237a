// IDriver and CDriver: a component registered in the driver repository under
// a driver name, with a driver type identifier (DID) that groups drivers of
// one kind.
#pragma once

#include "host/component/inherit.h"
#include "host/component/object.h"
#include "host/component/uuid.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"

class IDriverRepository;

class IDriver : public virtual IUnknown {
public:
    static const VX::UUID& IID();

    virtual const VX::UUID& getDID() const = 0;
    virtual const String& getDriverName() const = 0;
    // The repository the driver is registered in; null while it is in none.
    virtual VXPPtr<IDriverRepository> getDriverRepository() const = 0;
    // Set by the repository when it registers or unregisters the driver.
    virtual void setDriverRepository(IDriverRepository* repository) = 0;

protected:
    ~IDriver() override = default;
};

class CDriver : public CInherit<CDriver, CObject, IDriver> {
public:
    // `lock` guards the driver (may be null) and must outlive it.
    CDriver(const VX::UUID& did, const String& driverName, VXLock* lock)
        : CInherit(lock), did_(did), driverName_(driverName) {}

    const VX::UUID& getDID() const override { return did_; }
    const String& getDriverName() const override { return driverName_; }
    VXPPtr<IDriverRepository> getDriverRepository() const override;
    void setDriverRepository(IDriverRepository* repository) override;

protected:
    ~CDriver() override = default;

private:
    const VX::UUID did_;
    const String driverName_;
    // Not counted: repositories outlive their drivers (the process-wide one
    // is never destroyed), and a count would tie the two in a cycle.
    IDriverRepository* repository_ = nullptr;
};
