// VX::Clock: reading date-times (padded and unpadded, characters read,
// refusals), the two text forms and the broken-down calendar.
#include <gtest/gtest.h>

#include <array>

#include "host/runtime/clock.h"

namespace {

using VX::Clock;
using VX::Time;

constexpr int32_t MARCH_7_2021_0905 = 1615107900;  // 2021-03-07T09:05:00 UTC

TEST(ClockTest, ParsesDateTimesAndReportsCharactersRead) {
    struct Case {
        const char* text;
        Time expected;
        unsigned charsRead;
    } cases[] = {
        {"2021-03-07T09:05:00", Time(MARCH_7_2021_0905, 0), 19},
        {"2021-3-7T9:5:0", Time(MARCH_7_2021_0905, 0), 14},
        {"2021-03-07T09:05:00.25xyz", Time(MARCH_7_2021_0905, 250000000), 22},
        {"2021-03-07T09:05:00 + 1", Time(MARCH_7_2021_0905, 0), 19},
        {"2021-03-07T09:05:00.", Time(MARCH_7_2021_0905, 0), 19},  // a dot without digits
        {"2024-02-29T00:00:00", Time(1709164800, 0), 19},          // leap year
        {"1970-01-01T00:00:00", Time(0, 0), 19},
        {"1969-12-31T23:59:59", Time(-1, 0), 19},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        Clock clock;
        unsigned read = 0;
        ASSERT_TRUE(clock.set(c.text, 0, &read).isSuccess());
        EXPECT_EQ(clock.toTime(), c.expected);
        EXPECT_EQ(read, c.charsRead);
    }
}

TEST(ClockTest, RefusesIncompleteOrOutOfRangeTextsAndKeepsItsValue) {
    const char* refused[] = {
        "2021",                 // a plain number
        "2021-03-07",           // a date without a time
        "09:05:00",             // a time without a date
        "2021-03-07 09:05:00",  // no 'T'
        "2021-03-07T09:05",     // no seconds
        "2021-13-01T00:00:00",  // month 13
        "2021-00-01T00:00:00",  // month 0
        "2021-01-32T00:00:00",  // day 32
        "2021-04-31T00:00:00",  // April has 30 days
        "2021-02-29T00:00:00",  // not a leap year
        "1900-02-29T00:00:00",  // not a leap year either
        "2021-03-07T24:00:00",
        "2021-03-07T23:60:00",
        "2021-03-07T23:59:60",
        "12345-01-01T00:00:00",  // five-digit year
        "2021-003-07T09:05:00",  // three-digit month
        "",
    };
    for (const char* text : refused) {
        Clock clock(Time(42, 0));
        unsigned read = 777;
        EXPECT_TRUE(clock.set(text, 0, &read).isErr()) << text;
        EXPECT_EQ(clock.toTime(), Time(42, 0)) << text;
        EXPECT_EQ(read, 777u) << text;
    }
}

TEST(ClockTest, TextForms) {
    struct Case {
        Time t;
        const char* iso;
        const char* log;
    } cases[] = {
        {Time(MARCH_7_2021_0905, 0), "2021-03-07T09:05:00", "2021-03-07 09:05:00.000"},
        {Time(MARCH_7_2021_0905, 250000000), "2021-03-07T09:05:00.25", "2021-03-07 09:05:00.250"},
        {Time(MARCH_7_2021_0905, 1), "2021-03-07T09:05:00.000000001", "2021-03-07 09:05:00.000"},
        {Time(0, 0), "1970-01-01T00:00:00", "1970-01-01 00:00:00.000"},
        {Time(-1, 0), "1969-12-31T23:59:59", "1969-12-31 23:59:59.000"},
    };
    for (const Case& c : cases) {
        Clock clock(c.t);
        EXPECT_EQ(clock.toString(Clock::FORMAT_ISO), c.iso);
        EXPECT_EQ(clock.toString(Clock::FORMAT_LOG), c.log);
        // The ISO form reads back to the same time.
        Clock back;
        ASSERT_TRUE(back.set(clock.toString()).isSuccess());
        EXPECT_EQ(back.toTime(), c.t);
    }
}

TEST(ClockTest, BrokenDownCalendar) {
    struct Case {
        Time t;
        int year, mon, mday, hour, min, sec, wday, yday;
    } cases[] = {
        {Time(0, 0), 70, 0, 1, 0, 0, 0, 4, 0},                    // 1970-01-01 was a Thursday
        {Time(951825600, 0), 100, 1, 29, 12, 0, 0, 2, 59},        // 2000-02-29 noon, a Tuesday
        {Time(MARCH_7_2021_0905, 0), 121, 2, 7, 9, 5, 0, 0, 65},  // a Sunday
        {Time(-1, 0), 69, 11, 31, 23, 59, 59, 3, 364},            // a Wednesday
    };
    for (const Case& c : cases) {
        const struct tm tm = Clock(c.t).getClockStruct();
        EXPECT_EQ(
            (std::array<int, 8>{tm.tm_year, tm.tm_mon, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec,
                                tm.tm_wday, tm.tm_yday}),
            (std::array<int, 8>{c.year, c.mon, c.mday, c.hour, c.min, c.sec, c.wday, c.yday}));
    }
    const Clock c(Time(MARCH_7_2021_0905, 0));
    EXPECT_EQ((std::array<int, 3>{c.getYear(), c.getMonth(), c.getDay()}),
              (std::array<int, 3>{2021, 3, 7}));
}

}  // namespace
