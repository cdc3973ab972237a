// The driver repository: registration, look-up, listing order, the reference
// that keeps a registered driver alive, and observers (including re-entrant
// changes from inside their callbacks).
#include <gtest/gtest.h>

#include <functional>

#include "components.h"
#include "host/component/driver_repository.h"

namespace {

using namespace test_components;

// The driver names of `found`, in order, each after a space.
template <class I>
String names(const VXVector<VXPPtr<I>>& found) {
    String out;
    for (const VXPPtr<I>& i : found) {
        VXPPtr<IDriver> d;
        EXPECT_TRUE(i->queryIf(d).isSuccess());
        out += " " + d->getDriverName();
    }
    return out;
}

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
    EXPECT_EQ(static_cast<CFoo*>(a.get())->getRefCount(), 2u);
    VXPPtr<IBar> bar;
    VXPPtr<IBaz> baz = new CFooBarBaz(DID_A, "test/unregistered");
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
    for (const auto& c : cases) {
        EXPECT_EQ(c.rc.getValue(), XCode::GENERIC_FAILURE) << c.text;
        EXPECT_EQ(c.rc.getString(), c.text);
    }
    EXPECT_FALSE(bar || baz || dup->getDriverRepository());
    EXPECT_EQ(static_cast<CFoo*>(dup.get())->getRefCount(), 1u);  // not kept
    a = nullptr;
    EXPECT_FALSE(destroyed);  // the repository keeps it
    ASSERT_TRUE(DRIVER::REMOVE("test/a").isSuccess());
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(DRIVER::REMOVE("test/a").getString(), "DRIVER DOES NOT EXIST: test/a");
    destroyed = false;
    VXPPtr<IDriver> client = add(new CFoo(DID_A, "test/client", &destroyed));
    ASSERT_TRUE(DRIVER::REMOVE(client).isSuccess());
    EXPECT_FALSE(client->getDriverRepository() || destroyed);  // the client's reference
    client = nullptr;
    EXPECT_TRUE(destroyed);
}

TEST_F(DriverRepositoryTest, ListsByTypePrefixAndInterfaceInRegistrationOrder) {
    add(new CFooBar(DID_A, "test/x/1"));
    add(new CFoo(DID_A, "test/x/2"));
    add(new CFooBar(DID_B, "test/x/3"));
    add(new CFooBarBaz(DID_A, "test/y/4"));
    add(new CFooBar(DID_A, "test/x/5"));

    struct Case {
        VX::UUID did;
        const char* prefix;
        VX::UUID iid;
        const char* expected;
    } cases[] = {
        {DID_A, "test/", IFoo::IID(), " test/x/1 test/x/2 test/y/4 test/x/5"},
        {DID_A, "test/x/", IBar::IID(), " test/x/1 test/x/5"},
        {DID_B, "test/", IBar::IID(), " test/x/3"},
        {DID_A, "test/", IBaz::IID(), " test/y/4"},
        {VX::UUID(), "test/x/", VX::UUID(), " test/x/1 test/x/2 test/x/3 test/x/5"},
        {DID_A, "test/z", IFoo::IID(), ""},
    };
    for (const Case& c : cases) {
        VXVector<VXPPtr<IDriver>> found;
        ASSERT_TRUE(DRIVER::GET_INTERFACES(c.did, c.prefix, c.iid, found).isSuccess());
        EXPECT_EQ(names(found), c.expected) << c.prefix << " " << c.iid.toString().c_str();
    }

    // Re-registering puts a driver last; the typed listing gives interfaces.
    VXPPtr<IDriver> first;
    ASSERT_TRUE(DRIVER::GET_IF("test/x/1", first).isSuccess());
    DRIVER::REMOVE(first);
    DRIVER::ADD(first);
    VXVector<VXPPtr<IBar>> bars;
    ASSERT_TRUE(DRIVER::GET_INTERFACES(DID_A, "test/", bars).isSuccess());
    EXPECT_EQ(names(bars), " test/y/4 test/x/5 test/x/1");
    EXPECT_EQ(bars[0]->bar(), 2);
}

TEST_F(DriverRepositoryTest, ObserversSeeMatchingAddsAndRemovals) {
    RecordingObserver observer("obs", &log_);
    ASSERT_TRUE(observer.registerFor(DID_A, IBar::IID(), "test/watched/").isSuccess());
    EXPECT_EQ(observer.registerFor(DID_A, IBar::IID(), "").getString(),
              "OBSERVER ALREADY EXISTS: obs");

    bool destroyedDuringCallback = true;
    bool destroyed = false;
    observer.onRemoved = [&](VXPPtr<IDriver>& d) {
        destroyedDuringCallback = destroyed;
        EXPECT_FALSE(d->getDriverRepository());
        EXPECT_TRUE(DRIVER::GET_IF(d->getDriverName(), IUnknown::IID(), nullptr).isErr());
    };
    add(new CFooBar(DID_A, "test/watched/1", &destroyed));
    add(new CFoo(DID_A, "test/watched/no-bar"));
    add(new CFooBar(DID_B, "test/watched/other-type"));
    add(new CFooBar(DID_A, "test/elsewhere"));
    DRIVER::REMOVE("test/watched/1");
    EXPECT_EQ(log_, " obs:+test/watched/1 obs:-test/watched/1");
    EXPECT_FALSE(destroyedDuringCallback);
    EXPECT_TRUE(destroyed);

    ASSERT_TRUE(DRIVER::REMOVE_REPOSITORY_OBSERVER("obs").isSuccess());
    EXPECT_EQ(DRIVER::REMOVE_REPOSITORY_OBSERVER("obs").getString(),
              "OBSERVER DOES NOT EXIST: obs");
    add(new CFooBar(DID_A, "test/watched/2"));
    EXPECT_EQ(log_, " obs:+test/watched/1 obs:-test/watched/1");
}

// Observers run by priority, then in registration order; on request they
// hear of the drivers already there, and of those remaining when they leave.
TEST_F(DriverRepositoryTest, ObserverOrderAndExistingAndRemainingDrivers) {
    add(new CFoo(DID_A, "test/e1"));
    RecordingObserver late("late", &log_), first("first", &log_), second("second", &log_);
    late.registerFor(DID_A, VX::UUID(), "test/", 5, true, true);
    first.registerFor(DID_A, VX::UUID(), "test/", 1);
    second.registerFor(DID_A, VX::UUID(), "test/", 1);
    add(new CFoo(DID_A, "test/p"));
    DRIVER::REMOVE("test/e1");
    DRIVER::REMOVE_REPOSITORY_OBSERVER("late");
    EXPECT_EQ(log_,
              " late:+test/e1 first:+test/p second:+test/p late:+test/p first:-test/e1 "
              "second:-test/e1 late:-test/e1 late:-test/p");
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

    // An observer may remove itself from inside its own callback.
    log_.clear();
    a.onAdded = nullptr;
    c.onRemoved = [&](VXPPtr<IDriver>&) { DRIVER::REMOVE_REPOSITORY_OBSERVER("c"); };
    DRIVER::REMOVE("test/1");
    DRIVER::REMOVE("test/from-callback");
    EXPECT_EQ(log_, " a:-test/1 c:-test/1 a:-test/from-callback");
}

}  // namespace
