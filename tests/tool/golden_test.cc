// The tool on scripts, compared line for line with golden transcripts. The
// runs use --manual-time, so timestamps and timer expiries are exact.
// SYSEVENT_UPDATE_GOLDEN=1 rewrites the golden files from the tool's output
// (review the diff before committing it). A case that draws a timeline names
// its file @SVG@ in the arguments; the drawing is compared with <name>.svg.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
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
    bool svg = false;   // the run writes a timeline to @SVG@
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
    {"db_entries", "run --manual-time --script tests/tool/golden/db_entries.se", "", 1},
    {"db_schema", "run --manual-time --script tests/tool/golden/db_schema.se", "", 1},
    {"host_clock", "run --manual-time --script tests/tool/golden/host_clock.se", "", 1},
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
    // Test scripts: a passing file, and a failing one with every kind of
    // failure line.
    {"test_example", "test examples/line-monitor/alarms.test.se", "", 0},
    {"test_failing", "test tests/tool/golden/test_failing.se examples/line-monitor/alarms.test.se",
     "", 1},
    // why over nested temporal functions, placeholders and dirty nodes.
    {"why", "run --manual-time --script tests/tool/golden/why.se --explain door.still", "", 1},
    {"replay", "run --manual-time --script tests/tool/golden/replay.se", "", 1},
    {"timeline", "run --manual-time --script tests/tool/golden/timeline.se --timeline @SVG@", "", 0,
     true},
    // The engine's behaviour families, one transcript each.
    {"engine_language", "run --manual-time --script tests/tool/golden/engine_language.se", "", 1},
    {"engine_temporal", "run --manual-time --script tests/tool/golden/engine_temporal.se", "", 0},
    {"engine_repository", "run --manual-time --script tests/tool/golden/engine_repository.se", "",
     1},
    {"engine_database", "run --manual-time --trace 2 --script tests/tool/golden/engine_database.se",
     "", 1},
    {"engine_observer", "run --manual-time --script tests/tool/golden/engine_observer.se", "", 0},
};

// `text` with every @SVG@ replaced by `path`.
std::string withSvgPath(std::string text, const std::string& path) {
    for (size_t at; (at = text.find("@SVG@")) != std::string::npos;) text.replace(at, 5, path);
    return text;
}

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
    std::string svgPath = testing::TempDir() + c.name + ".svg";
    ToolRun run = RUN_TOOL(withSvgPath(c.args, svgPath), c.input);
    std::string svgGolden = std::string("tests/tool/golden/") + c.name + ".svg";
    std::string svg;
    if (c.svg) {
        std::ifstream in(svgPath, std::ios::binary);
        svg.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        std::remove(svgPath.c_str());
    }
    if (getenv("SYSEVENT_UPDATE_GOLDEN")) {
        WRITE_SOURCE_FILE(path, run.output);
        if (c.svg) WRITE_SOURCE_FILE(svgGolden, svg);
    }

    EXPECT_EQ(run.status, c.status) << run.output;
    std::vector<std::pair<std::string, std::string>> compared = {{path, run.output}};
    if (c.svg) compared.emplace_back(svgGolden, svg);
    for (const auto& [golden, text] : compared) {
        std::vector<std::string> expected = lines(READ_SOURCE_FILE(golden));
        std::vector<std::string> actual = lines(text);
        ASSERT_FALSE(expected.empty()) << golden << " is missing or empty";
        for (size_t i = 0; i < std::max(expected.size(), actual.size()); ++i) {
            std::string want = i < expected.size() ? expected[i] : "<end of output>";
            std::string got = i < actual.size() ? actual[i] : "<end of output>";
            ASSERT_EQ(got, want) << golden << ", line " << i + 1;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Tool, Golden, testing::ValuesIn(CASES),
                         [](const testing::TestParamInfo<GoldenCase>& info) {
                             return std::string(info.param.name);
                         });

}  // namespace
}  // namespace ToolTest
