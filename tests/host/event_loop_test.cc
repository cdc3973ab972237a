// The event loop's threads: destruction from another thread racing a
// running handler, and one short run of the real-time thread. Due order,
// ties, restarts and stops under the manual clock are the daily work of the
// temporal functions, shown by the tool's timer and temporal transcripts;
// timers that their own handlers change, too.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "host/runtime/crit.h"
#include "host/runtime/event_loop.h"
#include "host/runtime/manual_time.h"

namespace {

class ManualLoopTest : public ::testing::Test {
protected:
    void SetUp() override { VX::ManualTime::ENABLE(VX::Time(1700000000, 0)); }
    void TearDown() override { VX::ManualTime::DISABLE(); }
};

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
