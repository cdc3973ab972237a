// The arithmetic on VX::Time payloads that SUM, DIFF, PRODUCT and DIV rely
// on: carries and borrows between nanoseconds and seconds, wrapping seconds,
// and multiplication and division by factors large enough to need doubles.
#include <gtest/gtest.h>

#include <cstdint>

#include "host/time.h"

namespace {

using VX::Time;

void expectTime(const Time& t, int32_t seconds, int32_t nanoseconds) {
    EXPECT_EQ(t.getSeconds(), seconds);
    EXPECT_EQ(t.getNanoseconds(), nanoseconds);
}

TEST(TimeArithmetic, AddAndSubtractCarry) {
    expectTime(Time(1, 600000000) + Time(2, 500000000), 4, 100000000);
    expectTime(Time(1, 999999999) + Time(0, 1), 2, 0);
    expectTime(Time(INT32_MAX, 0) + Time(1, 0), INT32_MIN, 0);
    expectTime(Time(2, 0) - Time(0, 1), 1, 999999999);
    expectTime(Time(0, 0) - Time(1, 0), -1, 0);
    expectTime(Time(INT32_MIN, 0) - Time(0, 1), INT32_MAX, 999999999);
}

TEST(TimeArithmetic, MultiplyCarriesNanosecondsIntoWrappingSeconds) {
    struct Row {
        Time t;
        uint32_t n;
        int32_t seconds;
        int32_t nanoseconds;
    };
    const Row rows[] = {
        {Time(0, 900000000), 5, 4, 500000000},
        {Time(1, 500000000), 2, 3, 0},
        {Time(7, 123), 0, 0, 0},
        {Time(1, 0), 1u << 31, INT32_MIN, 0},
        {Time(0, 500000000), 1u << 31, 1 << 30, 0},
        // 999999999 * 4294967295 ns is 4294967290 s (wrapping to -6) and
        // 705032705 ns; the double path keeps the nanoseconds to a few units.
        {Time(0, 999999999), 4294967295u, -6, 705032705},
    };
    for (const Row& row : rows) {
        Time t = row.t;
        t *= row.n;
        EXPECT_EQ(t.getSeconds(), row.seconds) << row.n;
        EXPECT_NEAR(t.getNanoseconds(), row.nanoseconds, 1024) << row.n;
    }
}

TEST(TimeArithmetic, LargeFactorsKeepNanosecondsInRange) {
    for (uint32_t n = 1u << 30; n < 4294967295u - 99999989u; n += 99999989u) {
        for (int32_t ns : {1, 999999999, 123456789, 500000000}) {
            Time t(3, ns);
            t *= n;
            EXPECT_GE(t.getNanoseconds(), 0) << n << " " << ns;
            EXPECT_LT(t.getNanoseconds(), 1000000000) << n << " " << ns;
        }
    }
}

TEST(TimeArithmetic, DivideSplitsTheRemainderIntoNanoseconds) {
    Time t(7, 0);
    t /= 2;
    expectTime(t, 3, 500000000);
    t = Time(1, 0);
    t /= 3;
    expectTime(t, 0, 333333333);
    // Seconds divide as unsigned 32-bit numbers.
    t = Time(-1, 999999999);
    t /= 4294967295u;
    expectTime(t, 1, 0);
    // A remainder of 2^30 or more is split in doubles and must stay below a
    // whole second.
    for (uint32_t n : {3221225472u, 4294967295u, (1u << 30) + 1}) {
        t = Time(static_cast<int32_t>(n - 1), 999999999);
        t /= n;
        EXPECT_EQ(t.getSeconds(), 0) << n;
        EXPECT_GE(t.getNanoseconds(), 999999000) << n;
        EXPECT_LE(t.getNanoseconds(), 999999999) << n;
    }
}

}  // namespace
