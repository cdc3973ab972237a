// Timeline: a self-contained SVG picture of a run: one row per recorded
// name over the run's time, with the engine clock's time of day on the axis.
// Numbers and booleans draw as steps (a boolean between its two levels, a
// number scaled between its smallest and largest value); texts, times and
// error values draw as labelled bands. Each piece carries a tooltip with
// the name, the value and when it began.
#pragma once

#include <map>
#include <vector>

#include "host/runtime/string.h"
#include "host/runtime/time.h"
#include "tools/sysevent/change_log.h"

namespace SysEventTool {

// The SVG document for `series` between `start` and `end`.
String TIMELINE_SVG(const std::map<String, std::vector<Change>>& series, const VX::Time& start,
                    const VX::Time& end);

// Writes TIMELINE_SVG to `path`; false with `error` set when it cannot.
bool WRITE_TIMELINE(const String& path, const ChangeLog& log, String& error);

}  // namespace SysEventTool
