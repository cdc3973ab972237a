// The event loop under the manual clock: due order, ties, repeats, stopping,
// restarting, cancelling by destruction, timers started or destroyed by
// handlers, posted calls, several loops, mode switches; plus one short run of
// the real-time thread.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/event_loop.h"
#include "host/runtime/manual_time.h"

namespace {

const VX::Time T0(1700000000, 0);

int64_t msSinceT0() {
    VX::Time d = VX::ManualTime::CURRENT() - T0;
    return static_cast<int64_t>(d.getSeconds()) * 1000 + d.getNanoseconds() / 1000000;
}

// Which timer ran, and when.
struct Firing {
    int id;
    int64_t atMs;
    friend bool operator==(const Firing&, const Firing&) = default;
};
using Firings = std::vector<Firing>;

class ManualLoopTest : public ::testing::Test {
protected:
    void SetUp() override { VX::ManualTime::ENABLE(T0); }
    void TearDown() override { VX::ManualTime::DISABLE(); }

    // A timer on the engine loop whose handler records `id`.
    struct Probe {
        ManualLoopTest* test;
        int id;
        VXLWPtr<_VXTimeoutEvent> event;
    };
    Probe& probe(int id) {
        probes_.push_back(std::unique_ptr<Probe>(new Probe{this, id, nullptr}));
        Probe& p = *probes_.back();
        p.event = new _VXTimeoutEvent(VX::SysEvent::EVENT_LOOP(), EventPrio::NORMAL, &HANDLE, &p);
        return p;
    }
    Probe& start(int id, unsigned ms, bool repeat = false) {
        Probe& p = probe(id);
        EXPECT_TRUE(p.event->start(ms, repeat).isSuccess());
        return p;
    }
    static void HANDLE(void* arg) {
        Probe* p = static_cast<Probe*>(arg);
        EXPECT_TRUE(VX::SysEvent::LOCK().isHeldByMe());
        p->test->fired_.push_back({p->id, msSinceT0()});
        if (p->test->onFire_) p->test->onFire_(p->id);
    }
    // When timer `id` ran, in order.
    std::vector<int64_t> times(int id) const {
        std::vector<int64_t> out;
        for (const Firing& f : fired_)
            if (f.id == id) out.push_back(f.atMs);
        return out;
    }

    std::vector<std::unique_ptr<Probe>> probes_;
    Firings fired_;
    std::function<void(int)> onFire_;
};

// Due order, ties in start order, an advance that ends exactly on a due
// time; stopped and destroyed timers do not run, a restart counts anew.
TEST_F(ManualLoopTest, DueOrderStopDestroyAndRestart) {
    start(1, 300);
    start(2, 100);
    start(3, 100);
    start(4, 200);
    Probe& stopped = start(5, 100);
    Probe& destroyed = start(6, 100);
    Probe& restarted = start(7, 200);
    EXPECT_FALSE(probe(8).event->isRunning());
    stopped.event->stop();
    stopped.event->stop();  // stopping a stopped timer does nothing
    destroyed.event = nullptr;
    VX::ManualTime::ADVANCE(150);
    restarted.event->start(100);  // due at 250 now, not 200
    VX::ManualTime::ADVANCE(99);
    EXPECT_EQ(fired_, (Firings{{2, 100}, {3, 100}, {4, 200}}));
    VX::ManualTime::ADVANCE(1);  // due exactly where an advance ends
    EXPECT_EQ(fired_.back(), (Firing{7, 250}));
    VX::ManualTime::ADVANCE(50);
    EXPECT_EQ(fired_.back(), (Firing{1, 300}));
    EXPECT_EQ(fired_.size(), 5u);
    EXPECT_EQ(msSinceT0(), 300);
    EXPECT_FALSE(stopped.event->isRunning() || probes_[0]->event->isRunning());
}

// Handlers stop, destroy and restart their own timers and start others,
// which run within the same advance; repeats keep their phase.
TEST_F(ManualLoopTest, HandlersChangeTimersWithinTheSameAdvance) {
    Probe& plain = start(1, 100, true);
    Probe& selfDestroying = start(2, 10, true);
    Probe& selfRestarting = start(3, 100, true);
    Probe &second = probe(4), &now = probe(5);
    onFire_ = [&](int id) {
        if (id == 2) selfDestroying.event = nullptr;
        if (id == 3 && msSinceT0() == 100) {
            selfRestarting.event->start(250, true);
            second.event->start(50);
            now.event->start(0);
        }
    };
    VX::ManualTime::ADVANCE(350);
    plain.event->stop();
    VX::ManualTime::ADVANCE(1000);
    EXPECT_EQ(fired_, (Firings{{2, 10},
                               {1, 100},
                               {3, 100},
                               {5, 100},
                               {4, 150},
                               {1, 200},
                               {1, 300},
                               {3, 350},
                               {3, 600},
                               {3, 850},
                               {3, 1100},
                               {3, 1350}}));
    EXPECT_FALSE(plain.event->isRunning());
}

// Posted calls run first, in order, under the loop's lock and only inside an
// advance; timers of another loop run under that loop's lock.
TEST_F(ManualLoopTest, PostedCallsAndSeveralLoops) {
    VXEventLoop& loop = VX::SysEvent::EVENT_LOOP();
    VXLock otherLock;
    VXEventLoop other(otherLock);
    std::vector<int> order;
    onFire_ = [&](int id) {
        if (id == 10) loop.post([&] { order.push_back(3); });
        order.push_back(id);
    };
    loop.post([&] {
        EXPECT_TRUE(VX::SysEvent::LOCK().isHeldByMe() && loop.isHandlerThread());
        order.push_back(1);
    });
    loop.post([&] { order.push_back(2); });
    start(10, 5);
    start(11, 6);
    auto onOther = [](void* p) {
        auto* arg = static_cast<std::pair<VXLock*, std::vector<int>*>*>(p);
        arg->second->push_back(arg->first->isHeldByMe() ? 20 : -20);
    };
    std::pair<VXLock*, std::vector<int>*> arg{&otherLock, &order};
    VXLWPtr<_VXTimeoutEvent> timer = new _VXTimeoutEvent(other, EventPrio::LOW, onOther, &arg);
    timer->start(5);
    EXPECT_TRUE(order.empty());
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    VX::ManualTime::ADVANCE(10);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 10, 3, 20, 11}));
}

TEST_F(ManualLoopTest, ModeSwitchesCarryPendingTimersOverWithTheirRemainingDelay) {
    start(1, 5000);
    // 60 s is far longer than the real time this test takes, so the timer is
    // still pending when the manual clock comes back.
    Probe& longer = start(2, 60000);
    VX::ManualTime::ADVANCE(1000);
    VX::ManualTime::ENABLE(VX::Time(T0.getSeconds() + 100, 0));  // re-enabled later
    VX::ManualTime::ADVANCE(3999);
    EXPECT_TRUE(fired_.empty());
    VX::ManualTime::ADVANCE(1);
    EXPECT_EQ(fired_, (Firings{{1, 100 * 1000 + 4000}}));

    VX::ManualTime::DISABLE();  // 55 s left
    EXPECT_TRUE(longer.event->isRunning());
    VX::ManualTime::ENABLE(T0);
    VX::ManualTime::ADVANCE(50000);
    EXPECT_EQ(fired_.size(), 1u);
    VX::ManualTime::ADVANCE(5000);
    EXPECT_EQ(fired_.size(), 2u);
}

// State shared with other threads: `change` updates it under the mutex and
// wakes the waiters; `await` waits (20 s at most) until `ready` holds.
struct Gate {
    std::mutex m;
    std::condition_variable cv;
    template <class F>
    void change(F f) {
        std::lock_guard<std::mutex> g(m);
        f();
        cv.notify_all();
    }
    template <class P>
    bool await(P ready) {
        std::unique_lock<std::mutex> g(m);
        return cv.wait_for(g, std::chrono::seconds(20), ready);
    }
};

TEST_F(ManualLoopTest, DestroyingFromAnotherThreadWaitsForARunningHandler) {
    // The handler runs on a thread inside ADVANCE; another thread, not holding
    // the engine lock, drops the last reference meanwhile. The timer must stay
    // valid until the handler has returned.
    struct Shared : Gate {
        bool entered = false, release = false, destroyed = false;
        bool destroyedSeenByHandler = true;
        _VXTimeoutEvent* self = nullptr;
    } s;
    auto handle = [](void* arg) {
        Shared* s = static_cast<Shared*>(arg);
        s->change([&] { s->entered = true; });
        EXPECT_TRUE(s->await([&] { return s->release; }));
        s->change([&] { s->destroyedSeenByHandler = s->destroyed; });
        EXPECT_FALSE(s->self->isRunning());  // still a valid object
    };
    VXLWPtr<_VXTimeoutEvent> event =
        new _VXTimeoutEvent(VX::SysEvent::EVENT_LOOP(), EventPrio::NORMAL, handle, &s);
    s.self = event.get();
    event->start(10);
    std::thread advancer([] { VX::ManualTime::ADVANCE(10); });
    EXPECT_TRUE(s.await([&] { return s.entered; }));
    std::thread destroyer([&] {
        event = nullptr;
        s.change([&] { s.destroyed = true; });
    });
    s.change([&] { s.release = true; });
    advancer.join();
    destroyer.join();
    EXPECT_FALSE(s.destroyedSeenByHandler);
}

TEST(RealTimeLoopTest, ThreadRunsTimersAndPostsUnderTheEngineLock) {
    ASSERT_FALSE(VX::ManualTime::IS_ENABLED());
    struct Shared : Gate {
        int timerRuns = 0;
        bool posted = false, allHeld = true;
        std::thread::id handlerThread;
    } s;
    auto ran = [&s](bool isPost) {
        s.change([&] {
            s.allHeld = s.allHeld && VX::SysEvent::LOCK().isHeldByMe();
            s.handlerThread = std::this_thread::get_id();
            s.posted = s.posted || isPost;
            s.timerRuns += isPost ? 0 : 1;
        });
    };
    VXLWPtr<_VXTimeoutEvent> event = new _VXTimeoutEvent(
        VX::SysEvent::EVENT_LOOP(), EventPrio::NORMAL,
        [](void* p) { (*static_cast<decltype(ran)*>(p))(false); }, &ran);
    ASSERT_TRUE(event->start(10, true).isSuccess());
    VX::SysEvent::EVENT_LOOP().post([&] { ran(true); });
    ASSERT_TRUE(s.await([&] { return s.timerRuns >= 3 && s.posted; }));
    event->stop();
    event = nullptr;
    std::lock_guard<std::mutex> g(s.m);
    EXPECT_TRUE(s.allHeld);
    EXPECT_NE(s.handlerThread, std::this_thread::get_id());
}

}  // namespace
