// Test components for the component-model tests: three small interfaces and
// drivers offering some of them, which record their destruction.
#pragma once

#include "host/component/driver.h"
#include "host/component/inherit.h"
#include "host/component/object.h"
#include "host/runtime/crit.h"

namespace test_components {

inline constexpr VX::UUID DID_A = VX::UUID::OF("63af729f-43ed-448b-818c-ab57cb2ef451");
inline constexpr VX::UUID DID_B = VX::UUID::OF("825de5bc-f929-477b-b37b-ea6f8af35431");

#define TEST_INTERFACE(NAME, ID, METHOD)                     \
    class NAME : public virtual IUnknown {                   \
    public:                                                  \
        static const VX::UUID& IID() {                       \
            static constexpr VX::UUID id = VX::UUID::OF(ID); \
            return id;                                       \
        }                                                    \
        virtual int METHOD() = 0;                            \
    }

TEST_INTERFACE(IFoo, "343a67ff-73da-4d2a-91b6-f63f35221021", foo);
TEST_INTERFACE(IBar, "ba8dedc8-6397-485f-8756-c5b1f37b9f89", bar);
TEST_INTERFACE(IBaz, "8db9f34d-45cd-41af-8f46-263418599510", baz);

// Sets *flag when destroyed (flag may be null).
class CFoo : public CInherit<CFoo, CDriver, IFoo> {
public:
    CFoo(const VX::UUID& did, const String& name, bool* destroyed = nullptr)
        : CInherit(did, name, &VX::SysEvent::LOCK()), destroyed_(destroyed) {}
    int foo() override { return 1; }

protected:
    ~CFoo() override {
        if (destroyed_) *destroyed_ = true;
    }

private:
    bool* destroyed_;
};

class CFooBar : public CInherit<CFooBar, CFoo, IBar> {
public:
    using CInherit::CInherit;
    int bar() override { return 2; }
};

}  // namespace test_components
