// Logging. RTD::Monitor is a sink with a verbosity; a line of level L is
// written only when L <= verbosity. Callers ask
// RTD::REPOSITORY::GET_MONITOR_IF_ENABLED_FOR_LOGGING first, so that a line
// that would be dropped is never formatted.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <vector>

#include "host/runtime/string.h"

namespace RTD {

class Monitor {
public:
    explicit Monitor(int verbosity = 0) : verbosity_(verbosity) {}
    virtual ~Monitor() = default;

    int getVerbosity() const { return verbosity_; }
    void setVerbosity(int v) { verbosity_ = v; }

    void monitor(int level, const char* fmt, ...) __attribute__((format(printf, 3, 4)));
    void vmonitor(int level, const char* fmt, va_list args);

protected:
    // Receives each admitted line, without a trailing newline.
    virtual void write(int level, const String& line) = 0;

private:
    int verbosity_;
};

// Writes each line, with its level, to a FILE* (stderr by default).
class StreamMonitor : public Monitor {
public:
    explicit StreamMonitor(int verbosity, FILE* out = stderr) : Monitor(verbosity), out_(out) {}

protected:
    void write(int level, const String& line) override;

private:
    FILE* out_;
    std::mutex mutex_;
};

// Keeps every line in memory, for tests.
class CaptureMonitor : public Monitor {
public:
    struct Line {
        int level;
        String text;
    };
    explicit CaptureMonitor(int verbosity) : Monitor(verbosity) {}

    std::vector<Line> lines() const;
    // True when some captured line contains `needle`.
    bool contains(const String& needle) const;
    void clear();

protected:
    void write(int level, const String& line) override;

private:
    mutable std::mutex mutex_;
    std::vector<Line> lines_;
};

namespace REPOSITORY {
// The monitor when it exists and admits `level`, else null.
inline Monitor* GET_MONITOR_IF_ENABLED_FOR_LOGGING(Monitor* m, int level) {
    return m && level <= m->getVerbosity() ? m : nullptr;
}
}  // namespace REPOSITORY

}  // namespace RTD

// The text of a boolean: "true" or "false" (the lexer reads both back).
inline const char* TRUE_FALSE(bool b) {
    return b ? "true" : "false";
}
