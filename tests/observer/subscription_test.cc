// What a client sees through its callbacks as names are observed before and
// after they exist, as patterns overlap, and as subscriptions are dropped.
// (What a watch by pattern shows is in the engine_observer golden
// transcript.)
#include <gtest/gtest.h>

#include <vector>

#include "host/component/driver_repository.h"
#include "observer/observer_test_support.h"
#include "sysevent/repository/identifiers.h"

namespace VX::SysEvent::testing {
namespace {

using Subscription = ObserverTest;

struct LifeCase {
    const char* label;
    const char* pattern;  // observed before "<prefix>.a" exists
    const char* name;     // the name then created, changed and destroyed
    bool notifyNow;
    std::vector<Seen> atOnce;      // right after addTo
    std::vector<Seen> onCreation;  // created with 5
    std::vector<Seen> onDestroy;   // destroyed after a change to 7
};

TEST_F(Subscription, ClientSeesANameFromBeforeItExistsUntilAfterItIsGone) {
    const LifeCase cases[] = {
        {"plain name, notifyNow",
         "life1.a",
         "life1.a",
         true,
         {changed("life1.a", kNA)},
         {changed("life1.a", "5")},
         {changed("life1.a", kNA), changed("life1.a", kNA)}},
        // Without notifyNow neither the missing name nor the value at creation
        // is reported; the drop to "#N/A!" is a change and still arrives.
        {"plain name, later only", "life4.a", "life4.a", false, {}, {}, {changed("life4.a", kNA)}},
    };
    for (const LifeCase& c : cases) {
        SCOPED_TRACE(c.label);
        Recorder r;
        Observer observer(r.direct(), r.directDestroy());
        observer.addTo(c.pattern, c.notifyNow);
        EXPECT_EQ(r.seen(), c.atOnce);

        r.clear();
        set(c.name, 5);
        EXPECT_EQ(r.seen(), c.onCreation);

        r.clear();
        set(c.name, 7);
        EXPECT_EQ(r.seen(), std::vector<Seen>{changed(c.name, "7")});

        r.clear();
        destroy(c.name);
        EXPECT_EQ(r.seen(), c.onDestroy);

        // The pattern outlives the object: a new one is caught again.
        r.clear();
        set(c.name, 9);
        EXPECT_EQ(r.seen().size(), c.notifyNow ? 1u : 0u);
        r.clear();
        set(c.name, 10);
        EXPECT_EQ(r.seen(), std::vector<Seen>{changed(c.name, "10")});
        destroy(c.name);
    }
}

TEST_F(Subscription, OverlappingPatternsCountOneSubscriptionPerMatchOfANewObject) {
    Recorder r;
    Observer observer(r.direct());
    observer.addTo("ov1.%", false);
    observer.addTo("%.x", false);
    set("ov1.x", 1);  // both patterns catch it as it appears
    r.clear();
    set("ov1.x", 2);
    EXPECT_EQ(r.seen(), (std::vector<Seen>{changed("ov1.x", "2"), changed("ov1.x", "2")}));

    // Found by the second pattern while already subscribed: not again.
    set("ov2.w", 1);
    Recorder lateSeen;
    Observer late(lateSeen.direct());
    late.addTo("ov2.%", false);
    late.addTo("%.w", false);
    set("ov2.w", 2);
    EXPECT_EQ(lateSeen.seen(), std::vector<Seen>{changed("ov2.w", "2")});

    // Dropping one of the overlapping patterns unsubscribes the object fully.
    observer.removeFrom("ov1.%");
    r.clear();
    set("ov1.x", 3);
    EXPECT_TRUE(r.seen().empty());
    destroy("ov1.x");
    destroy("ov2.w");
}

TEST_F(Subscription, AnObjectObservedDirectlyIsSubscribedOnceAndReportsItsDestruction) {
    set("direct.a", 1);
    Recorder r;
    Observer observer(r.direct(), r.directDestroy());
    VXPPtr<IRead> object = readOf("direct.a");
    ASSERT_TRUE(object);
    observer.addTo(object, true);
    observer.addTo(object, true);
    observer.addTo("direct.a", true);  // the pattern finds it subscribed
    set("direct.a", 2);
    EXPECT_EQ(r.seen(), (std::vector<Seen>{changed("direct.a", "1"), changed("direct.a", "2")}));

    observer.removeFrom(object);
    r.clear();
    set("direct.a", 3);
    EXPECT_TRUE(r.seen().empty());

    // Observed directly only, and unregistered while this test still holds
    // it: the destroy callback comes with the last reference.
    observer.removeFrom("direct.a");
    observer.addTo(object, false);
    destroy("direct.a");
    EXPECT_EQ(r.seen(), std::vector<Seen>{changed("direct.a", kNA)});
    r.clear();
    object = nullptr;
    EXPECT_EQ(r.seen(), std::vector<Seen>{destroyed("direct.a")});
}

TEST_F(Subscription, RemovingPatternsStopsChangesAndLaterObjects) {
    set("all.a", 1);
    Recorder r;
    Observer observer(r.direct());
    observer.addTo("all.%", false);
    observer.addTo("other.b", false);
    observer.addTo("keep.%", false);
    VXPPtr<IRead> object = readOf("all.a");
    observer.addTo(object, false);

    observer.removeFrom("keep.%");
    set("keep.a", 1);
    observer.removeFromAll();
    set("all.a", 2);
    set("all.c", 3);    // would match the forgotten pattern
    set("other.b", 4);  // would match the forgotten plain name
    EXPECT_TRUE(r.seen().empty());

    observer.addTo("all.c", true);  // still usable
    EXPECT_EQ(r.seen(), std::vector<Seen>{changed("all.c", "3")});
    object = nullptr;
    for (const char* n : {"all.a", "all.c", "other.b", "keep.a"}) destroy(n);
}

// Stands in for another component that wants an Observer's registration name.
class Squatter : public DriverRepositoryObserver {
public:
    XCode onDriverAdded(String&, VXPPtr<IDriverRepository>&, VXPPtr<IDriver>&) override {
        return XCode();
    }
    void onDriverRemoved(VXPPtr<IDriverRepository>&, VXPPtr<IDriver>&) override {}
};

TEST_F(Subscription, HoldsItsDriverRepositoryNameFromConstructionToDestruction) {
    auto* observer = new Observer;
    const String name = observer->getDriverRepositoryObserverName();
    EXPECT_EQ(name, String::Formatted("SysEvent::Observer[%p]", static_cast<void*>(observer)));
    Squatter squatter;
    auto squat = [&] {
        return DRIVER::ADD_REPOSITORY_OBSERVER(name, DID_Variable(), IRead::IID(), "var/", 0, false,
                                               false, &squatter);
    };
    EXPECT_EQ(squat().getString(), "OBSERVER ALREADY EXISTS: " + name);
    delete observer;
    EXPECT_TRUE(squat().isSuccess());
    EXPECT_TRUE(DRIVER::REMOVE_REPOSITORY_OBSERVER(name).isSuccess());
}

}  // namespace
}  // namespace VX::SysEvent::testing
