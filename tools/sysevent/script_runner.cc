// Reading commands from files, streams and the prompt.
#include "tools/sysevent/script_runner.h"

#include <cctype>
#include <fstream>
#include <string>

#include "tools/sysevent/line_editor.h"

namespace SysEventTool {

namespace {

bool isBlankLine(const std::string& line) {
    for (char c : line) {
        if (!isspace(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

}  // namespace

bool RUN_STREAM(Session& session, Output& output, std::istream& in, const String& name, bool echo) {
    std::string line;
    unsigned number = 0;
    while (std::getline(in, line)) {
        ++number;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (echo && !isBlankLine(line)) output.line("> " + String(line));
        if (!session.execute(name, number, String(line))) return false;
    }
    return true;
}

bool RUN_FILE(Session& session, Output& output, const String& path, bool echo) {
    std::ifstream in(path.str());
    if (!in) {
        session.reportError(path, "cannot open the file");
        return true;
    }
    return RUN_STREAM(session, output, in, path, echo);
}

void RUN_PROMPT(Session& session, Output& output) {
    output.line("Type help for the commands, quit or Ctrl-D to leave.");
    LineEditor editor(output, "sysevent> ");
    String line;
    unsigned number = 0;
    while (editor.readLine(line)) {
        if (!session.execute("<prompt>", ++number, line)) return;
    }
}

}  // namespace SysEventTool
