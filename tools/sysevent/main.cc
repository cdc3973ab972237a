// sysevent: the command-line tool for writing and testing formulas against
// the engine. See options.h for the command line and session.h for the
// command language.
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <memory>

#include "host/runtime/clock.h"
#include "host/runtime/crit.h"
#include "host/runtime/manual_time.h"
#include "tools/sysevent/catalogue.h"
#include "tools/sysevent/options.h"
#include "tools/sysevent/script_runner.h"
#include "tools/sysevent/session.h"
#include "tools/sysevent/test_runner.h"
#include "tools/sysevent/timeline.h"
#include "tools/sysevent/trace_monitor.h"

using namespace SysEventTool;

namespace {

int run(const Options& options) {
    Output output;
    if (options.manualTime) {
        VX::Clock start;
        start.set(MANUAL_TIME_START);
        VX::ManualTime::ENABLE(start.toTime());
    }
    std::unique_ptr<TraceMonitor> monitor;
    if (options.trace >= 0) {
        monitor = std::make_unique<TraceMonitor>(options.trace, output);
        VXAutoLock engine(VX::SysEvent::LOCK());
        VX::SysEvent::MON = monitor.get();
    }
    unsigned errors = 0;
    {
        Session session(output, options.manualTime);
        XCode rc = session.openDatabase(options.database);
        if (rc.isErr()) {
            String where = options.database.isEmpty() ? String("--db") : options.database;
            session.reportError(where, rc.hasString() ? rc.getString() : rc.toString());
        }
        bool going = true;
        for (const String& file : options.files) {
            going = RUN_FILE(session, output, file, false);
            if (!going) break;
        }
        if (going) {
            if (!options.script.isEmpty()) {
                RUN_FILE(session, output, options.script, true);
            } else if (isatty(STDIN_FILENO)) {
                RUN_PROMPT(session, output);
            } else {
                RUN_STREAM(session, output, std::cin, "<stdin>", true);
            }
        }
        for (size_t i = 0; i < options.explain.size() && !session.quitRequested(); ++i) {
            output.line("> why " + options.explain[i]);
            session.execute("--explain", static_cast<unsigned>(i + 1), "why " + options.explain[i]);
        }
        String error;
        if (!options.timeline.isEmpty() &&
            !WRITE_TIMELINE(options.timeline, session.changeLog(), error)) {
            session.reportError(options.timeline, error);
        }
        errors = session.errorCount();
    }
    if (monitor) {
        VXAutoLock engine(VX::SysEvent::LOCK());
        VX::SysEvent::MON = nullptr;
    }
    return errors == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    String error;
    if (!PARSE_OPTIONS(argc, argv, options, error)) {
        fprintf(stderr, "sysevent: %s\n%s", error.c_str(), USAGE);
        return 2;
    }
    switch (options.mode) {
        case Options::HELP:
            fputs(USAGE, stdout);
            return 0;
        case Options::FUNCTIONS:
            if (options.markdown) {
                fputs(CATALOGUE_MARKDOWN().c_str(), stdout);
            } else {
                for (const String& line : CATALOGUE_LINES()) printf("%s\n", line.c_str());
            }
            return 0;
        case Options::TEST:
            return RUN_TESTS(options);
        case Options::RUN:
            break;
    }
    return run(options);
}
