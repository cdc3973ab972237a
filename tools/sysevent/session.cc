// Session: dispatch of the command language, failure reports, help.
#include "tools/sysevent/session.h"

#include <algorithm>
#include <cstring>

namespace SysEventTool {

const Session::Command Session::COMMANDS[] = {
    {"const", &Session::cmdConstant, "const NAME = LITERAL [\"description\"]",
     "publish a constant"},
    {"var", &Session::cmdVariable, "var NAME = LITERAL [\"description\"]",
     "publish a variable (or set an existing one and its description)"},
    {"expr", &Session::cmdExpression, "expr [CONTEXT.]NAME := FORMULA",
     "define or change an expression; a CONTEXT with % or {...} makes a set"},
    {"set", &Session::cmdSet, "set NAME LITERAL", "set a variable (made when it does not exist)"},
    {"get", &Session::cmdGet, "get NAME|PATTERN", "print the current value of names"},
    {"eval", &Session::cmdEval, "eval FORMULA", "evaluate a formula once and print its values"},
    {"watch", &Session::cmdWatch, "watch [PATTERN]",
     "print every change of matching names (no pattern: list the watches)"},
    {"unwatch", &Session::cmdUnwatch, "unwatch PATTERN", "stop watching a pattern"},
    {"destroy", &Session::cmdDestroy, "destroy NAME", "remove a published name"},
    {"info", &Session::cmdInfo, "info NAME", "print the diagnostic rows of a name"},
    {"track", &Session::cmdTrack, "track db.NAME",
     "bind a variable to a configuration database field"},
    {"untrack", &Session::cmdUntrack, "untrack db.NAME", "end such a binding"},
    {"db", &Session::cmdDatabase, "db insert|update|delete|show ENTRY [FIELD=VALUE...]",
     "change or show the configuration database (ENTRY: Interface:eth0)"},
    {"schema", &Session::cmdSchema, "schema SQL", "extend the configuration database's schema"},
    {"functions", &Session::cmdFunctions, "functions", "list the built-in functions"},
    {"wait", &Session::cmdWait, "wait DURATION",
     "let time pass (with --manual-time: advance the clock)"},
    {"expect", &Session::cmdExpect, "expect NAME CHECK",
     "check a value: = LITERAL or ~ REGEX now; changes to LITERAL within DURATION or stays "
     "LITERAL for DURATION while time passes"},
    {"why", &Session::cmdWhy, "why NAME [--fresh]",
     "explain a value: its formula's nodes with values, times and timer state"},
    {"replay", &Session::cmdReplay, "replay FILE",
     "feed time,name,value rows of a CSV file through the manual clock"},
    {"load", &Session::cmdLoad, "load FILE",
     "run the commands of a file (relative to the file that loads it)"},
    {"help", &Session::cmdHelp, "help [COMMAND]", "show this list"},
    {"quit", &Session::cmdQuit, "quit", "stop reading commands"},
};

Session::Session(Output& output, bool manualTime)
    : output_(output), manualTime_(manualTime), database_(output), watches_(output) {
    watches_.setRecorder(&changes_);
}

Session::~Session() = default;

bool Session::execute(const String& file, unsigned line, const String& text) {
    CommandLine cmd;
    if (!SPLIT_COMMAND(text, cmd)) return true;
    const Command* found = nullptr;
    for (const Command& c : COMMANDS) {
        if (cmd.verb == c.name) found = &c;
    }
    if (cmd.verb == "exit") found = &COMMANDS[std::size(COMMANDS) - 1];
    file_ = file;
    line_ = line;
    Failure failure;
    bool ok = false;
    if (!found) {
        failure =
            Failure{cmd.verbColumn, "unknown command '" + cmd.verb + "' (help lists the commands)"};
    } else {
        ok = (this->*(found->handler))(cmd, failure);
    }
    if (!ok) {
        ++errors_;
        output_.error(String::Formatted("%s:%u:%u: error: %s", file.c_str(), line, failure.column,
                                        failure.message.c_str()));
    }
    return !quit_;
}

std::vector<String> Session::COMMAND_NAMES() {
    std::vector<String> names;
    for (const Command& c : COMMANDS) names.push_back(c.name);
    return names;
}

void Session::reportError(const String& where, const String& message) {
    ++errors_;
    output_.error(where + ": error: " + message);
}

void Session::printHelp(const String& command) {
    size_t width = 0;
    for (const Command& c : COMMANDS) width = std::max(width, strlen(c.syntax));
    for (const Command& c : COMMANDS) {
        if (!command.isEmpty() && command != c.name) continue;
        String syntax(c.syntax);
        output_.line("  " + syntax + String(std::string(width + 2 - syntax.length(), ' ')) +
                     c.summary);
    }
    if (command.isEmpty()) {
        output_.line("Literals are written as in formulas: 5, 2.5, 'text', 1h30m, 2024-01-15,");
        output_.line("12:30:00, true. A '#' starts a comment.");
    }
}

bool Session::cmdHelp(const CommandLine& cmd, Failure& failure) {
    if (!cmd.rest.isEmpty()) {
        bool known = std::any_of(std::begin(COMMANDS), std::end(COMMANDS),
                                 [&](const Command& c) { return cmd.rest == c.name; });
        if (!known) {
            failure = Failure{cmd.restColumn, "unknown command '" + cmd.rest + "'"};
            return false;
        }
    }
    printHelp(cmd.rest);
    return true;
}

bool Session::cmdQuit(const CommandLine& cmd, Failure& failure) {
    if (!cmd.rest.isEmpty()) {
        failure = Failure{cmd.restColumn, "unexpected text after quit"};
        return false;
    }
    quit_ = true;
    return true;
}

}  // namespace SysEventTool
