// CObject: the root answers of the component model.
#include "host/component/object.h"

namespace {

// IID of IUnknown. Fixed for ever: components of other processes compare it.
constexpr VX::UUID IID_UNKNOWN = VX::UUID::OF("7273dad7-ea8f-491c-bf9e-15efa49406e8");

}  // namespace

const VX::UUID& IUnknown::IID() {
    return IID_UNKNOWN;
}

void CObject::protectedRelease() const {
    // The lock is not the component's own, so it survives the release.
    VXLock* lock = getLock();
    if (lock) lock->lock();
    release();
    if (lock) lock->unlock();
}

XCode CObject::queryInterface(const VX::UUID& iid, void** out) {
    if (iid == IUnknown::IID()) {
        if (out) {
            IUnknown* self = this;
            self->addRef();
            *out = self;
        }
        return XCode();
    }
    if (out) *out = nullptr;
    return XCode::Failure("INTERFACE NOT SUPPORTED");
}
