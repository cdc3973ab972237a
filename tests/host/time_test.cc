// VX::Time arithmetic below zero, and the readings a clock gives: characters
// read, refusals that keep the value, and the log form. The calendar, the ISO
// form and arithmetic at the upper edges are in the tool's host_clock
// transcript.
#include <gtest/gtest.h>

#include <cstdint>

#include "host/runtime/clock.h"
#include "host/runtime/time.h"

namespace {

using VX::Clock;
using VX::Time;

// What the engine's arithmetic cannot reach (it keeps durations and times at
// or after their zero; the rest is in the host_clock transcript): negative
// results, a zero divisor, and milliseconds of a negative time.
TEST(TimeTest, ArithmeticBelowZero) {
    Time t(0, 0);
    EXPECT_EQ(t -= Time(0, 1), Time(-1, 999999999));
    EXPECT_EQ(Time(INT32_MIN, 0) - Time(1, 0), Time(INT32_MAX, 0));
    t = Time(-1, 0);
    EXPECT_EQ(t /= 2, Time(INT32_MAX, 500000000));  // the seconds taken as unsigned
    EXPECT_EQ(t /= 0, Time(INT32_MAX, 500000000));
    EXPECT_EQ(Time(2, 345678901).toMilliseconds(), 2345u);
    EXPECT_EQ(Time(-2, 0).toMilliseconds(), 0u);
}

TEST(ClockTest, ReadsWhatItCanAndRefusesTheRestKeepingItsValue) {
    const struct {
        const char* text;
        int32_t nanos;
        unsigned charsRead;  // 0: refused
    } cases[] = {
        {"2021-03-07T09:05:00.25xyz", 250000000, 22},
        {"2021-03-07T09:05:00.", 0, 19},  // a dot without digits
        {"2021-03-07 09:05:00", 0, 0},
        {"2021-03-07T09:05", 0, 0},  // (the calendar's refusals: host_clock)
    };
    for (const auto& c : cases) {
        Clock clock(Time(42, 0));
        unsigned read = 777;
        EXPECT_EQ(clock.set(c.text, 0, &read).isSuccess(), c.charsRead != 0) << c.text;
        EXPECT_EQ(read, c.charsRead ? c.charsRead : 777) << c.text;
        EXPECT_EQ(clock.toTime(), c.charsRead ? Time(1615107900, c.nanos) : Time(42, 0)) << c.text;
    }
    EXPECT_EQ(Clock(Time(1615107900, 250999999)).toString(Clock::FORMAT_LOG),
              "2021-03-07 09:05:00.250");
    EXPECT_EQ(Clock(Time(-1, 0)).toString(Clock::FORMAT_LOG), "1969-12-31 23:59:59.000");
}

}  // namespace
