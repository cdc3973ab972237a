// The sysevent tool end to end, as a user runs it (process start included):
//
//   Replay/100000   a recorded log of 100,000 rows (eight lines flapping,
//                   every row 10 ms after the last) replayed on the manual
//                   clock under a debounced alarm per line and a count of
//                   the alarms; items/s are rows per second.
//   TestExample     "sysevent test" of the line-monitor example's test file.
//
// The tool must be built (target sysevent_tool): it is found next to this
// program in the build tree, and the sources through the build's cache.
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string directoryOf(const std::string& path) {
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

// The build tree: this program lives in its bench/ folder.
std::string buildDirectory() {
    char self[4096];
    ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n <= 0) return ".";
    self[n] = 0;
    return directoryOf(directoryOf(self));
}

std::string sourceDirectory() {
    std::ifstream cache(buildDirectory() + "/CMakeCache.txt");
    const std::string key = "CMAKE_HOME_DIRECTORY:INTERNAL=";
    for (std::string line; std::getline(cache, line);) {
        if (line.compare(0, key.size(), key) == 0) return line.substr(key.size());
    }
    return ".";
}

std::string tool() {
    return buildDirectory() + "/tools/sysevent";
}

// Runs a shell command line, output discarded; its exit status.
int run(const std::string& command) {
    int status = system((command + " > /dev/null 2>&1").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void Replay(benchmark::State& state) {
    const int rows = static_cast<int>(state.range(0));
    const std::string dir = "/tmp/sysevent_bench_replay_" + std::to_string(getpid());
    run("mkdir -p " + dir);
    {
        std::ofstream csv(dir + "/log.csv");
        csv << "time,name,value\n";
        for (int i = 0; i < rows; ++i) {
            // Each line goes down for 80 ms of every 160 ms, past the debounce
            // every other time.
            int line = i % 8 + 1, round = i / 8;
            csv << i / 100 << '.' << (i % 100 < 10 ? "0" : "") << i % 100 << ",line" << line
                << ".up," << (round % 2 ? "false" : "true") << '\n';
        }
        std::ofstream script(dir + "/replay.se");
        script << "expr line%.alarm := DEBOUNCEINC(NOT(up), 50ms)\n"
                  "expr monitor.alarms := COUNTIF(line%.alarm)\n"
                  "var line1.up = true\n"
                  "expect monitor.alarms = 0\n"
                  "replay "
               << dir << "/log.csv\n";
    }
    const std::string command = tool() + " run --manual-time --script " + dir + "/replay.se";
    for (auto _ : state) {
        if (run(command) != 0) {
            state.SkipWithError("the replay failed (is the tool built?)");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * rows);
    run("rm -rf " + dir);
}
BENCHMARK(Replay)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();

void TestExample(benchmark::State& state) {
    const std::string command =
        "cd " + sourceDirectory() + " && " + tool() + " test examples/line-monitor/alarms.test.se";
    for (auto _ : state) {
        if (run(command) != 0) {
            state.SkipWithError("the example's tests failed (is the tool built?)");
            break;
        }
    }
}
BENCHMARK(TestExample)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
