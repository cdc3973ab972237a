// Options: the tool's command line.
//
//   sysevent run [FILE...] [--db PATH] [--script FILE] [--trace LEVEL] [--manual-time]
//                [--explain NAME]... [--timeline FILE.svg]
//   sysevent test FILE... [--timeline FILE.svg]
//   sysevent functions [--markdown]
//   sysevent help
#pragma once

#include <vector>

#include "host/runtime/string.h"

namespace SysEventTool {

struct Options {
    enum Mode { RUN, TEST, FUNCTIONS, HELP };
    Mode mode = HELP;
    std::vector<String> files;  // definition files, in order
    String database;            // empty: in memory with the bundled schema
    String script;              // empty: standard input
    int trace = -1;             // the engine monitor's verbosity; -1: no monitor
    bool manualTime = false;
    bool markdown = false;
    std::vector<String> explain;  // names to explain after the script
    String timeline;              // empty: no timeline
};

// The usage text, ending with a newline.
extern const char* const USAGE;

// Reads argv. On bad usage returns false with the reason in `error`.
bool PARSE_OPTIONS(int argc, char** argv, Options& options, String& error);

}  // namespace SysEventTool
