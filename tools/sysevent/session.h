// Session: the engine as the tool drives it, and the command language that
// definition files, scripts and the prompt share: one command a line, '#'
// starts a comment.
//
//   const NAME = LITERAL ["description"]     var NAME = LITERAL ["description"]
//   expr [CONTEXT.]NAME := FORMULA           set NAME LITERAL
//   get NAME|PATTERN      eval FORMULA       info NAME      destroy NAME
//   watch [PATTERN]       unwatch PATTERN    track db.NAME  untrack db.NAME
//   db insert|update|delete|show ENTRY [FIELD=VALUE...]
//   functions             wait DURATION      help [COMMAND] quit
//   expect NAME = LITERAL | ~ REGEX | changes to LITERAL within DURATION
//               | stays LITERAL for DURATION
//   why NAME [--fresh]    replay FILE.csv    load FILE      probe FORMULA
//   trace LEVEL|off
//
// A failing command prints "FILE:LINE:COLUMN: error: MESSAGE" with the
// engine's own message and the column it is about; the session goes on with
// the next command and counts the failure.
#pragma once

#include <memory>
#include <vector>

#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "tools/sysevent/change_log.h"
#include "tools/sysevent/command_line.h"
#include "tools/sysevent/config_database.h"
#include "tools/sysevent/output.h"
#include "tools/sysevent/trace_monitor.h"
#include "tools/sysevent/tracking.h"
#include "tools/sysevent/watch_list.h"

namespace SysEventTool {

class Session {
public:
    // With `manualTime`, wait advances the engine's manual clock (which the
    // caller has enabled) instead of letting real time pass.
    Session(Output& output, bool manualTime);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Opens the configuration database (ConfigDatabase::open).
    XCode openDatabase(const String& path) { return database_.open(path); }
    // Works on an open database instead (ConfigDatabase::use).
    void useDatabase(const VXPtr<DB::Database>& database) { database_.use(database); }

    // Runs the command on line `line` of `file`. A failure is printed and
    // counted. Returns false when the command was quit.
    bool execute(const String& file, unsigned line, const String& text);

    // Reports a failure that belongs to no command (a file that cannot be
    // opened), counting it.
    void reportError(const String& where, const String& message);

    unsigned errorCount() const { return errors_; }
    // Checks of expect commands that held and that failed.
    unsigned checksPassed() const { return passed_; }
    unsigned checksFailed() const { return failed_; }
    // The history of watched and checked names.
    ChangeLog& changeLog() { return changes_; }
    bool quitRequested() const { return quit_; }

    // The help text: one line per command.
    void printHelp(const String& command);

    // The names of the commands, in the order help lists them.
    static std::vector<String> COMMAND_NAMES();

private:
    struct Failure {
        unsigned column = 1;
        String message;
    };
    using Handler = bool (Session::*)(const CommandLine&, Failure&);
    struct Command {
        const char* name;
        Handler handler;
        const char* syntax;
        const char* summary;
    };
    static const Command COMMANDS[];

    bool cmdConstant(const CommandLine& cmd, Failure& failure);
    bool cmdVariable(const CommandLine& cmd, Failure& failure);
    bool cmdExpression(const CommandLine& cmd, Failure& failure);
    bool cmdSet(const CommandLine& cmd, Failure& failure);
    bool cmdGet(const CommandLine& cmd, Failure& failure);
    bool cmdEval(const CommandLine& cmd, Failure& failure);
    bool cmdProbe(const CommandLine& cmd, Failure& failure);
    bool evaluateRest(const CommandLine& cmd, VXVector<VX::SysEvent::Value>& values,
                      Failure& failure);
    bool cmdTrace(const CommandLine& cmd, Failure& failure);
    // Removes the monitor that the trace command installed, if any.
    void endTrace();
    bool cmdWatch(const CommandLine& cmd, Failure& failure);
    bool cmdUnwatch(const CommandLine& cmd, Failure& failure);
    bool cmdDestroy(const CommandLine& cmd, Failure& failure);
    bool cmdInfo(const CommandLine& cmd, Failure& failure);
    bool cmdTrack(const CommandLine& cmd, Failure& failure);
    bool cmdUntrack(const CommandLine& cmd, Failure& failure);
    bool cmdDatabase(const CommandLine& cmd, Failure& failure);
    bool cmdSchema(const CommandLine& cmd, Failure& failure);
    bool cmdFunctions(const CommandLine& cmd, Failure& failure);
    bool cmdWait(const CommandLine& cmd, Failure& failure);
    bool cmdHelp(const CommandLine& cmd, Failure& failure);
    bool cmdQuit(const CommandLine& cmd, Failure& failure);
    bool cmdExpect(const CommandLine& cmd, Failure& failure);
    bool cmdWhy(const CommandLine& cmd, Failure& failure);
    bool cmdReplay(const CommandLine& cmd, Failure& failure);
    bool cmdLoad(const CommandLine& cmd, Failure& failure);

    // Lets `ms` milliseconds pass: the manual clock advances (running the
    // timers due on the way), or real time passes.
    void passTime(uint64_t ms);
    // A failed check of an expect command: the failure line at the command's
    // place, what came instead at `at`, then every change of `name` so far.
    void checkFailed(const String& expected, const String& got, const VX::Time& at,
                     const String& name);

    // const and var: NAME = LITERAL ["description"].
    bool definition(const CommandLine& cmd, bool constant, Failure& failure);
    // The one word the command takes (a name or pattern).
    bool oneWord(const CommandLine& cmd, const char* what, String& word, Failure& failure);
    // NAME and the text after it.
    bool nameAndRest(const CommandLine& cmd, String& name, String& rest, unsigned& restColumn,
                     Failure& failure);
    bool literal(const String& text, unsigned column, VX::SysEvent::Value& value, Failure& failure);
    // A failure of the engine about `text`, which starts at `textColumn`;
    // failures that carry no position point at `fallbackColumn`.
    static Failure ENGINE_FAILURE(const XCode& rc, unsigned textColumn, unsigned fallbackColumn);

    Output& output_;
    const bool manualTime_;
    ConfigDatabase database_;
    ChangeLog changes_;
    Tracking tracking_;
    WatchList watches_;
    unsigned errors_ = 0;
    unsigned passed_ = 0;
    unsigned failed_ = 0;
    bool quit_ = false;
    std::unique_ptr<TraceMonitor> trace_;  // installed by the trace command
    // Where the command being executed stands.
    String file_;
    unsigned line_ = 0;
    unsigned loadDepth_ = 0;  // files being loaded, one inside the other
};

}  // namespace SysEventTool
