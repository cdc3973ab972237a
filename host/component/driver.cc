// IDriver's identifier and CDriver's repository link.
#include "host/component/driver.h"

#include "host/component/driver_repository.h"

namespace {

constexpr VX::UUID IID_DRIVER = VX::UUID::OF("7baba9fa-b806-4dd6-b9bb-271883bf6bde");

}  // namespace

const VX::UUID& IDriver::IID() {
    return IID_DRIVER;
}

VXPPtr<IDriverRepository> CDriver::getDriverRepository() const {
    return VXPPtr<IDriverRepository>(repository_);
}

void CDriver::setDriverRepository(IDriverRepository* repository) {
    repository_ = repository;
}
