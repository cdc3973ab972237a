// The process-wide driver repository and DRIVER, its static face.
#include "host/component/driver_repository.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "host/runtime/crit.h"

namespace {

constexpr VX::UUID IID_DRIVER_REPOSITORY = VX::UUID::OF("f1c5c4f0-554a-4d89-b75e-f51f4ae75f32");

XCode noSuchDriver(const String& name) {
    return XCode::Failure(String::Formatted("DRIVER DOES NOT EXIST: %s", name.c_str()));
}

bool matches(const VX::UUID& did, const VX::UUID& iid, const String& namePrefix, IDriver& driver) {
    return (did.isNil() || driver.getDID() == did) &&
           driver.getDriverName().startsWith(namePrefix) &&
           (iid.isNil() || driver.queryInterface(iid, nullptr).isSuccess());
}

class DriverRepository final : public CInherit<DriverRepository, CObject, IDriverRepository> {
public:
    DriverRepository() : CInherit(&VX::SysEvent::LOCK()) {}

    XCode add(const VXPPtr<IDriver>& driver) override;
    XCode remove(const VXPPtr<IDriver>& driver) override;
    XCode remove(const String& driverName) override;
    XCode getIf(const String& driverName, const VX::UUID& iid, void** out) override;
    bool findIf(const String& driverName, const VX::UUID& iid, void** out) override;
    XCode getDrivers(const VX::UUID& did, const String& namePrefix, const VX::UUID& iid,
                     VXVector<VXPPtr<IDriver>>& list) override;
    XCode addRepositoryObserver(const String& observerName, const VX::UUID& did,
                                const VX::UUID& iid, const String& namePrefix, unsigned priority,
                                bool notifyExisting, bool notifyRemainingOnRemoval,
                                IDriverRepositoryObserver* observer) override;
    XCode removeRepositoryObserver(const String& observerName) override;

private:
    // An observer registration. Shared with the snapshots that notifications
    // iterate over; `active` turns false when it is removed, so a snapshot
    // skips it from then on.
    struct Registration {
        String name;
        VX::UUID did;
        VX::UUID iid;
        String namePrefix;
        unsigned priority;
        bool notifyRemainingOnRemoval;
        IDriverRepositoryObserver* observer;
        bool active = true;
    };
    using Drivers = VXList<VXPPtr<IDriver>>;
    // Keyed by a view of the driver's own name, which lives as long as the
    // registration holds the driver: the name is not stored a second time.
    // A plain (uncached) hash keeps each entry at three words.
    struct NameHash {
        size_t operator()(std::string_view name) const noexcept {
            return std::hash<std::string_view>()(name);
        }
    };
    using ByName = std::unordered_map<std::string_view, Drivers::iterator, NameHash>;

    bool isRegistered(const VXPPtr<IDriver>& driver) const;
    VXVector<VXPPtr<IDriver>> snapshotDrivers() const { return {drivers_.begin(), drivers_.end()}; }
    void notifyAdded(const VXPPtr<IDriver>& driver);
    void notifyRemoved(const VXPPtr<IDriver>& driver);
    void tellAdded(Registration& r, const VXPPtr<IDriver>& driver);
    void tellRemoved(Registration& r, const VXPPtr<IDriver>& driver);

    // All guarded by the repository's lock.
    Drivers drivers_;  // registration order
    ByName byName_;
    VXVector<std::shared_ptr<Registration>> observers_;  // priority, then registration order
};

bool DriverRepository::isRegistered(const VXPPtr<IDriver>& driver) const {
    auto it = byName_.find(driver->getDriverName());
    return it != byName_.end() && *it->second == driver;
}

void DriverRepository::tellAdded(Registration& r, const VXPPtr<IDriver>& driver) {
    if (!r.active || !isRegistered(driver) || !matches(r.did, r.iid, r.namePrefix, *driver)) {
        return;
    }
    String name = driver->getDriverName();
    VXPPtr<IDriverRepository> self(this);
    VXPPtr<IDriver> target = driver;
    r.observer->onDriverAdded(name, self, target);
}

void DriverRepository::tellRemoved(Registration& r, const VXPPtr<IDriver>& driver) {
    if (!r.active || !matches(r.did, r.iid, r.namePrefix, *driver)) return;
    VXPPtr<IDriverRepository> self(this);
    VXPPtr<IDriver> target = driver;
    r.observer->onDriverRemoved(self, target);
}

void DriverRepository::notifyAdded(const VXPPtr<IDriver>& driver) {
    const VXVector<std::shared_ptr<Registration>> snapshot = observers_;
    for (const std::shared_ptr<Registration>& r : snapshot) tellAdded(*r, driver);
}

void DriverRepository::notifyRemoved(const VXPPtr<IDriver>& driver) {
    const VXVector<std::shared_ptr<Registration>> snapshot = observers_;
    for (const std::shared_ptr<Registration>& r : snapshot) tellRemoved(*r, driver);
}

XCode DriverRepository::add(const VXPPtr<IDriver>& driver) {
    VXAutoLock held(*getLock());
    if (!driver || driver->getDriverName().isEmpty()) return XCode::Failure("INVALID DRIVER");
    const String& name = driver->getDriverName();
    if (byName_.count(name)) {
        return XCode::Failure(String::Formatted("DRIVER ALREADY EXISTS: %s", name.c_str()));
    }
    const Drivers::iterator entry = drivers_.insert(drivers_.end(), driver);
    byName_.emplace(std::string_view((*entry)->getDriverName()), entry);
    driver->setDriverRepository(this);
    notifyAdded(driver);
    return XCode();
}

XCode DriverRepository::remove(const VXPPtr<IDriver>& driver) {
    VXAutoLock held(*getLock());
    if (!driver) return XCode::Failure("INVALID DRIVER");
    if (!isRegistered(driver)) return noSuchDriver(driver->getDriverName());
    return remove(driver->getDriverName());
}

XCode DriverRepository::remove(const String& driverName) {
    VXAutoLock held(*getLock());
    auto it = byName_.find(driverName);
    if (it == byName_.end()) return noSuchDriver(driverName);
    // Our reference moves here and dies last, after the observers ran, so
    // the driver is destroyed (when nobody else holds it) at the very end.
    VXPPtr<IDriver> driver = std::move(*it->second);
    drivers_.erase(it->second);
    byName_.erase(it);
    driver->setDriverRepository(nullptr);
    notifyRemoved(driver);
    return XCode();
}

XCode DriverRepository::getIf(const String& driverName, const VX::UUID& iid, void** out) {
    VXAutoLock held(*getLock());
    if (out) *out = nullptr;
    auto it = byName_.find(driverName);
    if (it == byName_.end()) return noSuchDriver(driverName);
    if ((*it->second)->queryInterface(iid, out).isErr()) {
        return XCode::Failure(String::Formatted("INTERFACE NOT SUPPORTED: %s", driverName.c_str()));
    }
    return XCode();
}

bool DriverRepository::findIf(const String& driverName, const VX::UUID& iid, void** out) {
    VXAutoLock held(*getLock());
    if (out) *out = nullptr;
    auto it = byName_.find(driverName);
    return it != byName_.end() && (*it->second)->queryInterface(iid, out).isSuccess();
}

XCode DriverRepository::getDrivers(const VX::UUID& did, const String& namePrefix,
                                   const VX::UUID& iid, VXVector<VXPPtr<IDriver>>& list) {
    VXAutoLock held(*getLock());
    for (const VXPPtr<IDriver>& driver : drivers_) {
        if (matches(did, iid, namePrefix, *driver)) list.push_back(driver);
    }
    return XCode();
}

XCode DriverRepository::addRepositoryObserver(const String& observerName, const VX::UUID& did,
                                              const VX::UUID& iid, const String& namePrefix,
                                              unsigned priority, bool notifyExisting,
                                              bool notifyRemainingOnRemoval,
                                              IDriverRepositoryObserver* observer) {
    VXAutoLock held(*getLock());
    if (!observer || observerName.isEmpty()) return XCode::Failure("INVALID OBSERVER");
    for (const std::shared_ptr<Registration>& r : observers_) {
        if (r->name == observerName) {
            return XCode::Failure(
                String::Formatted("OBSERVER ALREADY EXISTS: %s", observerName.c_str()));
        }
    }
    auto registration = std::make_shared<Registration>(Registration{
        observerName, did, iid, namePrefix, priority, notifyRemainingOnRemoval, observer});
    auto at = std::upper_bound(
        observers_.begin(), observers_.end(), priority,
        [](unsigned p, const std::shared_ptr<Registration>& r) { return p < r->priority; });
    observers_.insert(at, registration);
    if (notifyExisting) {
        for (const VXPPtr<IDriver>& driver : snapshotDrivers()) tellAdded(*registration, driver);
    }
    return XCode();
}

XCode DriverRepository::removeRepositoryObserver(const String& observerName) {
    VXAutoLock held(*getLock());
    auto it = std::find_if(
        observers_.begin(), observers_.end(),
        [&](const std::shared_ptr<Registration>& r) { return r->name == observerName; });
    if (it == observers_.end()) {
        return XCode::Failure(
            String::Formatted("OBSERVER DOES NOT EXIST: %s", observerName.c_str()));
    }
    std::shared_ptr<Registration> registration = *it;
    observers_.erase(it);
    if (registration->notifyRemainingOnRemoval) {
        for (const VXPPtr<IDriver>& driver : snapshotDrivers()) {
            if (isRegistered(driver)) tellRemoved(*registration, driver);
        }
    }
    registration->active = false;
    return XCode();
}

}  // namespace

const VX::UUID& IDriverRepository::IID() {
    return IID_DRIVER_REPOSITORY;
}

VXPPtr<IDriverRepository> DRIVER::INSTANCE() {
    // One reference is held for ever: the repository is never destroyed.
    static DriverRepository* repository = [] {
        DriverRepository* r = new DriverRepository();
        r->addRef();
        return r;
    }();
    return VXPPtr<IDriverRepository>(repository);
}

XCode DRIVER::ADD(const VXPPtr<IDriver>& driver) {
    VXLockPtr<IDriverRepository> repository(INSTANCE());
    return repository->add(driver);
}

XCode DRIVER::REMOVE(const VXPPtr<IDriver>& driver) {
    VXLockPtr<IDriverRepository> repository(INSTANCE());
    return repository->remove(driver);
}

XCode DRIVER::REMOVE(const String& driverName) {
    VXLockPtr<IDriverRepository> repository(INSTANCE());
    return repository->remove(driverName);
}

XCode DRIVER::GET_IF(const String& driverName, const VX::UUID& iid, void** out) {
    VXLockPtr<IDriverRepository> repository(INSTANCE());
    return repository->getIf(driverName, iid, out);
}

bool DRIVER::FIND_IF(const String& driverName, const VX::UUID& iid, void** out) {
    VXLockPtr<IDriverRepository> repository(INSTANCE());
    return repository->findIf(driverName, iid, out);
}

XCode DRIVER::GET_INTERFACES(const VX::UUID& did, const String& namePrefix, const VX::UUID& iid,
                             VXVector<VXPPtr<IDriver>>& list) {
    VXLockPtr<IDriverRepository> repository(INSTANCE());
    return repository->getDrivers(did, namePrefix, iid, list);
}

XCode DRIVER::ADD_REPOSITORY_OBSERVER(const String& observerName, const VX::UUID& did,
                                      const VX::UUID& iid, const String& namePrefix,
                                      unsigned priority, bool notifyExisting,
                                      bool notifyRemainingOnRemoval,
                                      IDriverRepositoryObserver* observer) {
    VXLockPtr<IDriverRepository> repository(INSTANCE());
    return repository->addRepositoryObserver(observerName, did, iid, namePrefix, priority,
                                             notifyExisting, notifyRemainingOnRemoval, observer);
}

XCode DRIVER::REMOVE_REPOSITORY_OBSERVER(const String& observerName) {
    VXLockPtr<IDriverRepository> repository(INSTANCE());
    return repository->removeRepositoryObserver(observerName);
}
