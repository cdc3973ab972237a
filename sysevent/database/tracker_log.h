// Internal to the database tracker: its log lines, each with one name in
// brackets, at level 2 on the engine monitor.
#pragma once

#include "host/runtime/crit.h"
#include "host/runtime/log.h"
#include "host/runtime/string.h"

namespace VX::SysEvent::detail {

inline void TRACKER_LOG(const char* format, const String& name) {
    SYSEVENT_LOG(2, format, name.c_str());
}

}  // namespace VX::SysEvent::detail
