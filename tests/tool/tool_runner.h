// Running the built sysevent tool from a test: its path comes from the build
// (SYSEVENT_TOOL_PATH), and it runs in the source tree (SYSEVENT_SOURCE_DIR)
// so that the file names in its output are the repository's relative paths.
#pragma once

#include <string>

namespace ToolTest {

struct ToolRun {
    int status = -1;     // the exit status; -1 when the tool did not exit normally
    std::string output;  // standard output and standard error, interleaved
};

// Whether the build told the test where the tool is.
bool TOOL_AVAILABLE();

// Runs "sysevent ARGS" (ARGS as shell words) with `input` as its standard
// input, in the source directory.
ToolRun RUN_TOOL(const std::string& args, const std::string& input = std::string());

// The contents of a file of the source tree (path relative to its root);
// empty when it cannot be read.
std::string READ_SOURCE_FILE(const std::string& path);
// Replaces a file of the source tree (used to refresh golden files).
void WRITE_SOURCE_FILE(const std::string& path, const std::string& contents);

}  // namespace ToolTest
