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
    F make(VX::Delivery delivery, std::shared_ptr<int> token = nullptr) {
        return F(
            loop_,
            [this, token](String n, int v) {
                calls_.push_back({n, v, lock_.isHeldByMe()});
            },
            delivery);
    }
    VXLock lock_;
    VXEventLoop loop_{lock_};
    Calls calls_;
};

TEST_F(FunctionTest, DirectSyncAndQueuedDeliveries) {
    std::thread::id ranOn;
    VX::Function<int(int)> direct(VX::directCall(), [&](int x) {
        ranOn = std::this_thread::get_id();
        return x * 2;
    });
    EXPECT_EQ(direct(21), 42);
    EXPECT_EQ(ranOn, std::this_thread::get_id());
    EXPECT_EQ(VX::Function<int(int)>()(7), 0);  // without a callable: the default result

    make(VX::Delivery::Sync)("sync", 0);  // at once, under the loop's lock
    EXPECT_FALSE(lock_.isHeldByMe());
    F queued = make(VX::Delivery::Queued);
    String name = "first";
    queued(name, 1);
    name = "changed";  // the arguments were copied
    queued("second", 2);
    EXPECT_EQ(calls_.size(), 1u);
    VX::Function<int()> g(
        loop_, [] { return 1; }, VX::Delivery::Queued);
    EXPECT_EQ(g(), 0);  // a queued call returns the default at once
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(calls_, (Calls{{"sync", 0, true}, {"first", 1, true}, {"second", 2, true}}));
}

// Queued calls go with the last sharer of the implementation, unless it keeps
// them; then the implementation (and what its callable owns) goes only after
// the last kept call ran.
TEST_F(FunctionTest, QueuedCallsAndTheLastSharer) {
    F copy;
    {
        F f = make(VX::Delivery::Queued);
        f("a", 1);
        copy = f;
        F dropped = make(VX::Delivery::Queued);
        dropped("dropped", 0);
    }
    copy("b", 2);
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(calls_, (Calls{{"a", 1, true}, {"b", 2, true}}));

    auto token = std::make_shared<int>(0);
    std::weak_ptr<int> watch = token;
    {
        F f = make(VX::Delivery::Queued, std::move(token));
        f("c", 3);  // queued before the flag: holds no reference
        f.setDontCancelOnDestruction(true);
        f("d", 4);
    }
    EXPECT_FALSE(watch.expired());
    VX::ManualTime::ADVANCE(0);
    EXPECT_EQ(calls_.size(), 4u);
    EXPECT_EQ(calls_.back(), (Call{"d", 4, true}));
    EXPECT_TRUE(watch.expired());
}

}  // namespace
