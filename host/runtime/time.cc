// VX::Time: arithmetic, and NOW, which reads the scheduler in force.
#include "host/runtime/time.h"

#include "host/runtime/crit.h"

namespace VX {

namespace {

int32_t wrap(int64_t v) {
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(v)));
}

int32_t floorMod(int32_t v, int32_t m) {
    int32_t r = v % m;
    return r < 0 ? r + m : r;
}

}  // namespace

Time Time::fromMilliseconds(uint64_t ms) {
    return Time(wrap(static_cast<int64_t>(ms / 1000)), static_cast<int32_t>(ms % 1000) * 1000000);
}

Time Time::NOW(int /*source*/) {
    return CRIT::INSTANCE()->getScheduler().now();
}

Time& Time::clearDate() {
    seconds_ = floorMod(seconds_, SECONDS_PER_DAY);
    return *this;
}

Time& Time::clearTime() {
    seconds_ = wrap(static_cast<int64_t>(seconds_) - floorMod(seconds_, SECONDS_PER_DAY));
    nanoseconds_ = 0;
    return *this;
}

Time& Time::operator+=(const Time& other) {
    seconds_ = wrap(static_cast<int64_t>(seconds_) + other.seconds_);
    nanoseconds_ += other.nanoseconds_;
    if (nanoseconds_ > NANOS_PER_SECOND - 1) {
        seconds_ = wrap(static_cast<int64_t>(seconds_) + 1);
        nanoseconds_ -= NANOS_PER_SECOND;
    }
    return *this;
}

Time& Time::operator-=(const Time& other) {
    seconds_ = wrap(static_cast<int64_t>(seconds_) - other.seconds_);
    nanoseconds_ -= other.nanoseconds_;
    if (nanoseconds_ < 0) {
        seconds_ = wrap(static_cast<int64_t>(seconds_) - 1);
        nanoseconds_ += NANOS_PER_SECOND;
    }
    return *this;
}

Time& Time::operator*=(uint32_t n) {
    uint64_t carry;
    uint32_t nanos;
    if (n >= (1u << 30)) {
        double t = static_cast<double>(nanoseconds_) * n;
        carry = static_cast<uint64_t>(t / NANOS_PER_SECOND);
        double rest = t - static_cast<double>(carry) * NANOS_PER_SECOND;
        // The quotient is rounded before truncation, so the carry can be one
        // too high (or low); keep the nanoseconds within 0..999999999.
        if (rest < 0) {
            --carry;
            rest += NANOS_PER_SECOND;
        } else if (rest >= NANOS_PER_SECOND) {
            ++carry;
            rest -= NANOS_PER_SECOND;
        }
        nanos = static_cast<uint32_t>(rest);
    } else {
        uint64_t t = static_cast<uint64_t>(nanoseconds_) * n;
        carry = t / NANOS_PER_SECOND;
        nanos = static_cast<uint32_t>(t % NANOS_PER_SECOND);
    }
    uint64_t s = static_cast<uint64_t>(static_cast<uint32_t>(seconds_)) * n + carry;
    seconds_ = static_cast<int32_t>(static_cast<uint32_t>(s));
    nanoseconds_ = static_cast<int32_t>(nanos);
    return *this;
}

Time& Time::operator/=(uint32_t n) {
    if (n == 0) return *this;
    uint32_t s = static_cast<uint32_t>(seconds_);
    uint32_t q = s / n;
    uint32_t r = s - q * n;
    uint64_t nanos;
    if (r >= (1u << 30)) {
        nanos =
            static_cast<uint64_t>((static_cast<double>(r) * NANOS_PER_SECOND + nanoseconds_) / n);
    } else {
        nanos =
            (static_cast<uint64_t>(r) * NANOS_PER_SECOND + static_cast<uint64_t>(nanoseconds_)) / n;
    }
    // r < n keeps the exact quotient below one second; only the rounding of
    // the double path can reach it.
    if (nanos > NANOS_PER_SECOND - 1) nanos = NANOS_PER_SECOND - 1;
    seconds_ = static_cast<int32_t>(q);
    nanoseconds_ = static_cast<int32_t>(nanos);
    return *this;
}

uint64_t Time::toMilliseconds() const {
    if (seconds_ < 0) return 0;
    return static_cast<uint64_t>(seconds_) * 1000 + static_cast<uint64_t>(nanoseconds_) / 1000000;
}

}  // namespace VX
