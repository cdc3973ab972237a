// The component model: interface queries, reference counts, and destruction
// under the lock.
#include <gtest/gtest.h>

#include "components.h"
#include "host/component/driver_repository.h"

namespace {

using namespace test_components;

TEST(ComponentTest, QueriesAnswerListedInterfacesWithAReference) {
    VXPtr<CFooBar> object = new CFooBar(DID_A, "test/object");
    VXPPtr<IFoo> foo;
    VXPPtr<IBar> bar;
    VXPPtr<IDriver> driver;
    ASSERT_TRUE(object->queryIf(foo).isSuccess() && object->queryIf(bar).isSuccess() &&
                object->queryIf(driver).isSuccess());
    EXPECT_EQ(foo->foo() + bar->bar(), 3);
    EXPECT_EQ(driver->getDID(), DID_A);
    EXPECT_EQ(object->getRefCount(), 4u);
    void* raw = nullptr;
    ASSERT_TRUE(object->queryInterface(IBar::IID(), &raw).isSuccess());
    EXPECT_EQ(raw, static_cast<IBar*>(object.get()));
    static_cast<IBar*>(raw)->release();  // the caller of the raw form has a reference
    EXPECT_TRUE(object->queryInterface(IBar::IID(), nullptr).isSuccess());  // only answers
    EXPECT_EQ(object->getRefCount(), 4u);

    VXPtr<CFoo> plain = new CFoo(DID_A, "test/plain");
    raw = reinterpret_cast<void*>(0x1);
    EXPECT_TRUE(plain->queryInterface(IBar::IID(), &raw).isErr());
    EXPECT_EQ(raw, nullptr);
    EXPECT_TRUE(plain->queryIf(bar).isErr());  // not null before
    EXPECT_FALSE(bar || plain->hasIf<IBaz>());
    EXPECT_EQ(plain->getRefCount(), 1u);
}

// Records whether the lock was held while it was destroyed.
class CLockProbe : public CObject {
public:
    CLockProbe(VXLock* lock, bool* held) : CObject(lock), lock_(lock), held_(held) {}

protected:
    ~CLockProbe() override { *held_ = lock_->isHeldByMe(); }

private:
    VXLock* lock_;
    bool* held_;
};

TEST(ComponentTest, ProtectedReleaseDestroysUnderTheLock) {
    VXLock lock;
    bool held = false;
    CLockProbe* probe = new CLockProbe(&lock, &held);
    probe->addRef();
    probe->protectedRelease();
    EXPECT_TRUE(held);
    EXPECT_FALSE(lock.isHeldByMe());
    probe = new CLockProbe(&lock, &held);
    probe->addRef();
    probe->release();  // takes no lock
    EXPECT_FALSE(held);
}

}  // namespace
