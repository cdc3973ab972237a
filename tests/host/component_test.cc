// The component model: identifiers, interface queries and their order,
// reference counts, drivers and info rows.
#include <gtest/gtest.h>

#include "components.h"
#include "host/component/driver_repository.h"
#include "host/component/info.h"
#include "host/component/uuid.h"

namespace {

using namespace test_components;

TEST(UUIDTest, TextAndBytes) {
    constexpr VX::UUID id = VX::UUID::OF("c9386e21-1ce2-4f5b-aaee-6963a31f920e");
    static_assert(id == VX::UUID(VX::UUID::Bytes{0xc9, 0x38, 0x6e, 0x21, 0x1c, 0xe2, 0x4f, 0x5b,
                                                 0xaa, 0xee, 0x69, 0x63, 0xa3, 0x1f, 0x92, 0x0e}));
    static_assert(!id.isNil() && VX::UUID().isNil());
    EXPECT_EQ(id.toString(), "c9386e21-1ce2-4f5b-aaee-6963a31f920e");

    VX::UUID parsed;
    ASSERT_TRUE(VX::UUID::PARSE("C9386E21-1CE2-4F5B-AAEE-6963A31F920E", parsed));
    EXPECT_EQ(parsed, id);
    for (const char* bad :
         {"", "c9386e21-1ce2-4f5b-aaee-6963a31f920", "c9386e21-1ce2-4f5b-aaee-6963a31f920e0",
          "c9386e211-ce2-4f5b-aaee-6963a31f920e", "g9386e21-1ce2-4f5b-aaee-6963a31f920e",
          "c9386e21_1ce2_4f5b_aaee_6963a31f920e"}) {
        VX::UUID out = id;
        EXPECT_FALSE(VX::UUID::PARSE(bad, out)) << bad;
        EXPECT_EQ(out, id) << bad;
    }
    // The host's identifiers are distinct.
    const VX::UUID ids[] = {IID_Unknown(), IDriver::IID(), IInfo::IID(),
                            IDriverRepositoryObserver::IID(), IDriverRepository::IID()};
    for (size_t i = 0; i < std::size(ids); ++i) {
        for (size_t j = i + 1; j < std::size(ids); ++j) EXPECT_NE(ids[i], ids[j]);
    }
}

TEST(ComponentTest, QueryAnswersEveryListedInterfaceWithAReference) {
    VXPtr<CFooBarBaz> object = new CFooBarBaz(DID_A, "test/object");
    EXPECT_EQ(object->getRefCount(), 1u);

    VXPPtr<IFoo> foo;
    VXPPtr<IBar> bar;
    VXPPtr<IBaz> baz;
    VXPPtr<IDriver> driver;
    VXPPtr<IUnknown> unknown;
    ASSERT_TRUE(object->queryIf(foo).isSuccess());
    ASSERT_TRUE(object->queryIf(bar).isSuccess());
    ASSERT_TRUE(object->queryIf(baz).isSuccess());
    ASSERT_TRUE(object->queryIf(driver).isSuccess());
    ASSERT_TRUE(object->queryIf(unknown).isSuccess());
    EXPECT_EQ(foo->foo() + bar->bar() + baz->baz(), 6);
    EXPECT_EQ(driver->getDriverName(), "test/object");
    EXPECT_EQ(driver->getDID(), DID_A);
    EXPECT_EQ(unknown.get(), static_cast<IUnknown*>(object.get()));
    EXPECT_EQ(object->getRefCount(), 6u);

    // The raw form takes one reference for the caller.
    void* raw = nullptr;
    ASSERT_TRUE(object->queryInterface(IBar::IID(), &raw).isSuccess());
    EXPECT_EQ(raw, static_cast<IBar*>(object.get()));
    EXPECT_EQ(object->getRefCount(), 7u);
    static_cast<IBar*>(raw)->release();

    // Without an out pointer it only answers.
    EXPECT_TRUE(object->queryInterface(IBaz::IID(), nullptr).isSuccess());
    EXPECT_TRUE(object->queryInterface(IInfo::IID(), nullptr).isErr());
    EXPECT_EQ(object->getRefCount(), 6u);
}

TEST(ComponentTest, MissingInterfaceGivesErrorAndNull) {
    VXPtr<CFoo> object = new CFoo(DID_A, "test/plain");
    void* raw = reinterpret_cast<void*>(0x1);
    EXPECT_TRUE(object->queryInterface(IBar::IID(), &raw).isErr());
    EXPECT_EQ(raw, nullptr);
    VXPPtr<IBar> bar = new CFooBar(DID_A, "test/other");  // not null before
    EXPECT_TRUE(object->queryIf(bar).isErr());
    EXPECT_FALSE(bar);
    EXPECT_FALSE(object->hasIf<IBaz>());
    EXPECT_TRUE(object->hasIf<IFoo>());
    EXPECT_EQ(object->getRefCount(), 1u);
}

// Two interface types that share one identifier: whichever is asked first
// answers, which shows the order CInherit asks in.
class IFooAlias : public virtual IUnknown {
public:
    static const VX::UUID& IID() { return IFoo::IID(); }
    virtual int alias() = 0;
};
class IBarAlias : public virtual IUnknown {
public:
    static const VX::UUID& IID() { return IBar::IID(); }
    virtual int alias() = 0;
};
class CBaseFirst : public CInherit<CBaseFirst, CFoo, IFooAlias> {
public:
    using CInherit::CInherit;
    int alias() override { return -1; }
};
class CListedOrder : public CInherit<CListedOrder, CObject, IBar, IBarAlias> {
public:
    CListedOrder() : CInherit(nullptr) {}
    int bar() override { return 2; }
    int alias() override { return -2; }
};

TEST(ComponentTest, BaseIsAskedFirstThenInterfacesInListedOrder) {
    VXPtr<CBaseFirst> a = new CBaseFirst(DID_A, "test/a");
    void* raw = nullptr;
    ASSERT_TRUE(a->queryInterface(IFoo::IID(), &raw).isSuccess());
    EXPECT_EQ(raw, static_cast<IFoo*>(a.get()));  // the base's IFoo, not IFooAlias
    EXPECT_NE(raw, static_cast<void*>(static_cast<IFooAlias*>(a.get())));
    static_cast<IFoo*>(raw)->release();

    VXPtr<CListedOrder> b = new CListedOrder();
    ASSERT_TRUE(b->queryInterface(IBar::IID(), &raw).isSuccess());
    EXPECT_EQ(raw, static_cast<IBar*>(b.get()));  // listed before IBarAlias
    static_cast<IBar*>(raw)->release();
}

// Records whether the lock was held while it was destroyed.
class CLockProbe : public CObject {
public:
    CLockProbe(VXLock* lock, bool* heldAtDestruction)
        : CObject(lock), lock_(lock), held_(heldAtDestruction) {}

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
    EXPECT_EQ(probe->getLock(), &lock);
    probe->protectedRelease();
    EXPECT_TRUE(held);
    EXPECT_FALSE(lock.isHeldByMe());

    // A plain release takes no lock.
    probe = new CLockProbe(&lock, &held);
    probe->addRef();
    probe->release();
    EXPECT_FALSE(held);
}

TEST(ComponentTest, InfoRowsPrintIndentedByLevel) {
    InfoContainer info;
    info.add(0, 0, "Constant", "example.pi");
    info.add(1, 0, "Value", "3.14");
    EXPECT_EQ(info.toString(), "Constant: example.pi\n  Value: 3.14\n");
    info.clear();
    EXPECT_EQ(info.toString(), "");
}

}  // namespace
