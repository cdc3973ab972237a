// The replay command: a recorded log of a device as CSV rows
// "time,name,value" fed through the manual clock, so that debounce times can
// be tuned against what a real device did. The clock advances to each row's
// time (running the timers due on the way), then the row's value is set.
//
// Times: "YYYY-MM-DDThh:mm:ss[.fraction]" (UTC), or a duration from the
// start of the replay ("12.5" seconds, or "1m30s", "250ms"). Absolute times
// keep their intervals: the first one falls on the moment the replay starts.
// Times resolve to the millisecond and must not go backwards.
//
// Values: true and false, numbers, "quoted text", and anything a formula
// writes as a literal (5s, 2024-01-15); any other word is text. A header
// row "time,name,value" is skipped.
//
// A bad row is reported with its line and skipped whole: its time does not
// pass and nothing is set.
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "host/component/driver_repository.h"
#include "sysevent/repository/identifiers.h"
#include "sysevent/repository/repository.h"
#include "tools/sysevent/literal_reader.h"
#include "tools/sysevent/session.h"

namespace SysEventTool {

using VX::SysEvent::IWrite;
using VX::SysEvent::Repository;
using VX::SysEvent::Value;

namespace {

struct Field {
    std::string text;
    bool quoted = false;
};

// Splits a CSV line; "" inside quotes is one quote. False for a quote left
// open.
bool splitCsv(const std::string& line, std::vector<Field>& fields) {
    fields.assign(1, Field());
    for (size_t i = 0; i < line.size(); ++i) {
        char c = line[i];
        if (c == ',') {
            fields.emplace_back();
        } else if (c == '"' && fields.back().text.empty() && !fields.back().quoted) {
            fields.back().quoted = true;
            for (++i;; ++i) {
                if (i >= line.size()) return false;
                if (line[i] == '"') {
                    if (i + 1 < line.size() && line[i + 1] == '"') {
                        fields.back().text += '"';
                        ++i;
                    } else {
                        break;
                    }
                } else {
                    fields.back().text += line[i];
                }
            }
        } else {
            fields.back().text += c;
        }
    }
    for (Field& f : fields) {
        if (f.quoted) continue;
        size_t a = 0, b = f.text.size();
        while (a < b && isspace(static_cast<unsigned char>(f.text[a]))) ++a;
        while (b > a && isspace(static_cast<unsigned char>(f.text[b - 1]))) --b;
        f.text = f.text.substr(a, b - a);
    }
    return true;
}

// Reads `count` digits at `p` into `out`.
bool digits(const char*& p, int count, int& out) {
    out = 0;
    for (int i = 0; i < count; ++i, ++p) {
        if (!isdigit(static_cast<unsigned char>(*p))) return false;
        out = out * 10 + (*p - '0');
    }
    return true;
}

// Nanoseconds of a fraction ".ddd" at `p` (up to 9 digits kept).
bool fraction(const char*& p, int64_t& nanos) {
    nanos = 0;
    if (*p != '.') return true;
    ++p;
    int64_t scale = 100000000;
    if (!isdigit(static_cast<unsigned char>(*p))) return false;
    for (; isdigit(static_cast<unsigned char>(*p)); ++p, scale /= 10) nanos += (*p - '0') * scale;
    return true;
}

// Days since 1970-01-01 of a civil date.
int64_t daysFromCivil(int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

// "YYYY-MM-DDThh:mm:ss[.fraction]" as nanoseconds since the epoch.
bool absoluteTime(const std::string& text, int64_t& ns) {
    const char* p = text.c_str();
    int y, mo, d, h, mi, s;
    int64_t nanos;
    if (!digits(p, 4, y) || *p++ != '-' || !digits(p, 2, mo) || *p++ != '-' || !digits(p, 2, d) ||
        *p++ != 'T' || !digits(p, 2, h) || *p++ != ':' || !digits(p, 2, mi) || *p++ != ':' ||
        !digits(p, 2, s) || !fraction(p, nanos) || *p != 0) {
        return false;
    }
    if (mo < 1 || mo > 12 || d < 1 || d > 31 || h > 23 || mi > 59 || s > 59) return false;
    int64_t seconds = daysFromCivil(y, mo, d) * 86400 + h * 3600 + mi * 60 + s;
    ns = seconds * 1000000000 + nanos;
    return true;
}

// "12.5" (seconds) or a chain such as "1h2m3.5s" / "250ms", in nanoseconds.
bool relativeTime(const std::string& text, int64_t& ns) {
    const char* p = text.c_str();
    ns = 0;
    if (!*p) return false;
    while (*p) {
        if (!isdigit(static_cast<unsigned char>(*p))) return false;
        int64_t whole = 0, nanos = 0;
        for (; isdigit(static_cast<unsigned char>(*p)); ++p) {
            whole = whole * 10 + (*p - '0');
            if (whole > 100000000000LL) return false;
        }
        if (!fraction(p, nanos)) return false;
        int64_t unit;  // nanoseconds per unit
        if (*p == 0) {
            if (ns != 0) return false;  // a bare number only on its own
            unit = 1000000000;
        } else if (p[0] == 'm' && p[1] == 's') {
            unit = 1000000, p += 2;
        } else if (*p == 'h' || *p == 'm' || *p == 's') {
            unit = *p == 'h' ? 3600000000000LL : *p == 'm' ? 60000000000LL : 1000000000;
            ++p;
        } else {
            return false;
        }
        ns += whole * unit + nanos * (unit / 1000000) / 1000;
    }
    return true;
}

bool unsignedNumber(const std::string& text, Value& value) {
    if (text.empty() || text.size() > 19) return false;
    unsigned long long n = 0;
    for (char c : text) {
        if (!isdigit(static_cast<unsigned char>(c))) return false;
        n = n * 10 + static_cast<unsigned>(c - '0');
    }
    value = Value(n);
    return true;
}

bool floatNumber(const std::string& text, Value& value) {
    if (text.empty()) return false;
    char c = text[0];
    if (!isdigit(static_cast<unsigned char>(c)) && c != '-' && c != '.') return false;
    char* end = nullptr;
    double d = strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size()) return false;
    value = Value(d);
    return true;
}

Value readValue(const Field& field) {
    const std::string& t = field.text;
    Value value;
    if (field.quoted) return Value(String(t));
    if (t == "true" || t == "TRUE") return Value(true);
    if (t == "false" || t == "FALSE") return Value(false);
    if (unsignedNumber(t, value) || floatNumber(t, value)) return value;
    TextError ignored;
    if (READ_LITERAL(String(t), value, ignored)) return value;
    return Value(String(t));
}

}  // namespace

bool Session::cmdReplay(const CommandLine& cmd, Failure& failure) {
    String path;
    if (!oneWord(cmd, "a CSV file", path, failure)) return false;
    if (!manualTime_) {
        failure = Failure{cmd.verbColumn, "replay needs the manual clock (--manual-time)"};
        return false;
    }
    std::ifstream in(path.str());
    if (!in) {
        failure = Failure{cmd.restColumn, "cannot open " + path};
        return false;
    }
    int64_t passedMs = 0;   // since the replay began
    int64_t lastNs = 0;     // the time of the last applied row
    bool anchored = false;  // whether an absolute time was seen
    int64_t anchorNs = 0;   // that first absolute time
    unsigned rows = 0, bad = 0, number = 0;
    std::vector<Field> fields;
    std::string line;
    auto badRow = [&](const String& message) {
        ++bad;
        ++errors_;
        output_.error(String::Formatted("%s:%u: error: %s", path.c_str(), number, message.c_str()));
    };
    while (std::getline(in, line)) {
        ++number;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(" \t") == std::string::npos) continue;
        if (!splitCsv(line, fields)) {
            badRow("unterminated quoted field");
            continue;
        }
        if (rows == 0 && bad == 0 && fields.size() == 3 && fields[0].text == "time" &&
            fields[1].text == "name" && fields[2].text == "value") {
            continue;
        }
        if (fields.size() != 3) {
            badRow(
                String::Formatted("expecting 3 fields (time,name,value), not %zu", fields.size()));
            continue;
        }
        int64_t ns;
        if (absoluteTime(fields[0].text, ns)) {
            if (!anchored) anchored = true, anchorNs = ns;
            ns -= anchorNs;
        } else if (!relativeTime(fields[0].text, ns)) {
            badRow(
                "bad time '" + String(fields[0].text) +
                "' (expecting YYYY-MM-DDThh:mm:ss[.fraction] or a duration such as 1.5 or 1m30s)");
            continue;
        }
        if (ns < lastNs) {
            badRow("time '" + String(fields[0].text) + "' lies before the previous row's");
            continue;
        }
        const String name(fields[1].text);
        if (name.isEmpty() || name.indexOf(' ') >= 0) {
            badRow("bad name '" + name + "'");
            continue;
        }
        // A published name that is no variable refuses the row before its
        // time passes.
        VXPPtr<IUnknown> object;
        if (DRIVER::GET_IF(VX::SysEvent::DRIVER_NAME_OF(name), object).isSuccess()) {
            VXPPtr<IWrite> writable;
            XCode rc = Repository::GET(name, writable);
            if (rc.isErr()) {
                badRow(MESSAGE_OF(rc));
                continue;
            }
        }
        Value value = readValue(fields[2]);
        lastNs = ns;
        int64_t dueMs = ns / 1000000;
        if (dueMs > passedMs) passTime(static_cast<uint64_t>(dueMs - passedMs));
        passedMs = std::max(passedMs, dueMs);
        XCode rc = Repository::SET_VALUE(name, value);
        if (rc.isErr()) {
            badRow(MESSAGE_OF(rc));
            continue;
        }
        ++rows;
    }
    output_.line(
        String::Formatted("replayed %u rows of %s, %u bad rows skipped", rows, path.c_str(), bad));
    return true;
}

}  // namespace SysEventTool
