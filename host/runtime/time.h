// VX::Time: a point in time or a duration as signed 32-bit whole seconds plus
// nanoseconds (always 0..999999999). The arithmetic wraps the seconds modulo
// 2^32 exactly as the engine's time functions expect; nothing here fails.
#pragma once

#include <compare>
#include <cstdint>

namespace VX {

class Time {
public:
    static constexpr int32_t NANOS_PER_SECOND = 1000000000;
    static constexpr int32_t SECONDS_PER_DAY = 86400;

    constexpr Time() = default;
    constexpr Time(int32_t seconds, int32_t nanoseconds)
        : seconds_(seconds), nanoseconds_(nanoseconds) {}
    static constexpr Time fromSeconds(int32_t seconds) { return Time(seconds, 0); }
    static Time fromMilliseconds(uint64_t ms);

    // The current time. Source 1 is the wall clock (seconds since 1970 in zone
    // 0), read from the engine's scheduler (VX::Scheduler): under a manual
    // clock every source reads that clock.
    static Time NOW(int source = 1);

    int32_t getSeconds() const { return seconds_; }
    int32_t getNanoseconds() const { return nanoseconds_; }
    void setSeconds(int32_t s) { seconds_ = s; }
    void setNanoseconds(int32_t ns) { nanoseconds_ = ns; }
    bool isZero() const { return seconds_ == 0 && nanoseconds_ == 0; }

    // Keeps the time of day: the point on 1970-01-01 with the same clock time.
    Time& clearDate();
    // Keeps the date: midnight of the same day.
    Time& clearTime();

    // Seconds add/subtract modulo 2^32 with a carry from the nanoseconds.
    Time& operator+=(const Time& other);
    Time& operator-=(const Time& other);
    // Multiplies by n: nanoseconds * n exact in 64 bits (in doubles for
    // n >= 2^30), the carry into the seconds, which wrap modulo 2^32.
    Time& operator*=(uint32_t n);
    // Divides by n >= 1 (seconds as unsigned 32-bit); n == 0 leaves it unchanged.
    Time& operator/=(uint32_t n);

    friend Time operator+(Time a, const Time& b) { return a += b; }
    friend Time operator-(Time a, const Time& b) { return a -= b; }

    // Milliseconds in the duration, for timers (negative durations give 0).
    uint64_t toMilliseconds() const;

    friend constexpr bool operator==(const Time& a, const Time& b) = default;
    friend constexpr std::strong_ordering operator<=>(const Time& a, const Time& b) {
        if (auto c = a.seconds_ <=> b.seconds_; c != 0) return c;
        return a.nanoseconds_ <=> b.nanoseconds_;
    }

private:
    int32_t seconds_ = 0;
    int32_t nanoseconds_ = 0;
};

}  // namespace VX
