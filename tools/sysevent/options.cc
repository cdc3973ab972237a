// Options: parsing the tool's command line.
#include "tools/sysevent/options.h"

namespace SysEventTool {

const char* const USAGE =
    "usage: sysevent run [FILE...] [--db PATH] [--script FILE] [--trace LEVEL] [--manual-time]\n"
    "                    [--explain NAME]... [--timeline FILE.svg]\n"
    "       sysevent test FILE... [--timeline FILE.svg]\n"
    "       sysevent functions [--markdown]\n"
    "       sysevent help\n"
    "\n"
    "run        loads the definition files, opens the configuration database (in\n"
    "           memory with the example schema unless --db names a file), prints\n"
    "           every change of a watched name, then runs the commands of the\n"
    "           script, or of standard input (a prompt with line editing when it\n"
    "           is a terminal). Exit status: 0 without errors, 1 with errors.\n"
    "  --db PATH      the configuration database file (made when missing)\n"
    "  --script FILE  read commands from FILE instead of standard input\n"
    "  --trace LEVEL  print the engine's trace lines up to LEVEL (0-4)\n"
    "  --manual-time  the engine clock starts at 2024-01-01T00:00:00 and moves\n"
    "                 only with 'wait', which then takes no real time\n"
    "  --explain NAME why NAME after the script (the tree behind its value)\n"
    "  --timeline FILE.svg  draw every watched name over the run's time\n"
    "test       runs each test script in a fresh engine on the manual clock and\n"
    "           reports its expect checks per file and in total, ending with\n"
    "           'N passed, M failed'. Exit status: 0 when all passed, 1 else.\n"
    "           With several files, --timeline writes FILE-1.svg, FILE-2.svg...\n"
    "functions  lists the built-in functions (--markdown: as docs/functions.md)\n"
    "\n"
    "Inside run, 'help' lists the commands.\n";

namespace {

// The value of option `name` (given as "--name VALUE" or "--name=VALUE").
bool optionValue(int argc, char** argv, int& i, const String& name, String& value, String& error) {
    String arg(argv[i]);
    if (arg.startsWith(name + "=")) {
        value = arg.substring(name.length() + 1);
    } else if (i + 1 < argc) {
        value = String(argv[++i]);
    }
    if (value.isEmpty()) {
        error = name + " needs a value";
        return false;
    }
    return true;
}

bool isOption(const String& arg, const char* name) {
    return arg == name || arg.startsWith(String(name) + "=");
}

}  // namespace

bool PARSE_OPTIONS(int argc, char** argv, Options& options, String& error) {
    if (argc < 2) {
        error = "missing command";
        return false;
    }
    String command(argv[1]);
    if (command == "help" || command == "--help" || command == "-h") {
        options.mode = Options::HELP;
        return argc == 2 || (error = "help takes no arguments", false);
    }
    if (command == "functions") {
        options.mode = Options::FUNCTIONS;
        for (int i = 2; i < argc; ++i) {
            if (String(argv[i]) != "--markdown") {
                error = String("unknown argument to functions: ") + argv[i];
                return false;
            }
            options.markdown = true;
        }
        return true;
    }
    if (command != "run" && command != "test") {
        error = "unknown command '" + command + "'";
        return false;
    }
    options.mode = command == "run" ? Options::RUN : Options::TEST;
    const bool test = options.mode == Options::TEST;
    options.manualTime = test;
    for (int i = 2; i < argc; ++i) {
        String arg(argv[i]);
        String value;
        if (isOption(arg, "--timeline")) {
            if (!optionValue(argc, argv, i, "--timeline", options.timeline, error)) return false;
        } else if (test && arg.startsWith("-") && arg != "-") {
            error = "unknown option '" + arg + "' for test";
            return false;
        } else if (isOption(arg, "--explain")) {
            if (!optionValue(argc, argv, i, "--explain", value, error)) return false;
            options.explain.push_back(value);
        } else if (isOption(arg, "--db")) {
            if (!optionValue(argc, argv, i, "--db", options.database, error)) return false;
        } else if (isOption(arg, "--script")) {
            if (!optionValue(argc, argv, i, "--script", options.script, error)) return false;
        } else if (isOption(arg, "--trace")) {
            if (!optionValue(argc, argv, i, "--trace", value, error)) return false;
            if (!value.toInteger(options.trace) || options.trace < 0) {
                error = "--trace needs a level from 0, not '" + value + "'";
                return false;
            }
        } else if (arg == "--manual-time") {
            options.manualTime = true;
        } else if (arg.startsWith("-") && arg != "-") {
            error = "unknown option '" + arg + "'";
            return false;
        } else {
            options.files.push_back(arg);
        }
    }
    if (test && options.files.empty()) {
        error = "test needs at least one file";
        return false;
    }
    return true;
}

}  // namespace SysEventTool
