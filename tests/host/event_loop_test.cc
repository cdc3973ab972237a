// The event loop under the manual clock: due order, ties, repeats, stopping,
// cancelling by destruction, timers started by handlers, posted calls, mode
// switches; plus one short run of the real-time thread.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "host/crit.h"
#include "host/event_loop.h"
#include "host/manual_time.h"

namespace {

const VX::Time T0(1700000000, 0);

int64_t msSinceT0() {
    VX::Time d = VX::ManualTime::CURRENT() - T0;
    return static_cast<int64_t>(d.getSeconds()) * 1000 + d.getNanoseconds() / 1000000;
}

// What a handler saw when it ran.
struct Firing {
    int id;
    int64_t atMs;
    bool lockHeld;
    friend bool operator==(const Firing&, const Firing&) = default;
};

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
        probes_.push_back(std::make_unique<Probe>());
        Probe& p = *probes_.back();
        p.test = this;
        p.id = id;
        p.event = new _VXTimeoutEvent(VX::SysEvent::EVENT_LOOP(), EventPrio::NORMAL, &HANDLE, &p);
        return p;
    }
    static void HANDLE(void* arg) {
        Probe* p = static_cast<Probe*>(arg);
        p->test->fired_.push_back({p->id, msSinceT0(), VX::SysEvent::LOCK().isHeldByMe()});
        if (p->test->onFire_) p->test->onFire_(p->id);
    }

    std::vector<std::unique_ptr<Probe>> probes_;
    std::vector<Firing> fired_;
    std::function<void(int)> onFire_;
};

TEST_F(ManualLoopTest, RunsDueTimersInDueOrderWithTiesInStartOrder) {
    probe(1).event->start(300);
    probe(2).event->start(100);
    probe(3).event->start(100);
    probe(4).event->start(200);
    VX::ManualTime::ADVANCE(250);
    EXPECT_EQ(fired_, (std::vector<Firing>{{2, 100, true}, {3, 100, true}, {4, 200, true}}));
    EXPECT_EQ(msSinceT0(), 250);
    VX::ManualTime::ADVANCE(49);
    EXPECT_EQ(fired_.size(), 3u);
    VX::ManualTime::ADVANCE(1);
    EXPECT_EQ(fired_.back(), (Firing{1, 300, true}));
    EXPECT_EQ(msSinceT0(), 300);
}

TEST_F(ManualLoopTest, RepeatingTimerFiresOncePerPeriodUntilStopped) {
    Probe& p = probe(1);
    p.event->start(100, true);
    VX::ManualTime::ADVANCE(350);
    EXPECT_EQ(fired_, (std::vector<Firing>{{1, 100, true}, {1, 200, true}, {1, 300, true}}));
    EXPECT_TRUE(p.event->isRunning());
    p.event->stop();
    EXPECT_FALSE(p.event->isRunning());
    VX::ManualTime::ADVANCE(1000);
    EXPECT_EQ(fired_.size(), 3u);
}

TEST_F(ManualLoopTest, OneShotStopsRunningAfterExpiryAndStopCancels) {
    Probe& a = probe(1);
    Probe& b = probe(2);
    EXPECT_FALSE(a.event->isRunning());
    ASSERT_TRUE(a.event->start(10).isSuccess());
    b.event->start(10);
    EXPECT_TRUE(a.event->isRunning());
    b.event->stop();
    b.event->stop();  // stopping a stopped timer does nothing
    VX::ManualTime::ADVANCE(10);
    EXPECT_EQ(fired_, (std::vector<Firing>{{1, 10, true}}));
    EXPECT_FALSE(a.event->isRunning());
}

TEST_F(ManualLoopTest, RestartRearmsFromNow) {
    Probe& p = probe(1);
    p.event->start(100);
    VX::ManualTime::ADVANCE(60);
    p.event->start(100);
    VX::ManualTime::ADVANCE(60);
    EXPECT_TRUE(fired_.empty());
    VX::ManualTime::ADVANCE(40);
    EXPECT_EQ(fired_, (std::vector<Firing>{{1, 160, true}}));
}

TEST_F(ManualLoopTest, DestroyingATimerCancelsItsExpiry) {
    Probe& p = probe(1);
    p.event->start(10);
    p.event = nullptr;
    VX::ManualTime::ADVANCE(100);
    EXPECT_TRUE(fired_.empty());
}

TEST_F(ManualLoopTest, TimersStartedByHandlersRunWithinTheSameAdvance) {
    Probe& first = probe(1);
    Probe& second = probe(2);
    Probe& late = probe(3);
    onFire_ = [&](int id) {
        if (id == 1) {
            second.event->start(50);
            late.event->start(500);
        }
    };
    first.event->start(100);
    VX::ManualTime::ADVANCE(200);
    EXPECT_EQ(fired_, (std::vector<Firing>{{1, 100, true}, {2, 150, true}}));
    VX::ManualTime::ADVANCE(400);
    EXPECT_EQ(fired_.back(), (Firing{3, 600, true}));
}

TEST_F(ManualLoopTest, ZeroDelayTimerStartedByHandlerRunsAtTheSameTime) {
    Probe& a = probe(1);
    Probe& b = probe(2);
    onFire_ = [&](int id) {
        if (id == 1) b.event->start(0);
    };
    a.event->start(30);
    VX::ManualTime::ADVANCE(30);
    EXPECT_EQ(fired_, (std::vector<Firing>{{1, 30, true}, {2, 30, true}}));
}

TEST_F(ManualLoopTest, HandlerMayDestroyItsOwnTimer) {
    Probe& p = probe(1);
    onFire_ = [&](int) { p.event = nullptr; };
    p.event->start(10, true);
    VX::ManualTime::ADVANCE(100);
    EXPECT_EQ(fired_.size(), 1u);
}

TEST_F(ManualLoopTest, HandlerRestartingItsRepeatingTimerTakesTheNewPeriod) {
    Probe& p = probe(1);
    onFire_ = [&](int) { p.event->start(250, true); };
    p.event->start(100, true);
    VX::ManualTime::ADVANCE(600);
    EXPECT_EQ(fired_, (std::vector<Firing>{{1, 100, true}, {1, 350, true}, {1, 600, true}}));
}

TEST_F(ManualLoopTest, PostedCallsRunDuringAdvanceBeforeLaterTimers) {
    VXEventLoop& loop = VX::SysEvent::EVENT_LOOP();
    std::vector<int> order;
    Probe& p = probe(10);
    Probe& q = probe(11);
    onFire_ = [&](int id) {
        order.push_back(id);
        if (id == 10) loop.post([&] { order.push_back(3); });
    };
    loop.post([&] {
        EXPECT_TRUE(VX::SysEvent::LOCK().isHeldByMe());
        EXPECT_TRUE(loop.isHandlerThread());
        order.push_back(1);
    });
    loop.post([&] { order.push_back(2); });
    p.event->start(5);
    q.event->start(6);
    EXPECT_TRUE(order.empty());  // nothing runs outside ADVANCE
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    VX::ManualTime::ADVANCE(10);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 10, 3, 11}));
}

TEST_F(ManualLoopTest, TimersOfSeveralLoopsRunUnderTheirOwnLocks) {
    VXLock otherLock;
    VXEventLoop other(otherLock);
    std::vector<std::pair<int, bool>> seen;
    struct Arg {
        int id;
        VXLock* lock;
        std::vector<std::pair<int, bool>>* seen;
    };
    auto handle = [](void* a) {
        Arg* arg = static_cast<Arg*>(a);
        arg->seen->push_back({arg->id, arg->lock->isHeldByMe()});
    };
    Arg a{1, &VX::SysEvent::LOCK(), &seen};
    Arg b{2, &otherLock, &seen};
    {
        VXLWPtr<_VXTimeoutEvent> ea =
            new _VXTimeoutEvent(VX::SysEvent::EVENT_LOOP(), EventPrio::NORMAL, handle, &a);
        VXLWPtr<_VXTimeoutEvent> eb = new _VXTimeoutEvent(other, EventPrio::LOW, handle, &b);
        eb->start(20);
        ea->start(30);
        VX::ManualTime::ADVANCE(40);
    }
    EXPECT_EQ(seen, (std::vector<std::pair<int, bool>>{{2, true}, {1, true}}));
}

TEST_F(ManualLoopTest, ReEnableCarriesPendingTimersOverWithTheirRemainingDelay) {
    Probe& p = probe(1);
    p.event->start(5000);
    VX::ManualTime::ADVANCE(1000);
    const VX::Time later(T0.getSeconds() + 100, 0);
    VX::ManualTime::ENABLE(later);
    VX::ManualTime::ADVANCE(3999);
    EXPECT_TRUE(fired_.empty());
    VX::ManualTime::ADVANCE(1);
    ASSERT_EQ(fired_.size(), 1u);
    EXPECT_EQ(fired_[0].atMs, 100 * 1000 + 4000);
}

TEST_F(ManualLoopTest, TimersSurviveARoundTripThroughTheRealClock) {
    // 60 s is far longer than the real time this test takes, so the timer is
    // still pending when the manual clock comes back.
    Probe& p = probe(1);
    p.event->start(60000);
    VX::ManualTime::DISABLE();
    EXPECT_TRUE(p.event->isRunning());
    VX::ManualTime::ENABLE(T0);
    VX::ManualTime::ADVANCE(50000);
    EXPECT_TRUE(fired_.empty());
    VX::ManualTime::ADVANCE(10000);
    EXPECT_EQ(fired_.size(), 1u);
}

TEST_F(ManualLoopTest, DestroyingFromAnotherThreadWaitsForARunningHandler) {
    // The handler runs on a thread inside ADVANCE; another thread, not holding
    // the engine lock, drops the last reference meanwhile. The timer must stay
    // valid until the handler has returned.
    struct Shared {
        std::mutex m;
        std::condition_variable cv;
        bool entered = false;
        bool release = false;
        bool destroyed = false;
        bool destroyedSeenByHandler = true;
        _VXTimeoutEvent* self = nullptr;
    } s;
    auto handle = [](void* arg) {
        Shared* s = static_cast<Shared*>(arg);
        std::unique_lock<std::mutex> g(s->m);
        s->entered = true;
        s->cv.notify_all();
        s->cv.wait(g, [&] { return s->release; });
        s->destroyedSeenByHandler = s->destroyed;
        g.unlock();
        EXPECT_FALSE(s->self->isRunning());  // still a valid object
    };
    VXLWPtr<_VXTimeoutEvent> event =
        new _VXTimeoutEvent(VX::SysEvent::EVENT_LOOP(), EventPrio::NORMAL, handle, &s);
    s.self = event.get();
    event->start(10);
    std::thread advancer([] { VX::ManualTime::ADVANCE(10); });
    {
        std::unique_lock<std::mutex> g(s.m);
        s.cv.wait(g, [&] { return s.entered; });
    }
    std::thread destroyer([&] {
        event = nullptr;
        std::lock_guard<std::mutex> g(s.m);
        s.destroyed = true;
    });
    {
        std::lock_guard<std::mutex> g(s.m);
        s.release = true;
        s.cv.notify_all();
    }
    advancer.join();
    destroyer.join();
    EXPECT_FALSE(s.destroyedSeenByHandler);
}

TEST(RealTimeLoopTest, ThreadRunsTimersAndPostsUnderTheEngineLock) {
    ASSERT_FALSE(VX::ManualTime::IS_ENABLED());
    std::mutex m;
    std::condition_variable cv;
    int timerRuns = 0;
    bool posted = false;
    bool allHeld = true;
    std::thread::id handlerThread;
    struct Arg {
        std::mutex* m;
        std::condition_variable* cv;
        int* runs;
        bool* allHeld;
        std::thread::id* thread;
    } arg{&m, &cv, &timerRuns, &allHeld, &handlerThread};
    auto handle = [](void* p) {
        Arg* a = static_cast<Arg*>(p);
        std::lock_guard<std::mutex> g(*a->m);
        *a->allHeld = *a->allHeld && VX::SysEvent::LOCK().isHeldByMe();
        *a->thread = std::this_thread::get_id();
        ++*a->runs;
        a->cv->notify_all();
    };
    VXLWPtr<_VXTimeoutEvent> event =
        new _VXTimeoutEvent(VX::SysEvent::EVENT_LOOP(), EventPrio::NORMAL, handle, &arg);
    ASSERT_TRUE(event->start(10, true).isSuccess());
    VX::SysEvent::EVENT_LOOP().post([&] {
        std::lock_guard<std::mutex> g(m);
        allHeld = allHeld && VX::SysEvent::LOCK().isHeldByMe();
        posted = true;
        cv.notify_all();
    });
    {
        std::unique_lock<std::mutex> g(m);
        ASSERT_TRUE(
            cv.wait_for(g, std::chrono::seconds(20), [&] { return timerRuns >= 3 && posted; }));
    }
    event->stop();
    event = nullptr;
    std::lock_guard<std::mutex> g(m);
    EXPECT_TRUE(allHeld);
    EXPECT_NE(handlerThread, std::this_thread::get_id());
}

}  // namespace
