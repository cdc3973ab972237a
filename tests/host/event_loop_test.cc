// The event loop under the manual clock: due order, ties, stopping,
// restarting, cancelling by destruction, destruction racing a running
// handler; plus one short run of the real-time thread. Timers that their own
// handlers change are the temporal functions' daily work, shown by the
// engine's temporal transcripts.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "host/runtime/crit.h"
#include "host/runtime/event_loop.h"
#include "host/runtime/manual_time.h"
#include "host/runtime/string.h"

namespace {

const VX::Time T0(1700000000, 0);

int64_t msSinceT0() {
    VX::Time d = VX::ManualTime::CURRENT() - T0;
    return static_cast<int64_t>(d.getSeconds()) * 1000 + d.getNanoseconds() / 1000000;
}

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
    VXLWPtr<_VXTimeoutEvent>& probe(int id) {
        Probe& p = probes_.emplace_back(Probe{this, id, nullptr});
        p.event = new _VXTimeoutEvent(VX::SysEvent::EVENT_LOOP(), EventPrio::NORMAL, &HANDLE, &p);
        return p.event;
    }
    VXLWPtr<_VXTimeoutEvent>& start(int id, unsigned ms, bool repeat = false) {
        VXLWPtr<_VXTimeoutEvent>& event = probe(id);
        EXPECT_TRUE(event->start(ms, repeat).isSuccess());
        return event;
    }
    static void HANDLE(void* arg) {
        Probe* p = static_cast<Probe*>(arg);
        EXPECT_TRUE(VX::SysEvent::LOCK().isHeldByMe());
        p->test->fired_ +=
            String::Formatted(" %d@%lld", p->id, static_cast<long long>(msSinceT0()));
    }

    std::deque<Probe> probes_;
    String fired_;  // which timer ran, and when: " id@ms" each
};

// Due order, ties in start order, an advance that ends exactly on a due
// time; stopped and destroyed timers do not run, a restart counts anew.
TEST_F(ManualLoopTest, DueOrderStopDestroyAndRestart) {
    start(1, 300);
    start(2, 100);
    start(3, 100);
    start(4, 200);
    VXLWPtr<_VXTimeoutEvent>& stopped = start(5, 100);
    VXLWPtr<_VXTimeoutEvent>& destroyed = start(6, 100);
    VXLWPtr<_VXTimeoutEvent>& restarted = start(7, 200);
    EXPECT_FALSE(probe(8)->isRunning());
    stopped->stop();
    stopped->stop();  // stopping a stopped timer does nothing
    destroyed = nullptr;
    VX::ManualTime::ADVANCE(150);
    restarted->start(100);  // due at 250 now, not 200
    VX::ManualTime::ADVANCE(99);
    EXPECT_EQ(fired_, " 2@100 3@100 4@200");
    VX::ManualTime::ADVANCE(1);  // due exactly where an advance ends
    EXPECT_EQ(fired_, " 2@100 3@100 4@200 7@250");
    VX::ManualTime::ADVANCE(50);
    EXPECT_EQ(fired_, " 2@100 3@100 4@200 7@250 1@300");
    EXPECT_EQ(msSinceT0(), 300);
    EXPECT_FALSE(stopped->isRunning() || probes_[0].event->isRunning());
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

TEST_F(ManualLoopTest, DestroyingFromAnonLoopThreadWaitsForARunningHandler) {
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

// The loop's own thread runs a repeating timer and a posted call, each
// under the engine lock.
TEST(RealTimeLoopTest, ThreadRunsTimersAndPostsUnderTheEngineLock) {
    ASSERT_FALSE(VX::ManualTime::IS_ENABLED());
    struct Shared : Gate {
        int timerRuns = 0;
        bool posted = false, allHeld = true, onLoopThread = true;
        void ran(bool isPost) {
            change([&] {
                allHeld = allHeld && VX::SysEvent::LOCK().isHeldByMe();
                onLoopThread = onLoopThread && VX::SysEvent::EVENT_LOOP().isHandlerThread();
                posted = posted || isPost;
                timerRuns += isPost ? 0 : 1;
            });
        }
    } s;
    VXLWPtr<_VXTimeoutEvent> event = new _VXTimeoutEvent(
        VX::SysEvent::EVENT_LOOP(), EventPrio::NORMAL,
        [](void* p) { static_cast<Shared*>(p)->ran(false); }, &s);
    ASSERT_TRUE(event->start(10, true).isSuccess());
    VX::SysEvent::EVENT_LOOP().post([&] { s.ran(true); });
    ASSERT_TRUE(s.await([&] { return s.timerRuns >= 3 && s.posted; }));
    event = nullptr;
    std::lock_guard<std::mutex> g(s.m);
    EXPECT_TRUE(s.allHeld && s.onLoopThread);
    EXPECT_FALSE(VX::SysEvent::EVENT_LOOP().isHandlerThread());
}

}  // namespace
