// TraceMonitor: the engine's log monitor (VX::SysEvent::MON) when the tool
// runs with --trace: each admitted line is printed among the tool's other
// output as "trace LEVEL: LINE", in the order the engine writes it.
#pragma once

#include "host/runtime/monitor.h"
#include "tools/sysevent/output.h"

namespace SysEventTool {

class TraceMonitor : public RTD::Monitor {
public:
    TraceMonitor(int verbosity, Output& output) : Monitor(verbosity), output_(output) {}

protected:
    void write(int level, const String& line) override {
        output_.line(String::Formatted("trace %d: %s", level, line.c_str()));
    }

private:
    Output& output_;
};

}  // namespace SysEventTool
