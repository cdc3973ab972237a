// CObject: the implementation of IUnknown on VX::RefCounted, the base of
// every component. It offers IUnknown only; CInherit adds interfaces.
#pragma once

#include "host/component/unknown.h"
#include "host/runtime/ref_counted.h"

class CObject : public virtual IUnknown, public VX::RefCounted {
public:
    // `lock` guards the component (may be null) and must outlive it.
    explicit CObject(VXLock* lock = nullptr) : VX::RefCounted(lock) {}

    void addRef() const override { VX::RefCounted::addRef(); }
    void release() const override { VX::RefCounted::release(); }
    void protectedRelease() const override;
    VXLock* getLock() const override { return VX::RefCounted::getLock(); }
    XCode queryInterface(const VX::UUID& iid, void** out) override;

protected:
    ~CObject() override = default;
};
