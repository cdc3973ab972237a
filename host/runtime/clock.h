// VX::Clock: the calendar form of a VX::Time (proleptic Gregorian calendar).
// The engine uses zone 0 (UTC) only; other zones are accepted and treated as
// offsets in hours, which the engine never uses.
//
// Text forms: format 0 is "YYYY-MM-DDThh:mm:ss", with ".fraction" appended
// when the nanoseconds are not zero; format 1 is the log form
// "YYYY-MM-DD hh:mm:ss.mmm". set() reads format 0, accepting unpadded fields
// ("2021-3-7T9:5:0") and an optional fraction, and refuses fields out of range.
#pragma once

#include <ctime>

#include "host/runtime/string.h"
#include "host/runtime/time.h"
#include "host/runtime/xcode.h"

namespace VX {

class Clock {
public:
    using Zone = int;
    enum Format { FORMAT_ISO = 0, FORMAT_LOG = 1 };

    // 1970-01-01T00:00:00 in zone 0.
    Clock() = default;
    explicit Clock(const Time& t, Zone zone = 0) { set(t, zone); }

    static Clock NOW(Zone zone = 0) { return Clock(Time::NOW(1), zone); }

    // Calendar of `t`. Always succeeds for zone 0.
    XCode set(const Time& t, Zone zone = 0);
    // Parses a date-time from the start of `text`. On success `charsRead`
    // (when given) receives the number of characters consumed. A text that does
    // not start with a complete date 'T' time, or a field out of range, fails
    // and leaves the clock unchanged.
    XCode set(const String& text, Zone zone = 0, unsigned* charsRead = nullptr);
    XCode set(const char* text, Zone zone = 0, unsigned* charsRead = nullptr);

    Time toTime() const { return time_; }
    String toString(int format = FORMAT_ISO) const;
    // POSIX broken-down time: tm_sec, tm_min, tm_hour, tm_mday (from 1),
    // tm_mon (from 0), tm_year (since 1900), tm_wday (Sunday 0), tm_yday.
    struct tm getClockStruct() const;

    int getYear() const { return year_; }
    int getMonth() const { return month_; }  // 1..12
    int getDay() const { return day_; }      // 1..31

private:
    void fill();

    Time time_;
    Zone zone_ = 0;
    int year_ = 1970, month_ = 1, day_ = 1, hour_ = 0, minute_ = 0, second_ = 0, weekday_ = 4,
        yearDay_ = 0;
};

}  // namespace VX
