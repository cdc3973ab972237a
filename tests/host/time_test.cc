// VX::Time arithmetic: carries, wrapping seconds, multiplication (including
// the double-precision path for large factors) and division.
#include <gtest/gtest.h>

#include <cstdint>

#include "host/runtime/time.h"

namespace {

using VX::Time;

TEST(TimeTest, AddAndSubtractCarryNanosecondsAndWrapSeconds) {
    struct Case {
        Time a;
        char op;
        Time b, expected;
    } cases[] = {
        {Time(1, 400000000), '+', Time(2, 500000000), Time(3, 900000000)},
        {Time(1, 600000000), '+', Time(2, 500000000), Time(4, 100000000)},
        {Time(0, 999999999), '+', Time(0, 1), Time(1, 0)},
        {Time(INT32_MAX, 0), '+', Time(1, 0), Time(INT32_MIN, 0)},
        {Time(INT32_MAX, 500000000), '+', Time(0, 500000000), Time(INT32_MIN, 0)},
        {Time(-5, 0), '+', Time(3, 0), Time(-2, 0)},
        {Time(3, 900000000), '-', Time(2, 500000000), Time(1, 400000000)},
        {Time(3, 100000000), '-', Time(1, 500000000), Time(1, 600000000)},
        {Time(0, 0), '-', Time(0, 1), Time(-1, 999999999)},
        {Time(INT32_MIN, 0), '-', Time(1, 0), Time(INT32_MAX, 0)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.a.getSeconds() << "." << c.a.getNanoseconds() << c.op
                                          << c.b.getSeconds() << "." << c.b.getNanoseconds());
        Time t = c.a;
        c.op == '+' ? t += c.b : t -= c.b;
        EXPECT_EQ(t, c.expected);
        EXPECT_EQ(c.op == '+' ? c.a + c.b : c.a - c.b, c.expected);
    }
}

TEST(TimeTest, MultiplyAndDivideByUnsignedWrapModulo32Bits) {
    struct Case {
        Time t;
        char op;
        uint32_t n;
        Time expected;
    } cases[] = {
        {Time(1, 500000000), '*', 3, Time(4, 500000000)},
        {Time(0, 999999999), '*', 1000, Time(999, 999999000)},
        {Time(5, 0), '*', 0, Time(0, 0)},
        {Time(0x10000, 0), '*', 0x10000, Time(0, 0)},           // 2^32 wraps to 0
        {Time(-1, 0), '*', 2, Time(-2, 0)},                     // 0xFFFFFFFF * 2 mod 2^32
        {Time(0, 500000000), '*', 1u << 30, Time(1 << 29, 0)},  // double path, exact
        {Time(0, 1), '*', 1u << 31, Time(2, 147483648)},        // double path, carry
        {Time(1, 1), '*', 1u << 31, Time(INT32_MIN + 2, 147483648)},
        // double path: the product 4294967290705032705 is rounded to a double
        // first, so the nanoseconds come out one lower than exact arithmetic
        {Time(0, 999999999), '*', 0xFFFFFFFF, Time(-6, 705032704)},
        {Time(0, 999999999), '*', (1u << 30) - 1, Time(1073741821, 926258177)},  // exact path
        // Division truncates and treats the seconds as unsigned.
        {Time(7, 0), '/', 2, Time(3, 500000000)},
        {Time(1, 0), '/', 3, Time(0, 333333333)},
        {Time(10, 999999999), '/', 10, Time(1, 99999999)},
        {Time(-1, 0), '/', 2, Time(INT32_MAX, 500000000)},  // 0xFFFFFFFF / 2
        {Time(5, 5), '/', 0, Time(5, 5)},                   // n == 0 leaves it alone
        // remainder >= 2^30: the double path, still below one second
        {Time(static_cast<int32_t>(0xC0000000u), 0), '/', 0xC0000001u, Time(0, 999999999)},
        {Time(static_cast<int32_t>(0xC0000000u), 999999999), '/', 0xC0000001u, Time(0, 999999999)},
    };
    for (const Case& c : cases) {
        Time t = c.t;
        c.op == '*' ? t *= c.n : t /= c.n;
        EXPECT_EQ(t, c.expected) << c.t.getSeconds() << "." << c.t.getNanoseconds() << c.op << c.n
                                 << " gave " << t.getSeconds() << "." << t.getNanoseconds();
        EXPECT_GE(t.getNanoseconds(), 0);
        EXPECT_LT(t.getNanoseconds(), Time::NANOS_PER_SECOND);
    }
}

TEST(TimeTest, ClearDateAndTimeAndMilliseconds) {
    Time t(86400 * 3 + 3600 + 5, 7);
    EXPECT_EQ(Time(t).clearDate(), Time(3605, 7));
    EXPECT_EQ(Time(t).clearTime(), Time(86400 * 3, 0));
    // Before 1970 the day still starts at midnight.
    EXPECT_EQ(Time(-1, 0).clearDate(), Time(86399, 0));
    EXPECT_EQ(Time(-1, 5).clearTime(), Time(-86400, 0));
    EXPECT_EQ(Time::fromMilliseconds(1500), Time(1, 500000000));
    EXPECT_EQ(Time(2, 345678901).toMilliseconds(), 2345u);
    EXPECT_EQ(Time(-2, 0).toMilliseconds(), 0u);
    EXPECT_LT(Time(1, 5), Time(2, 0));
    EXPECT_LT(Time(-1, 999999999), Time(0, 0));
}

}  // namespace
