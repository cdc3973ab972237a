// The driver repository: registration, look-up, the reference that keeps a
// registered driver alive, and observers (including re-entrant changes from
// inside their callbacks). Listings by type, prefix and interface, in
// registration order, are what the engine's name patterns are made of (its
// tests).
#include <gtest/gtest.h>

#include <functional>

#include "components.h"
#include "host/component/driver_repository.h"

namespace {

using namespace test_components;

// Records every callback as " observer:+name" or " observer:-name"; runs `onAdded` / `onRemoved`
// hooks from inside the callback. Unregisters itself when destroyed.
class RecordingObserver : public DriverRepositoryObserver {
public:
    RecordingObserver(const String& name, String* log) : name_(name), log_(log) {}
    ~RecordingObserver() override { DRIVER::REMOVE_REPOSITORY_OBSERVER(name_); }

    XCode registerFor(const VX::UUID& did, const VX::UUID& iid, const String& prefix,
                      unsigned priority = 0, bool notifyExisting = false,
                      bool notifyRemaining = false) {
        return DRIVER::ADD_REPOSITORY_OBSERVER(name_, did, iid, prefix, priority, notifyExisting,
                                               notifyRemaining, this);
    }

    XCode onDriverAdded(String& driverName, VXPPtr<IDriverRepository>& repository,
                        VXPPtr<IDriver>& driver) override {
        EXPECT_EQ(driverName, driver->getDriverName());
        EXPECT_EQ(repository, DRIVER::INSTANCE());
        EXPECT_TRUE(VX::SysEvent::LOCK().isHeldByMe());
        *log_ += " " + name_ + ":+" + driverName;
        if (onAdded) onAdded(driver);
        return XCode();
    }
    void onDriverRemoved(VXPPtr<IDriverRepository>& repository, VXPPtr<IDriver>& driver) override {
        EXPECT_EQ(repository, DRIVER::INSTANCE());
        *log_ += " " + name_ + ":-" + driver->getDriverName();
        if (onRemoved) onRemoved(driver);
    }

    std::function<void(VXPPtr<IDriver>&)> onAdded;
    std::function<void(VXPPtr<IDriver>&)> onRemoved;

private:
    String name_;
    String* log_;
};

class DriverRepositoryTest : public ::testing::Test {
protected:
    // Drops every driver a test left behind under "test/".
    void TearDown() override {
        VXVector<VXPPtr<IDriver>> left;
        DRIVER::GET_INTERFACES(VX::UUID(), "test/", VX::UUID(), left);
        for (VXPPtr<IDriver>& d : left) DRIVER::REMOVE(d);
    }

    static VXPPtr<IDriver> add(IDriver* driver) {
        VXPPtr<IDriver> d(driver);
        EXPECT_TRUE(DRIVER::ADD(d).isSuccess()) << driver->getDriverName().c_str();
        return d;
    }

    String log_;
};

// Registration, look-up, removal by name or object, their error texts, and
// the reference that keeps a registered driver alive.
TEST_F(DriverRepositoryTest, AddGetRemoveAndTheirFailures) {
    bool destroyed = false;
    VXPPtr<IDriver> a = add(new CFooBar(DID_A, "test/a", &destroyed));
    VXPPtr<IDriver> dup(new CFoo(DID_A, "test/a"));
    EXPECT_EQ(a->getDriverRepository(), DRIVER::INSTANCE());
    VXPPtr<IBar> bar;
    VXPPtr<IBaz> baz;
    ASSERT_TRUE(DRIVER::GET_IF("test/a", bar).isSuccess());
    EXPECT_EQ(bar->bar(), 2);
    const struct {
        XCode rc;
        const char* text;
    } cases[] = {
        {DRIVER::GET_IF("test/a", baz), "INTERFACE NOT SUPPORTED: test/a"},
        {DRIVER::GET_IF("test/none", bar), "DRIVER DOES NOT EXIST: test/none"},
        {DRIVER::ADD(dup), "DRIVER ALREADY EXISTS: test/a"},
        {DRIVER::REMOVE(dup), "DRIVER DOES NOT EXIST: test/a"},  // not the registered one
        {DRIVER::ADD(VXPPtr<IDriver>(new CFoo(DID_A, ""))), "INVALID DRIVER"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.rc.getString(), c.text);
    EXPECT_FALSE(bar || baz || dup->getDriverRepository());
    EXPECT_EQ(static_cast<CFoo*>(dup.get())->getRefCount(), 1u);  // not kept
    a = nullptr;
    EXPECT_FALSE(destroyed);  // the repository keeps it
    ASSERT_TRUE(DRIVER::REMOVE("test/a").isSuccess());
    EXPECT_TRUE(destroyed);
    destroyed = false;
    VXPPtr<IDriver> client = add(new CFoo(DID_A, "test/client", &destroyed));
    ASSERT_TRUE(DRIVER::REMOVE(client).isSuccess());
    EXPECT_FALSE(client->getDriverRepository() || destroyed);  // the client's reference
}

// Observers hear of matching drivers only, by priority, then in registration
// order; on request of the drivers already there, and of those remaining when
// they leave. A removed driver is gone from the repository, but not yet
// destroyed, when they hear of it.
TEST_F(DriverRepositoryTest, ObserversHearMatchingDriversInTheirOrder) {
    add(new CFooBar(DID_A, "test/p0"));
    RecordingObserver late("late", &log_), first("first", &log_), second("second", &log_);
    late.registerFor(DID_A, IBar::IID(), "test/p", 5, true, true);
    first.registerFor(DID_A, VX::UUID(), "test/p", 1);
    ASSERT_TRUE(second.registerFor(DID_A, VX::UUID(), "test/p", 1).isSuccess());
    EXPECT_EQ(second.registerFor(DID_A, VX::UUID(), "").getString(),
              "OBSERVER ALREADY EXISTS: second");
    bool destroyed = false, destroyedDuringCallback = true;
    late.onRemoved = [&](VXPPtr<IDriver>& d) {
        if (d->getDriverName() != "test/p1") return;
        destroyedDuringCallback = destroyed;
        EXPECT_TRUE(DRIVER::GET_IF("test/p1", IUnknown::IID(), nullptr).isErr());
    };
    add(new CFooBar(DID_A, "test/p1", &destroyed));
    add(new CFoo(DID_A, "test/p-no-bar"));
    add(new CFooBar(DID_B, "test/p-other-type"));
    add(new CFooBar(DID_A, "test/elsewhere"));
    DRIVER::REMOVE("test/p0");
    DRIVER::REMOVE("test/p1");
    EXPECT_TRUE(destroyed && !destroyedDuringCallback);
    add(new CFooBar(DID_A, "test/p2"));
    ASSERT_TRUE(DRIVER::REMOVE_REPOSITORY_OBSERVER("late").isSuccess());
    EXPECT_EQ(DRIVER::REMOVE_REPOSITORY_OBSERVER("late").getString(),
              "OBSERVER DOES NOT EXIST: late");
    add(new CFooBar(DID_A, "test/p3"));
    EXPECT_EQ(log_,
              " late:+test/p0 first:+test/p1 second:+test/p1 late:+test/p1 first:+test/p-no-bar"
              " second:+test/p-no-bar first:-test/p0 second:-test/p0 late:-test/p0"
              " first:-test/p1 second:-test/p1 late:-test/p1 first:+test/p2 second:+test/p2"
              " late:+test/p2 late:-test/p2 first:+test/p3 second:+test/p3");
}

TEST_F(DriverRepositoryTest, CallbacksMayChangeDriversAndObservers) {
    RecordingObserver a("a", &log_), b("b", &log_), c("c", &log_);
    a.registerFor(DID_A, VX::UUID(), "test/");
    b.registerFor(DID_A, VX::UUID(), "test/");
    c.registerFor(DID_A, VX::UUID(), "test/");

    // a removes b while an add is being told: b hears nothing more; a adds a
    // further driver, which every remaining observer hears about.
    a.onAdded = [&](VXPPtr<IDriver>& d) {
        if (d->getDriverName() != "test/1") return;
        DRIVER::REMOVE_REPOSITORY_OBSERVER("b");
        add(new CFoo(DID_A, "test/from-callback"));
    };
    add(new CFoo(DID_A, "test/1"));
    EXPECT_EQ(log_, " a:+test/1 a:+test/from-callback c:+test/from-callback c:+test/1");
    EXPECT_TRUE(DRIVER::GET_IF("test/from-callback", IFoo::IID(), nullptr).isSuccess());

    // a removes the driver being added: observers after it are not told of
    // an add that no longer holds, but everyone hears of the removal.
    log_.clear();
    a.onAdded = [&](VXPPtr<IDriver>& d) { DRIVER::REMOVE(d); };
    add(new CFoo(DID_A, "test/2"));
    EXPECT_EQ(log_, " a:+test/2 a:-test/2 c:-test/2");
}

}  // namespace
