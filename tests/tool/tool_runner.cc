// Running the tool through the shell, with merged output and its exit status.
#include "tool/tool_runner.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace ToolTest {

namespace {

#ifdef SYSEVENT_TOOL_PATH
const char* const TOOL = SYSEVENT_TOOL_PATH;
const char* const SOURCE = SYSEVENT_SOURCE_DIR;
#else
const char* const TOOL = nullptr;
const char* const SOURCE = ".";
#endif

std::string quoted(const std::string& text) {
    std::string out = "'";
    for (char c : text) {
        if (c == '\'') {
            out += "'\\''";
        } else {
            out += c;
        }
    }
    return out + "'";
}

}  // namespace

bool TOOL_AVAILABLE() {
    return TOOL != nullptr;
}

ToolRun RUN_TOOL(const std::string& args, const std::string& input) {
    ToolRun run;
    char inputPath[] = "/tmp/sysevent_tool_test_XXXXXX";
    int fd = mkstemp(inputPath);
    if (fd < 0) return run;
    if (!input.empty() && write(fd, input.data(), input.size()) < 0) {
        close(fd);
        unlink(inputPath);
        return run;
    }
    close(fd);
    std::string command = "cd " + quoted(SOURCE) + " && " + quoted(TOOL ? TOOL : "false") + " " +
                          args + " < " + quoted(inputPath) + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe) {
        char buffer[4096];
        size_t n;
        while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) run.output.append(buffer, n);
        int status = pclose(pipe);
        if (status != -1 && WIFEXITED(status)) run.status = WEXITSTATUS(status);
    }
    unlink(inputPath);
    return run;
}

std::string READ_SOURCE_FILE(const std::string& path) {
    std::ifstream in(std::string(SOURCE) + "/" + path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void WRITE_SOURCE_FILE(const std::string& path, const std::string& contents) {
    std::ofstream out(std::string(SOURCE) + "/" + path, std::ios::binary | std::ios::trunc);
    out << contents;
}

}  // namespace ToolTest
