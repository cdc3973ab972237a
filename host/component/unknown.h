// IUnknown: the root of the component model. Every component is reference
// counted and answers, by identifier, which interfaces it offers.
//
// Every interface derives *virtually* from IUnknown
// (class IRead : public virtual IUnknown) and declares its identifier as
// static const VX::UUID& IID(). A component then has one IUnknown, so a
// pointer to any of its interfaces converts to IUnknown* without ambiguity.
#pragma once

#include "host/component/uuid.h"
#include "host/runtime/lock.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/xcode.h"

class IUnknown {
public:
    static const VX::UUID& IID();

    virtual void addRef() const = 0;
    virtual void release() const = 0;
    // release() while holding the component's lock (when it has one), for
    // components whose destruction must run under that lock.
    virtual void protectedRelease() const = 0;
    // The lock that guards the component; may be null.
    virtual VXLock* getLock() const = 0;
    // When the component offers interface `iid`: success, and unless `out` is
    // null, *out receives that interface's pointer (an I*, as void*) with one
    // reference taken for the caller. Otherwise an error, and *out (when
    // given) is set to null. With a null `out` it only answers.
    virtual XCode queryInterface(const VX::UUID& iid, void** out) = 0;

    // Typed form: `out` holds interface I (found by I::IID()) or is null.
    template <class I>
    XCode queryIf(VXPPtr<I>& out) {
        void* raw = nullptr;
        XCode rc = queryInterface(I::IID(), &raw);
        if (rc.isErr() || !raw) {
            out = nullptr;
            return rc.isErr() ? rc : XCode::Failure("INTERFACE NOT SUPPORTED");
        }
        I* typed = static_cast<I*>(raw);
        out = typed;       // the pointer's own reference...
        typed->release();  // ...replaces the one queryInterface took
        return XCode();
    }
    // True when the component offers interface I.
    template <class I>
    bool hasIf() {
        return queryInterface(I::IID(), nullptr).isSuccess();
    }

protected:
    virtual ~IUnknown() = default;
};

// The identifier of IUnknown itself, which every component offers.
inline const VX::UUID& IID_Unknown() {
    return IUnknown::IID();
}
