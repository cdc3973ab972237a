// DELAY's records under a steady stream of changes: the queue never grows
// beyond what the delay holds, and records go back to the free list and are
// reused instead of allocated afresh. (The plain replay and the order kept
// when the delay shrinks are rows of formula_test.cc.)
#include <gtest/gtest.h>

#include <algorithm>

#include "sysevent/functions/delay.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Delay = TemporalTest;
using C = Watch::Change;

TEST_F(Delay, SteadyStreamReusesItsRecords) {
    VXLWPtr<Node> x = leaf(num(0));
    VXLWPtr<FunctionNode> f = apply("DELAY", {x.get(), leaf(duration(3000)).get()});
    DELAY* d = static_cast<DELAY*>(f.get());
    Watch w(f.get());
    // One change a second with a delay of three seconds: at most three values
    // are queued (the expiry due at the same moment as a change runs first).
    size_t longest = 0;
    for (unsigned long long i = 1; i <= 100; ++i) {
        advanceTo(static_cast<int64_t>(i) * 1000);
        x->setValue(num(i));
        longest = std::max(longest, d->getQueueLength());
        EXPECT_EQ(d->getRecordCount(), std::min<size_t>(i, 3)) << i;
        EXPECT_EQ(d->getQueueLength() + d->getFreeRecordCount(), d->getRecordCount());
    }
    EXPECT_EQ(longest, 3u);
    advanceTo(200000);
    ASSERT_EQ(w.changes.size(), 100u);
    for (size_t i = 0; i < w.changes.size(); ++i)
        EXPECT_EQ(w.changes[i], (C{static_cast<int64_t>(i + 4) * 1000, num(i + 1)}));
    EXPECT_EQ(d->getFreeRecordCount(), 3u);
}

}  // namespace
}  // namespace VX::SysEvent::testing
