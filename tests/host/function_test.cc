// VX::Function: the three deliveries, and what happens to queued calls when
// the implementation goes away.
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "host/crit.h"
#include "host/function.h"
#include "host/manual_time.h"
#include "host/string.h"

namespace {

using Call = std::pair<String, int>;

class FunctionTest : public ::testing::Test {
protected:
    void SetUp() override { VX::ManualTime::ENABLE(VX::Time(1000, 0)); }
    void TearDown() override { VX::ManualTime::DISABLE(); }

    VXLock lock_;
    VXEventLoop loop_{lock_};
    std::vector<Call> calls_;
    std::vector<bool> lockHeld_;

    auto recorder() {
        return [this](String name, int value) {
            calls_.emplace_back(name, value);
            lockHeld_.push_back(lock_.isHeldByMe());
        };
    }
};

TEST_F(FunctionTest, DefaultIsDirectWithoutCallable) {
    VX::Function<int(int)> f;
    EXPECT_FALSE(f.hasCallable());
    EXPECT_EQ(f(7), 0);
    VX::Function<void(String)> g;
    g("ignored");  // does nothing
}

TEST_F(FunctionTest, DirectRunsAtOnceInTheCallingThreadAndReturns) {
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

TEST_F(FunctionTest, SyncRunsAtOnceHoldingTheLoopsLock) {
    VX::Function<void(String, int)> f(loop_, recorder(), VX::Delivery::Sync);
    f("a", 1);
    EXPECT_EQ(calls_, (std::vector<Call>{{"a", 1}}));
    EXPECT_EQ(lockHeld_, (std::vector<bool>{true}));
    EXPECT_FALSE(lock_.isHeldByMe());  // released after the call
}

TEST_F(FunctionTest, QueuedRunsLaterInOrderWithCopiedArguments) {
    VX::Function<void(String, int)> f(loop_, recorder(), VX::Delivery::Queued);
    String name = "first";
    f(name, 1);
    name = "changed";
    f("second", 2);
    EXPECT_TRUE(calls_.empty());
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(calls_, (std::vector<Call>{{"first", 1}, {"second", 2}}));
    EXPECT_EQ(lockHeld_, (std::vector<bool>{true, true}));
}

TEST_F(FunctionTest, QueuedReturnsDefaultAtOnce) {
    int ran = 0;
    VX::Function<int()> f(
        loop_, [&] { return ++ran; }, VX::Delivery::Queued);
    EXPECT_EQ(f(), 0);
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(ran, 1);
}

TEST_F(FunctionTest, QueuedCallsAreDroppedWhenTheImplementationDies) {
    {
        VX::Function<void(String, int)> f(loop_, recorder(), VX::Delivery::Queued);
        f("a", 1);
        f("b", 2);
    }
    VX::ManualTime::ADVANCE(0);
    EXPECT_TRUE(calls_.empty());
}

TEST_F(FunctionTest, CopiesShareTheImplementationAndItsQueue) {
    VX::Function<void(String, int)> copy;
    {
        VX::Function<void(String, int)> f(loop_, recorder(), VX::Delivery::Queued);
        copy = f;
        f("a", 1);
    }
    copy("b", 2);
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(calls_, (std::vector<Call>{{"a", 1}, {"b", 2}}));
}

TEST_F(FunctionTest, DontCancelKeepsQueuedCallsAndReleasesAfterTheLastRan) {
    // The callable owns a token: the implementation (and with it the token) is
    // gone only after every kept call has run.
    auto token = std::make_shared<int>(0);
    std::weak_ptr<int> watch = token;
    {
        VX::Function<void(String, int)> f(
            loop_, [this, token](String n, int v) { calls_.emplace_back(n, v); },
            VX::Delivery::Queued);
        token.reset();
        f.setDontCancelOnDestruction(true);
        f("a", 1);
        f("b", 2);
    }
    EXPECT_FALSE(watch.expired());
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(calls_, (std::vector<Call>{{"a", 1}, {"b", 2}}));
    EXPECT_TRUE(watch.expired());
}

TEST_F(FunctionTest, OnlyCallsQueuedAfterDontCancelHoldTheImplementation) {
    VX::Function<void(String, int)> f(loop_, recorder(), VX::Delivery::Queued);
    const unsigned base = f.getImpl()->getRefCount();
    f("dropped-if-cancelled", 0);
    EXPECT_EQ(f.getImpl()->getRefCount(), base);
    f.setDontCancelOnDestruction(true);
    f("kept", 1);
    EXPECT_EQ(f.getImpl()->getRefCount(), base + 1);
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(f.getImpl()->getRefCount(), base);
    EXPECT_EQ(calls_.size(), 2u);
}

TEST_F(FunctionTest, QueuedOnTheEngineLoopRunsUnderTheEngineLock) {
    bool held = false;
    VX::Function<void()> f(
        VX::SysEvent::EVENT_LOOP(), [&] { held = VX::SysEvent::LOCK().isHeldByMe(); },
        VX::Delivery::Queued);
    f();
    VX::ManualTime::ADVANCE(0);
    EXPECT_TRUE(held);
}

}  // namespace
