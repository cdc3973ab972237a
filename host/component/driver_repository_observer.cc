// IDriverRepositoryObserver's identifier.
#include "host/component/driver_repository_observer.h"

namespace {

constexpr VX::UUID IID_DRIVER_REPOSITORY_OBSERVER =
    VX::UUID::OF("96a64164-3318-41e1-b36d-0a47edec763e");

}  // namespace

const VX::UUID& IDriverRepositoryObserver::IID() {
    return IID_DRIVER_REPOSITORY_OBSERVER;
}
