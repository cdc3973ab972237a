// VX::Function: what happens to queued calls when the implementation goes
// away, and what queued calls return and copy. The deliveries themselves (on
// the caller's thread, synchronously under the lock, queued in order) are
// the Observer's delivery tests.
#include <gtest/gtest.h>

#include <memory>
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

// Queued calls go with the last sharer of the implementation, unless it keeps
// them; then the implementation (and what its callable owns) goes only after
// the last kept call ran.
TEST_F(FunctionTest, QueuedCallsAndTheLastSharer) {
    F copy;
    {
        F f = make(VX::Delivery::Queued);
        String name = "a";
        f(name, 1);
        name = "changed";  // the arguments were copied
        copy = f;
        F dropped = make(VX::Delivery::Queued);
        dropped("dropped", 0);
    }
    copy("b", 2);
    VX::Function<int()> g(
        loop_, [] { return 1; }, VX::Delivery::Queued);
    EXPECT_EQ(g(), 0);  // a queued call returns the default at once
    EXPECT_TRUE(calls_.empty());
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
