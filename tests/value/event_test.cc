// Event: construction times and the two span operations.
#include <gtest/gtest.h>

#include "host/runtime/manual_time.h"
#include "sysevent/value/event.h"

namespace VX::SysEvent {
namespace {

TEST(Event, Construction) {
    Event none;
    EXPECT_EQ(none.start, VX::Time());
    EXPECT_EQ(none.end, VX::Time());
    EXPECT_EQ(none.value.subtype, DST_UNDEF);

    VX::ManualTime::ENABLE(VX::Time(1000, 5));
    Event now(Value(1ULL));
    VX::ManualTime::DISABLE();
    EXPECT_EQ(now.start, VX::Time(1000, 5));
    EXPECT_EQ(now.end, now.start);

    Event at(VX::Time(7, 0), Value(true));
    EXPECT_EQ(at.start, VX::Time(7, 0));
    EXPECT_EQ(at.end, VX::Time(7, 0));
}

TEST(Event, SetTimeCopiesTimesOnly) {
    Event a(VX::Time(1, 0), VX::Time(2, 0), Value("a"));
    const Event b(VX::Time(5, 0), VX::Time(6, 0), Value("b"));
    a.setTime(b);
    EXPECT_EQ(a.start, VX::Time(5, 0));
    EXPECT_EQ(a.end, VX::Time(6, 0));
    EXPECT_EQ(a.value, Value("a"));
    a.setTime(a);
    EXPECT_EQ(a.start, VX::Time(5, 0));
}

TEST(Event, EmbraceTime) {
    const struct {
        VX::Time s, e;    // this span
        VX::Time os, oe;  // other span
        VX::Time rs, re;  // expected span
        const char* what;
    } cases[] = {
        {{10, 0}, {20, 0}, {12, 0}, {18, 0}, {10, 0}, {20, 0}, "inside changes nothing"},
        {{10, 0}, {20, 0}, {5, 0}, {25, 0}, {5, 0}, {25, 0}, "wider takes both"},
        {{10, 5}, {20, 5}, {10, 4}, {20, 6}, {10, 4}, {20, 6}, "nanoseconds decide"},
        {{10, 5}, {20, 5}, {10, 6}, {20, 4}, {10, 5}, {20, 5}, "nanoseconds inside"},
        // Seconds compare as signed 32-bit counts.
        {{0, 0}, {1, 0}, {-1, 0}, {0, 0}, {-1, 0}, {1, 0}, "signed seconds"},
    };
    for (const auto& c : cases) {
        Event a(c.s, c.e, Value(1ULL));
        a.embraceTime(Event(c.os, c.oe, Value(2ULL)));
        EXPECT_EQ(a.start, c.rs) << c.what;
        EXPECT_EQ(a.end, c.re) << c.what;
        EXPECT_EQ(a.value, Value(1ULL)) << c.what;
    }
}

}  // namespace
}  // namespace VX::SysEvent
