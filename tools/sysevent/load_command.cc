// The load command: the commands of another file run in place, so that a
// test script can start from the definitions it tests. A relative path is
// taken from the directory of the file that loads it (from the working
// directory at the prompt), so that a test and its definitions move together.
#include "tools/sysevent/script_runner.h"
#include "tools/sysevent/session.h"

namespace SysEventTool {

namespace {

// Files loaded inside one another deeper than this are taken as a loop.
const unsigned MAX_LOAD_DEPTH = 16;

}  // namespace

bool Session::cmdLoad(const CommandLine& cmd, Failure& failure) {
    String path;
    if (!oneWord(cmd, "a file", path, failure)) return false;
    if (loadDepth_ >= MAX_LOAD_DEPTH) {
        failure = Failure{cmd.restColumn, "files loaded too deep (a file that loads itself?)"};
        return false;
    }
    size_t slash = file_.str().rfind('/');
    if (!path.startsWith("/") && slash != std::string::npos && !file_.startsWith("<") &&
        file_ != "--explain") {
        path = file_.substring(0, slash + 1) + path;
    }
    const String file = file_;
    const unsigned line = line_;
    ++loadDepth_;
    RUN_FILE(*this, output_, path, false);
    --loadDepth_;
    file_ = file;
    line_ = line;
    return true;
}

}  // namespace SysEventTool
