// RTD::Monitor and its two sinks.
#include "host/runtime/monitor.h"

namespace RTD {

void Monitor::monitor(int level, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    vmonitor(level, fmt, args);
    va_end(args);
}

void Monitor::vmonitor(int level, const char* fmt, va_list args) {
    if (level > verbosity_) return;
    write(level, String::VFormatted(fmt, args));
}

void StreamMonitor::write(int level, const String& line) {
    std::lock_guard<std::mutex> guard(mutex_);
    fprintf(out_, "[%d] %s\n", level, line.c_str());
    fflush(out_);
}

std::vector<CaptureMonitor::Line> CaptureMonitor::lines() const {
    std::lock_guard<std::mutex> guard(mutex_);
    return lines_;
}

bool CaptureMonitor::contains(const String& needle) const {
    std::lock_guard<std::mutex> guard(mutex_);
    for (const Line& l : lines_) {
        if (l.text.indexOf(needle) >= 0) return true;
    }
    return false;
}

void CaptureMonitor::clear() {
    std::lock_guard<std::mutex> guard(mutex_);
    lines_.clear();
}

void CaptureMonitor::write(int level, const String& line) {
    std::lock_guard<std::mutex> guard(mutex_);
    lines_.push_back({level, line});
}

}  // namespace RTD
