// Timers end with their owners: a wrapper destroyed before its expiry never
// calls its owner, and a destroyed node's timers are destroyed with it and
// never fire. A timer firing for a dead node would read freed memory, which
// the AddressSanitizer build turns into a failure; a live twin shows that the
// clock did pass the due times.
#include <gtest/gtest.h>

#include <memory>

#include "sysevent/functions/delay.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Lifetime = TemporalTest;
using C = Watch::Change;

struct Owner {
    void onTimeout() { ++fired; }
    int fired = 0;
};

TEST_F(Lifetime, WrapperStartsStopsRestartsRepeatsAndCancelsOnDestruction) {
    Owner owner;
    auto timer = std::make_unique<VXEventTimeout<Owner>>(&owner);
    EXPECT_FALSE(timer->isRunning());
    ASSERT_TRUE(timer->start(1000).isSuccess());
    EXPECT_TRUE(timer->isRunning());
    advanceTo(600);
    ASSERT_TRUE(timer->start(1000).isSuccess());  // counts from now: due at 1600
    advanceTo(1599);
    EXPECT_EQ(owner.fired, 0);
    advanceTo(1600);
    EXPECT_EQ(owner.fired, 1);
    EXPECT_FALSE(timer->isRunning());

    ASSERT_TRUE(timer->start(100).isSuccess());
    timer->stop();
    EXPECT_FALSE(timer->isRunning());
    advanceTo(2000);
    EXPECT_EQ(owner.fired, 1);

    clock_.refusal = XCode::Failure("NO LOOP");
    EXPECT_EQ(timer->start(100).getString(), "NO LOOP");
    EXPECT_FALSE(timer->isRunning());
    clock_.refusal = XCode();

    ASSERT_TRUE(timer->start(1000, true).isSuccess());  // repeating: stays running
    advanceTo(5500);
    EXPECT_EQ(owner.fired, 4);
    EXPECT_TRUE(timer->isRunning());
    timer.reset();
    advanceTo(10000);
    EXPECT_EQ(owner.fired, 4);
}

TEST_F(Lifetime, DestroyedNodesTimersNeverFire) {
    VXLWPtr<Node> x = leaf(num(1));
    VXLWPtr<Node> delay = leaf(duration(1000));
    VXLWPtr<FunctionNode> twin = apply("DEBOUNCE", {x.get(), delay.get()});
    Watch w(twin.get());
    const unsigned liveTimers = EVENT_LOOP().getTimerCount();
    {
        VXLWPtr<FunctionNode> debounce = apply("DEBOUNCE", {x.get(), delay.get()});
        VXLWPtr<FunctionNode> delayed = apply("DELAY", {x.get(), delay.get()});
        VXLWPtr<FunctionNode> stable = apply("STABLE", {x.get(), delay.get()});
        VXLWPtr<FunctionNode> now = apply("NOW", {});
        for (Node* n : {debounce.get(), delayed.get(), stable.get(), now.get()}) n->addInterest();
        x->setValue(num(2));
        advanceTo(400);
        x->setValue(num(3));  // DELAY now holds two queued records...
        advanceTo(1500);      // ...and, after one delivery, one free record
        x->setValue(num(4));
        EXPECT_EQ(static_cast<DELAY*>(delayed.get())->getRecordCount(), 2u);
        EXPECT_EQ(x->getParents().size(), 4u);
    }
    // Their links and timers are gone with them, and so is the NOW tick.
    EXPECT_EQ(EVENT_LOOP().getTimerCount(), liveTimers);
    EXPECT_EQ(x->getParents().size(), 1u);
    EXPECT_TRUE(NOW::s_pTickEvent.isNull());
    advanceTo(60000);
    EXPECT_EQ(w.changes, (std::vector<C>{{1400, num(3)}, {2500, num(4)}}));
}

}  // namespace
}  // namespace VX::SysEvent::testing
