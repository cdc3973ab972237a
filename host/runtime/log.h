// SYSEVENT_LOG: the one way the engine writes a log line to its monitor
// VX::SysEvent::MON. The line is formatted, and its arguments evaluated, only
// when the monitor exists and admits the level, so a dropped trace line costs
// one comparison however expensive its texts are. It is a macro for that
// reason: a function would evaluate its arguments before it could decide.
#pragma once

#include "host/runtime/crit.h"
#include "host/runtime/monitor.h"

// Writes a printf-style line at `level` when the engine monitor admits it.
#define SYSEVENT_LOG(level, ...) SYSEVENT_LOG_TAGGED((level), (level), __VA_ARGS__)

// Admits the line at `level` but writes it at the monitor's own verbosity, so
// that a sink that sorts lines by level always shows it (value changes of
// published objects, expression updates).
#define SYSEVENT_LOG_AT_VERBOSITY(level, ...) \
    SYSEVENT_LOG_TAGGED((level), sysEventLogMonitor_->getVerbosity(), __VA_ARGS__)

#define SYSEVENT_LOG_TAGGED(level, tag, ...)                                                     \
    do {                                                                                         \
        if (RTD::Monitor* sysEventLogMonitor_ =                                                  \
                RTD::REPOSITORY::GET_MONITOR_IF_ENABLED_FOR_LOGGING(VX::SysEvent::MON, (level))) \
            sysEventLogMonitor_->monitor((tag), __VA_ARGS__);                                    \
    } while (0)

namespace VX::SysEvent {

// True when a line at `level` would be written: for texts assembled over
// several statements before they are logged.
inline bool LOG_ADMITS(int level) {
    return RTD::REPOSITORY::GET_MONITOR_IF_ENABLED_FOR_LOGGING(MON, level) != nullptr;
}

}  // namespace VX::SysEvent
