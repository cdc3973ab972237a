// VX::Time arithmetic at its edges (wrapping seconds, nanosecond carries, the
// double-precision path for large factors) and the readings a clock gives:
// characters read, refusals that keep the value, and the log form. The
// calendar and the ISO form are in the tool's host_clock transcript.
#include <gtest/gtest.h>

#include <cstdint>

#include "host/runtime/clock.h"
#include "host/runtime/time.h"

namespace {

using VX::Clock;
using VX::Time;

TEST(TimeTest, ArithmeticWrapsSecondsAndKeepsNanosecondsInRange) {
    const Time MAX(INT32_MAX, 0), MIN(INT32_MIN, 0);
    const struct {
        Time a;
        char op;
        Time b;
        uint32_t n;
        Time expected;
    } cases[] = {
        {Time(1, 600000000), '+', Time(2, 500000000), 0, Time(4, 100000000)},
        {Time(0, 999999999), '+', Time(0, 1), 0, Time(1, 0)},
        {MAX, '+', Time(1, 0), 0, MIN},
        {Time(INT32_MAX, 500000000), '+', Time(0, 500000000), 0, MIN},
        {Time(3, 100000000), '-', Time(1, 500000000), 0, Time(1, 600000000)},
        {Time(0, 0), '-', Time(0, 1), 0, Time(-1, 999999999)},
        {MIN, '-', Time(1, 0), 0, MAX},
        {Time(0, 999999999), '*', {}, 1000, Time(999, 999999000)},
        {Time(0x10000, 0), '*', {}, 0x10000, Time(0, 0)},     // 2^32 wraps to 0
        {Time(0, 1), '*', {}, 1u << 31, Time(2, 147483648)},  // double path, carry
        // The product rounded to a double first: one nanosecond below exact.
        {Time(0, 999999999), '*', {}, 0xFFFFFFFF, Time(-6, 705032704)},
        // Division truncates and takes the seconds as unsigned; n == 0 is a no-op.
        {Time(10, 999999999), '/', {}, 10, Time(1, 99999999)},
        {Time(-1, 0), '/', {}, 2, Time(INT32_MAX, 500000000)},
        {Time(5, 5), '/', {}, 0, Time(5, 5)},
        {Time(static_cast<int32_t>(0xC0000000u), 999999999),
         '/',
         {},
         0xC0000001u,
         Time(0, 999999999)},
    };
    for (const auto& c : cases) {
        Time t = c.a;
        c.op == '+' ? t += c.b : c.op == '-' ? t -= c.b : c.op == '*' ? t *= c.n : t /= c.n;
        EXPECT_EQ(t, c.expected) << c.a.getSeconds() << "." << c.a.getNanoseconds() << c.op << c.n
                                 << " gave " << t.getSeconds() << "." << t.getNanoseconds();
        EXPECT_TRUE(c.op != '+' || c.a + c.b == c.expected);
    }
    EXPECT_EQ(Time(-1, 5).clearDate(), Time(86399, 5));
    EXPECT_EQ(Time(-1, 5).clearTime(), Time(-86400, 0));
    EXPECT_EQ(Time::fromMilliseconds(1500), Time(1, 500000000));
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
        {"2021-3-7T9:5:0", 0, 14},
        {"2021-03-07 09:05:00", 0, 0},
        {"2021-03-07T09:05", 0, 0},
        {"2021-03-07T23:59:60", 0, 0},
        {"2021-02-29T00:00:00", 0, 0},
        {"", 0, 0},
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
