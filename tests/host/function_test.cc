// VX::Function: the three deliveries, and what happens to queued calls when
// the implementation goes away.
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/event_loop.h"
#include "host/runtime/function.h"
#include "host/runtime/manual_time.h"
#include "host/runtime/string.h"

namespace {

// A call as the callable saw it: its arguments and whether the loop's lock
// was held.
struct Call {
    String name;
    int value;
    bool locked;
    friend bool operator==(const Call&, const Call&) = default;
};
using Calls = std::vector<Call>;
using F = VX::Function<void(String, int)>;

class FunctionTest : public ::testing::Test {
protected:
    void SetUp() override { VX::ManualTime::ENABLE(VX::Time(1000, 0)); }
    void TearDown() override { VX::ManualTime::DISABLE(); }

    F make(VX::Delivery delivery) {
        return F(
            loop_,
            [this](String n, int v) {
                calls_.push_back({n, v, lock_.isHeldByMe()});
            },
            delivery);
    }

    VXLock lock_;
    VXEventLoop loop_{lock_};
    Calls calls_;
};

TEST_F(FunctionTest, DirectRunsAtOnceInTheCallingThreadAndReturns) {
    VX::Function<int(int)> none;  // the default: direct, without a callable
    EXPECT_FALSE(none.hasCallable());
    EXPECT_EQ(none(7), 0);
    std::thread::id ranOn;
    VX::Function<int(int)> f(VX::directCall(), [&](int x) {
        ranOn = std::this_thread::get_id();
        return x * 2;
    });
    EXPECT_TRUE(f.hasCallable());
    EXPECT_EQ(f(21), 42);
    EXPECT_EQ(f.call(5), 10);
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST_F(FunctionTest, SyncRunsAtOnceUnderTheLoopsLockQueuedLaterInOrder) {
    make(VX::Delivery::Sync)("sync", 0);
    EXPECT_EQ(calls_, (Calls{{"sync", 0, true}}));
    EXPECT_FALSE(lock_.isHeldByMe());  // released after the call

    F f = make(VX::Delivery::Queued);
    String name = "first";
    f(name, 1);
    name = "changed";  // the arguments were copied
    f("second", 2);
    EXPECT_EQ(calls_.size(), 1u);
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(calls_, (Calls{{"sync", 0, true}, {"first", 1, true}, {"second", 2, true}}));

    // A queued call returns the default at once.
    int ran = 0;
    VX::Function<int()> g(
        loop_, [&] { return ++ran; }, VX::Delivery::Queued);
    EXPECT_EQ(g(), 0);
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(ran, 1);

    // On the engine loop: under the engine lock.
    bool held = false;
    VX::Function<void()> h(
        VX::SysEvent::EVENT_LOOP(), [&] { held = VX::SysEvent::LOCK().isHeldByMe(); },
        VX::Delivery::Queued);
    h();
    VX::ManualTime::ADVANCE(0);
    EXPECT_TRUE(held);
}

TEST_F(FunctionTest, QueuedCallsAreDroppedWhenTheLastSharerDies) {
    F copy;
    {
        F f = make(VX::Delivery::Queued);
        f("a", 1);
        copy = f;  // shares the implementation and its queue
    }
    copy("b", 2);
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(calls_, (Calls{{"a", 1, true}, {"b", 2, true}}));
    {
        F f = make(VX::Delivery::Queued);
        f("dropped", 3);
    }
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(calls_.size(), 2u);
}

TEST_F(FunctionTest, DontCancelKeepsLaterQueuedCallsAndReleasesAfterTheLastRan) {
    // The callable owns a token: the implementation (and with it the token) is
    // gone only after every kept call has run.
    auto token = std::make_shared<int>(0);
    std::weak_ptr<int> watch = token;
    {
        F f(
            loop_,
            [this, token](String n, int v) {
                calls_.push_back({n, v, lock_.isHeldByMe()});
            },
            VX::Delivery::Queued);
        token.reset();
        const unsigned base = f.getImpl()->getRefCount();
        f("a", 0);  // queued before: holds nothing
        EXPECT_EQ(f.getImpl()->getRefCount(), base);
        f.setDontCancelOnDestruction(true);
        f("b", 1);
        f("c", 2);
        EXPECT_EQ(f.getImpl()->getRefCount(), base + 2);
    }
    EXPECT_FALSE(watch.expired());
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(calls_, (Calls{{"a", 0, true}, {"b", 1, true}, {"c", 2, true}}));
    EXPECT_TRUE(watch.expired());
}

}  // namespace
