// How notifications reach the client: through a subclass, dropped without a
// callable, to a replaced callback, directly, synchronously under a loop's
// lock, and queued to an event loop (on the manual clock, dropped or kept
// when the Observer dies, and once on the loop's real thread), plus a direct
// callback that calls the Repository while a change is delivered, client
// code that throws, and observers of the event form sharing one change.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "host/runtime/event_loop.h"
#include "host/runtime/monitor.h"
#include "observer/observer_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Deliveries = ObserverTest;

// Receives the notifications by overriding instead of through callbacks.
class Counting : public Observer {
public:
    void notifyValueChanged(const String& name, const Value& value) override {
        seen.push_back(testing::changed(name.c_str(), value.toString().c_str()));
    }
    void notifyValueDestroyed(const String& name) override {
        seen.push_back(testing::destroyed(name.c_str()));
    }
    std::vector<Seen> seen;
};

TEST_F(Deliveries, SubclassReceivesWhatCallbacksWouldAndObserverWithoutCallbacksDropsIt) {
    Counting counting;
    Observer silent;  // no callable: everything it receives is dropped
    counting.addTo("sub.a", true);
    silent.addTo("sub.a", true);
    set("sub.a", 1);
    set("sub.a", 2);
    VXPPtr<IRead> object = readOf("sub.a");
    counting.addTo(object, false);  // found subscribed already
    destroy("sub.a");
    object = nullptr;
    EXPECT_EQ(counting.seen, (std::vector<Seen>{changed("sub.a", kNA), changed("sub.a", "1"),
                                                changed("sub.a", "2"), changed("sub.a", kNA),
                                                changed("sub.a", kNA)}));
}

TEST_F(Deliveries, ReplacedCallbackTakesOverAtOnce) {
    set("swap.a", 1);
    Recorder first, second;
    Observer observer(first.direct(), first.directDestroy());
    VXPPtr<IRead> object = readOf("swap.a");
    observer.addTo(object, false);
    observer.setValueChangeCallback(second.direct());
    observer.setDestroyCallback(second.directDestroy());
    set("swap.a", 2);
    destroy("swap.a");
    object = nullptr;
    EXPECT_TRUE(first.seen().empty());
    EXPECT_EQ(second.seen(), (std::vector<Seen>{changed("swap.a", "2"), changed("swap.a", kNA),
                                                destroyed("swap.a")}));
}

TEST_F(Deliveries, DirectAndSynchronousCallbacksRunInsideTheChangeUnderTheEngineLock) {
    bool heldDirect = false, heldSync = false;
    std::thread::id syncThread;
    Observer direct(Observer::ValueChangeCallback(
        VX::directCall(), [&](String, Value) { heldDirect = LOCK().isHeldByMe(); }));
    Observer sync(Observer::ValueChangeCallback(
        EVENT_LOOP(),
        [&](String, Value) {
            heldSync = LOCK().isHeldByMe();
            syncThread = std::this_thread::get_id();
        },
        VX::Delivery::Sync));
    direct.addTo("inline.a", false);
    sync.addTo("inline.a", false);
    set("inline.a", 1);  // creates the name: nothing reported without notifyNow
    EXPECT_FALSE(heldDirect || heldSync);
    set("inline.a", 2);
    EXPECT_TRUE(heldDirect);
    EXPECT_TRUE(heldSync);
    EXPECT_EQ(syncThread, std::this_thread::get_id());
    destroy("inline.a");
}

TEST_F(Deliveries, QueuedCallsRunInOrderWhenTheLoopRunsAndDieWithTheObserverUnlessKept) {
    struct Case {
        const char* label;
        bool observerLives;
        bool keep;  // setDontCancelOnDestruction
        std::vector<Seen> seen;
    };
    const std::vector<Seen> all = {changed("q.a", kNA), changed("q.a", "1"), changed("q.a", "2")};
    const Case cases[] = {
        {"observer alive", true, false, all},
        {"observer gone, calls dropped", false, false, {}},
        {"observer gone, calls kept", false, true, all},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        Recorder r;
        Observer::ValueChangeCallback callback = r.on(EVENT_LOOP(), VX::Delivery::Queued);
        callback.setDontCancelOnDestruction(c.keep);
        auto observer = std::make_unique<Observer>(std::move(callback));
        observer->addTo("q.a", true);
        set("q.a", 1);
        set("q.a", 2);
        if (!c.observerLives) observer.reset();
        EXPECT_TRUE(r.seen().empty());
        VX::ManualTime::ADVANCE(0);
        EXPECT_EQ(r.seen(), c.seen);
        destroy("q.a");
    }
}

// The one test on the engine loop's own thread: queued calls arrive there,
// and calls still queued when the Observer dies never run.
TEST(DeliveryOnRealThread, QueuedCallsRunOnTheLoopThreadAndDieWithTheObserver) {
    ASSERT_FALSE(VX::ManualTime::IS_ENABLED());
    Recorder r;
    std::thread::id ranOn;
    {
        Observer observer(Observer::ValueChangeCallback(
            EVENT_LOOP(),
            [&](String n, Value v) {
                ranOn = std::this_thread::get_id();
                r.onChange(n, v);
            },
            VX::Delivery::Queued));
        observer.addTo("rt.a", true);
        set("rt.a", 1);
        ASSERT_TRUE(r.waitFor(2));
        EXPECT_NE(ranOn, std::this_thread::get_id());
        EXPECT_EQ(r.seen(), (std::vector<Seen>{changed("rt.a", kNA), changed("rt.a", "1")}));

        // Holding the engine lock keeps the loop from running anything until
        // the Observer is gone.
        LOCK().lock();
        set("rt.a", 2);
    }
    LOCK().unlock();
    // Calls run in posting order: once this marker ran, so did (or would
    // have) every handling signalled before it.
    Recorder marker;
    EVENT_LOOP().post([&] { marker.onDestroy("marker"); });
    ASSERT_TRUE(marker.waitFor(1));
    EXPECT_EQ(r.seen().size(), 2u);
    destroy("rt.a");
}

TEST_F(Deliveries, DirectCallbackMayUseTheRepositoryWhileTheChangeIsDelivered) {
    set("re.b", 0);
    set("re.a", 0);
    {
        VXAutoLock engine(LOCK());
        ASSERT_TRUE(Repository::INSTANCE()->createExpression("re", "twice", "b * 2").isSuccess());
    }
    Recorder r;
    Observer watcher(r.direct());
    watcher.addTo("re.b", false);
    watcher.addTo("re.twice", false);
    std::vector<unsigned long long> readBack;
    Observer writer(Observer::ValueChangeCallback(VX::directCall(), [&](String, Value v) {
        // Re-enters the engine lock held by the changing thread.
        ASSERT_TRUE(Repository::SET_VALUE("re.b", Value(v.data.uint * 10)).isSuccess());
        Value b;
        ASSERT_TRUE(Repository::GET_VALUE("re.b", b).isSuccess());
        readBack.push_back(b.data.uint);
    }));
    writer.addTo("re.a", false);
    set("re.a", 4);
    EXPECT_EQ(readBack, std::vector<unsigned long long>{40});
    // The variable's own observers hear of the value set from the callback,
    // and so does the expression over it.
    EXPECT_EQ(r.seen(), (std::vector<Seen>{changed("re.b", "40"), changed("re.twice", "80")}));
    {
        VXAutoLock engine(LOCK());
        Repository::INSTANCE()->destroyExpression("re", "twice");
    }
    destroy("re.a");
    destroy("re.b");
}

// Client code that throws, a standard exception or anything else, from a
// direct, synchronous or queued callable or from an override, is reported on
// the monitor with the object's name (a queued call by the loop, which no
// longer knows the object); every other observer still gets each
// notification, and so does the thrower the next time.
TEST_F(Deliveries, ThrowingClientCodeIsReportedAndEveryOtherObserverStillReceives) {
    struct Thrower : Observer {
        using Observer::Observer;
        void notifyValueDestroyed(const String&) override { throw 7; }
    };
    RTD::CaptureMonitor monitor(0);
    MON = &monitor;
    Recorder before, after;
    int calls = 0;
    auto boom = [&](String, Value) {
        ++calls;
        throw std::runtime_error("boom");
    };
    Observer first(before.direct(), before.directDestroy());
    Thrower direct(Observer::ValueChangeCallback(VX::directCall(), boom));
    Thrower sync(Observer::ValueChangeCallback(EVENT_LOOP(), boom, VX::Delivery::Sync));
    Thrower queued(Observer::ValueChangeCallback(EVENT_LOOP(), boom, VX::Delivery::Queued));
    Observer last(after.direct(), after.directDestroy());
    Observer* all[] = {&first, &direct, &sync, &queued, &last};
    for (Observer* o : all) o->addTo("throw.a", true);
    set("throw.a", 1);
    set("throw.a", 2);
    set("throw.b", 1);
    VXPPtr<IRead> b = readOf("throw.b");
    for (Observer* o : all) o->addTo(b, false);
    b = nullptr;
    destroy("throw.a");
    destroy("throw.b");
    VX::ManualTime::ADVANCE(0);  // the queued calls run, and throw, on the loop
    MON = nullptr;

    // Destroying a name reports #N/A! as its value and again as it leaves.
    const std::vector<Seen> expected{changed("throw.a", kNA), changed("throw.a", "1"),
                                     changed("throw.a", "2"), changed("throw.a", kNA),
                                     changed("throw.a", kNA), changed("throw.b", kNA),
                                     destroyed("throw.b")};
    EXPECT_EQ(before.seen(), expected);
    EXPECT_EQ(after.seen(), expected);
    EXPECT_EQ(calls, 18);
    EXPECT_TRUE(monitor.contains("[throw.a] Observer callback failed: boom"));
    EXPECT_TRUE(monitor.contains("[event loop] Queued callback failed: boom"));
    EXPECT_TRUE(monitor.contains("[throw.b] Observer callback failed"));
}

// Observers of the event form share one change: whatever one of them did to
// the event it was handed (read it, made its bytes, dropped its source, left
// it unread), each of the others still reads the whole change from its own.
TEST_F(Deliveries, EachEventFormObserverReadsTheWholeChangeWhateverTheOthersDidToTheirs) {
    enum Use { VALUES, BYTES_FIRST, DROP_SOURCE, UNREAD };
    struct Reader : IReadObserver {
        explicit Reader(Use u) : use(u) {}
        void onValueChanged(ObserverEvent<IRead>& event) override {
            if (use == UNREAD) return;
            if (use == BYTES_FIRST) event.getPayload();
            Value oldValue, newValue;
            event >> oldValue >> newValue;
            seen.push_back((oldValue.toString() + " -> " + newValue.toString()).str());
            sources.push_back(event.getSource().get());
            if (use == DROP_SOURCE) event.getSource() = nullptr;
        }
        Use use;
        std::vector<std::string> seen;
        std::vector<IRead*> sources;
    };
    set("event.a", 1);
    VXPPtr<IRead> object = readOf("event.a");
    std::vector<std::unique_ptr<Reader>> readers;
    for (Use use : {VALUES, BYTES_FIRST, VALUES, DROP_SOURCE, UNREAD, DROP_SOURCE, VALUES}) {
        readers.push_back(std::make_unique<Reader>(use));
        VXLockPtr<IRead> held(object);
        held->addValueObserver(readers.back().get(), false);
    }
    set("event.a", 2);
    for (const auto& r : readers) {
        VXLockPtr<IRead> held(object);
        held->removeValueObserver(r.get());
        if (r->use == UNREAD) continue;
        EXPECT_EQ(r->seen, std::vector<std::string>{"1 -> 2"}) << r->use;
        EXPECT_EQ(r->sources, std::vector<IRead*>{object.get()}) << r->use;
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
