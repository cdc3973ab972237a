// TraceMonitor: the engine's log monitor (VX::SysEvent::MON) when the tool
// runs with --trace or a trace command: each admitted line is printed among
// the tool's other output as "trace LEVEL: LINE", in the order the engine
// writes it. The detailed levels name nodes by their addresses as well; those
// print as "*", so that a run prints the same every time (and with every
// allocator): a node is known by its name or formula.
#pragma once

#include <cctype>
#include <string>

#include "host/runtime/monitor.h"
#include "tools/sysevent/output.h"

namespace SysEventTool {

class TraceMonitor : public RTD::Monitor {
public:
    TraceMonitor(int verbosity, Output& output) : Monitor(verbosity), output_(output) {}

protected:
    void write(int level, const String& line) override {
        output_.line(
            String::Formatted("trace %d: %s", level, withoutAddresses(line.str()).c_str()));
    }

private:
    // `text` with every address (0x and at least nine lower-case hex digits;
    // codes are shorter or upper case) replaced by "*".
    static std::string withoutAddresses(const std::string& text) {
        std::string out;
        for (size_t i = 0; i < text.size();) {
            size_t end = i;
            if (text.compare(i, 2, "0x") == 0) {
                end += 2;
                while (end < text.size() && (isdigit(static_cast<unsigned char>(text[end])) ||
                                             (text[end] >= 'a' && text[end] <= 'f')))
                    ++end;
            }
            if (end - i >= 11) {
                out += '*';
                i = end;
            } else {
                out += text[i++];
            }
        }
        return out;
    }

    Output& output_;
};

}  // namespace SysEventTool
