// Internal to the database tracker: its log lines, each with one name in
// brackets, at level 2 on the engine monitor.
#pragma once

#include "host/runtime/crit.h"
#include "host/runtime/monitor.h"
#include "host/runtime/string.h"

namespace VX::SysEvent::detail {

inline void TRACKER_LOG(const char* format, const String& name) {
    if (RTD::Monitor* m = RTD::REPOSITORY::GET_MONITOR_IF_ENABLED_FOR_LOGGING(MON, 2)) {
        m->monitor(2, format, name.c_str());
    }
}

}  // namespace VX::SysEvent::detail
