// The tool on scripts, compared line for line with golden transcripts. The
// runs use --manual-time, so timestamps and timer expiries are exact.
// SYSEVENT_UPDATE_GOLDEN=1 rewrites the golden files from the tool's output
// (review the diff before committing it).
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <vector>

#include "tool/tool_runner.h"

namespace ToolTest {
namespace {

struct GoldenCase {
    const char* name;   // the golden transcript is tests/tool/golden/<name>.out
    const char* args;   // the tool's arguments
    const char* input;  // standard input
    int status;         // expected exit status
};

const GoldenCase CASES[] = {
    {"commands", "run --manual-time --script tests/tool/golden/commands.se", "", 0},
    {"errors",
     "run --manual-time tests/tool/golden/errors_definitions.se --script "
     "tests/tool/golden/errors.se",
     "", 1},
    {"timers", "run --manual-time --script tests/tool/golden/timers.se", "", 0},
    {"temporal", "run --manual-time --script tests/tool/golden/temporal.se", "", 0},
    {"functions", "run --manual-time --script tests/tool/golden/functions.se", "", 1},
    {"database", "run --manual-time --script tests/tool/golden/database.se", "", 0},
    {"line_monitor",
     "run examples/line-monitor/lines.se --manual-time --script examples/line-monitor/run.se", "",
     0},
    // Standard input that is no terminal is read like a script.
    {"stdin", "run --manual-time", "var a = 1\nwatch a\nset a 2\n\nget b\n", 1},
    // Engine trace lines among the output.
    {"trace", "run --manual-time --trace 2",
     "var t.in = 1\nexpr t.out := DEBOUNCE(in, 1s)\n"
     "watch t.out\nset t.in 2\nwait 2s\n",
     0},
    // A definition file that quits: later files and the script are not read.
    {"quit_in_definitions",
     "run tests/tool/golden/quit.se tests/tool/golden/commands.se --script "
     "tests/tool/golden/commands.se",
     "", 0},
    // A file that cannot be read is an error; the run goes on.
    {"missing_file", "run tests/tool/golden/no-such-file.se --manual-time", "get x\n", 1},
};

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

class Golden : public testing::TestWithParam<GoldenCase> {};

TEST_P(Golden, MatchesTranscript) {
    if (!TOOL_AVAILABLE()) GTEST_SKIP() << "the tool is not built";
    const GoldenCase& c = GetParam();
    std::string path = std::string("tests/tool/golden/") + c.name + ".out";
    ToolRun run = RUN_TOOL(c.args, c.input);
    if (getenv("SYSEVENT_UPDATE_GOLDEN")) WRITE_SOURCE_FILE(path, run.output);

    EXPECT_EQ(run.status, c.status) << run.output;
    std::vector<std::string> expected = lines(READ_SOURCE_FILE(path));
    std::vector<std::string> actual = lines(run.output);
    ASSERT_FALSE(expected.empty()) << path << " is missing or empty";
    for (size_t i = 0; i < std::max(expected.size(), actual.size()); ++i) {
        std::string want = i < expected.size() ? expected[i] : "<end of output>";
        std::string got = i < actual.size() ? actual[i] : "<end of output>";
        ASSERT_EQ(got, want) << path << ", line " << i + 1;
    }
}

INSTANTIATE_TEST_SUITE_P(Tool, Golden, testing::ValuesIn(CASES),
                         [](const testing::TestParamInfo<GoldenCase>& info) {
                             return std::string(info.param.name);
                         });

}  // namespace
}  // namespace ToolTest
