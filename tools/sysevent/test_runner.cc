// The test command: one child process per file, counts back through a pipe.
#include "tools/sysevent/test_runner.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "host/runtime/clock.h"
#include "host/runtime/manual_time.h"
#include "tools/sysevent/command_line.h"
#include "tools/sysevent/script_runner.h"
#include "tools/sysevent/session.h"
#include "tools/sysevent/timeline.h"

namespace SysEventTool {

const char* const MANUAL_TIME_START = "2024-01-01T00:00:00";

namespace {

struct Counts {
    unsigned passed = 0;
    unsigned failed = 0;
};

// Observes every plain name that an expect line of the file checks.
void observeCheckedNames(const String& path, ChangeLog& log) {
    std::ifstream in(path.str());
    std::string line;
    while (std::getline(in, line)) {
        CommandLine cmd;
        if (!SPLIT_COMMAND(String(line), cmd) || cmd.verb != "expect") continue;
        size_t end = 0;
        while (end < cmd.rest.length() && cmd.rest[end] != ' ' && cmd.rest[end] != '=' &&
               cmd.rest[end] != '~') {
            ++end;
        }
        String name = cmd.rest.substring(0, end);
        if (!name.isEmpty() && name.indexOf('%') < 0 && name.indexOf('{') < 0) log.observe(name);
    }
}

// The child's part: runs one file and returns its counts.
Counts runFile(const String& path, const String& timeline) {
    VX::Clock start;
    start.set(MANUAL_TIME_START);
    VX::ManualTime::ENABLE(start.toTime());
    Output output;
    Counts counts;
    Session session(output, true);
    XCode rc = session.openDatabase(String());
    if (rc.isErr()) session.reportError("--db", rc.hasString() ? rc.getString() : rc.toString());
    observeCheckedNames(path, session.changeLog());
    RUN_FILE(session, output, path, false);
    if (!timeline.isEmpty()) {
        String error;
        if (!WRITE_TIMELINE(timeline, session.changeLog(), error)) {
            session.reportError(timeline, error);
        }
    }
    counts.passed = session.checksPassed();
    counts.failed = session.checksFailed() + session.errorCount();
    return counts;
}

}  // namespace

String TIMELINE_PATH(const String& path, size_t index, size_t count) {
    if (path.isEmpty() || count == 1) return path;
    String suffix = String::Formatted("-%zu", index);
    if (path.endsWith(".svg")) return path.substring(0, path.length() - 4) + suffix + ".svg";
    return path + suffix;
}

int RUN_TESTS(const Options& options) {
    Counts total;
    for (size_t i = 0; i < options.files.size(); ++i) {
        const String& file = options.files[i];
        String timeline = TIMELINE_PATH(options.timeline, i + 1, options.files.size());
        int pipeEnds[2];
        fflush(stdout);
        fflush(stderr);
        pid_t child = pipe(pipeEnds) == 0 ? fork() : -1;
        if (child == 0) {
            close(pipeEnds[0]);
            Counts counts = runFile(file, timeline);
            fflush(stdout);
            fflush(stderr);
            String report = String::Formatted("%u %u\n", counts.passed, counts.failed);
            ssize_t written = write(pipeEnds[1], report.c_str(), report.length());
            _exit(written == static_cast<ssize_t>(report.length()) ? 0 : 3);
        }
        Counts counts;
        bool finished = false;
        if (child > 0) {
            close(pipeEnds[1]);
            char buffer[64] = {0};
            ssize_t n = read(pipeEnds[0], buffer, sizeof buffer - 1);
            close(pipeEnds[0]);
            int status = 0;
            waitpid(child, &status, 0);
            finished = n > 0 && sscanf(buffer, "%u %u", &counts.passed, &counts.failed) == 2 &&
                       WIFEXITED(status) && WEXITSTATUS(status) == 0;
            if (!finished && WIFSIGNALED(status)) {
                fprintf(stderr, "%s: error: the run ended by signal %d\n", file.c_str(),
                        WTERMSIG(status));
            }
        }
        if (!finished) {
            if (child < 0) fprintf(stderr, "%s: error: cannot start a run\n", file.c_str());
            counts.failed += 1;
        }
        printf("%s: %u passed, %u failed\n", file.c_str(), counts.passed, counts.failed);
        total.passed += counts.passed;
        total.failed += counts.failed;
    }
    printf("%u passed, %u failed\n", total.passed, total.failed);
    fflush(stdout);
    return total.failed == 0 ? 0 : 1;
}

}  // namespace SysEventTool
