// VX::Clock: calendar arithmetic (days from civil and back) and the two text forms.
#include "host/runtime/clock.h"

#include <cctype>
#include <cstdint>

namespace VX {

namespace {

// Days since 1970-01-01 of a proleptic Gregorian date.
int64_t daysFromCivil(int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void civilFromDays(int64_t z, int& y, int& m, int& d) {
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    y = static_cast<int>(static_cast<int64_t>(yoe) + era * 400 + (m <= 2));
}

bool isLeap(int64_t y) {
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

unsigned daysInMonth(int64_t y, unsigned m) {
    static const unsigned days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && isLeap(y) ? 29 : days[m - 1];
}

// Reads 1..max digits at text[pos]; false when there is none or too many.
bool readNumber(const char* text, unsigned& pos, unsigned maxDigits, int64_t& out) {
    unsigned start = pos;
    int64_t v = 0;
    while (isdigit(static_cast<unsigned char>(text[pos])) && pos - start < maxDigits) {
        v = v * 10 + (text[pos] - '0');
        ++pos;
    }
    if (pos == start || isdigit(static_cast<unsigned char>(text[pos]))) return false;
    out = v;
    return true;
}

bool expect(const char* text, unsigned& pos, char c) {
    if (text[pos] != c) return false;
    ++pos;
    return true;
}

}  // namespace

XCode Clock::set(const Time& t, Zone zone) {
    time_ = t;
    zone_ = zone;
    fill();
    return XCode();
}

void Clock::fill() {
    int64_t local = static_cast<int64_t>(time_.getSeconds()) + static_cast<int64_t>(zone_) * 3600;
    int64_t days = local >= 0 ? local / Time::SECONDS_PER_DAY
                              : (local - (Time::SECONDS_PER_DAY - 1)) / Time::SECONDS_PER_DAY;
    int64_t secs = local - days * Time::SECONDS_PER_DAY;
    civilFromDays(days, year_, month_, day_);
    hour_ = static_cast<int>(secs / 3600);
    minute_ = static_cast<int>(secs / 60 % 60);
    second_ = static_cast<int>(secs % 60);
    weekday_ = static_cast<int>(((days % 7) + 11) % 7);  // 1970-01-01 was a Thursday (4)
    yearDay_ = static_cast<int>(days - daysFromCivil(year_, 1, 1));
}

XCode Clock::set(const String& text, Zone zone, unsigned* charsRead) {
    return set(text.c_str(), zone, charsRead);
}

XCode Clock::set(const char* text, Zone zone, unsigned* charsRead) {
    unsigned pos = 0;
    int64_t year, month, day, hour, minute, second;
    if (!readNumber(text, pos, 4, year) || !expect(text, pos, '-') ||
        !readNumber(text, pos, 2, month) || !expect(text, pos, '-') ||
        !readNumber(text, pos, 2, day) || !expect(text, pos, 'T') ||
        !readNumber(text, pos, 2, hour) || !expect(text, pos, ':') ||
        !readNumber(text, pos, 2, minute) || !expect(text, pos, ':') ||
        !readNumber(text, pos, 2, second)) {
        return XCode::Failure("INVALID DATE-TIME");
    }
    int32_t nanos = 0;
    if (text[pos] == '.' && isdigit(static_cast<unsigned char>(text[pos + 1]))) {
        ++pos;
        int32_t scale = 100000000;
        while (isdigit(static_cast<unsigned char>(text[pos]))) {
            nanos += (text[pos] - '0') * scale;
            scale /= 10;
            ++pos;
        }
    }
    if (month < 1 || month > 12 || day < 1 ||
        day > daysInMonth(year, static_cast<unsigned>(month)) || hour > 23 || minute > 59 ||
        second > 59) {
        return XCode::Failure("DATE-TIME OUT OF RANGE");
    }
    int64_t seconds =
        daysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) *
            Time::SECONDS_PER_DAY +
        hour * 3600 + minute * 60 + second - static_cast<int64_t>(zone) * 3600;
    if (seconds < INT32_MIN || seconds > INT32_MAX) return XCode::Failure("DATE-TIME OUT OF RANGE");
    set(Time(static_cast<int32_t>(seconds), nanos), zone);
    if (charsRead) *charsRead = pos;
    return XCode();
}

String Clock::toString(int format) const {
    if (format == FORMAT_LOG) {
        return String::Formatted("%04d-%02d-%02d %02d:%02d:%02d.%03d", year_, month_, day_, hour_,
                                 minute_, second_, time_.getNanoseconds() / 1000000);
    }
    String out = String::Formatted("%04d-%02d-%02dT%02d:%02d:%02d", year_, month_, day_, hour_,
                                   minute_, second_);
    if (int32_t ns = time_.getNanoseconds(); ns != 0) {
        String frac = String::Formatted("%09d", ns);
        size_t len = frac.length();
        while (len > 1 && frac[len - 1] == '0') --len;
        out += "." + frac.substring(0, len);
    }
    return out;
}

struct tm Clock::getClockStruct() const {
    struct tm out {};
    out.tm_sec = second_;
    out.tm_min = minute_;
    out.tm_hour = hour_;
    out.tm_mday = day_;
    out.tm_mon = month_ - 1;
    out.tm_year = year_ - 1900;
    out.tm_wday = weekday_;
    out.tm_yday = yearDay_;
    return out;
}

}  // namespace VX
