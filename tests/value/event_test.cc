// Event: the span of two events taken together.
#include <gtest/gtest.h>

#include "sysevent/value/event.h"

namespace VX::SysEvent {
namespace {

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
