// Throughput of the formula language: lexing alone, and parsing (lexing,
// name resolution to undefined references, function nodes and sharing) over
// a corpus of formulas as a device configuration would hold them. Reported
// as formulas per second (items/s) and formula text per second (bytes/s).
//
// Parsing a formula a second time finds every node already shared, as a
// re-created expression does; BM_ParseFresh varies the names to measure the
// first parse of a formula, which builds and registers new nodes.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/function_node.h"
#include "sysevent/language/lexer.h"
#include "sysevent/language/parser.h"

namespace {

using namespace VX::SysEvent;

const char* const kCorpus[] = {
    "pi * int",
    "AND(line1.up, NOT(line1.alarm))",
    "DEBOUNCE(line%.up, 5s)",
    "COUNTIF(sip%.registered)",
    "(cpu.load > 80) && (mem.free < 1024 * 1024)",
    "uptime >= 1d2h30m",
    "NOW() - boot.time > 10m",
    "TODAY() == 2024-01-15",
    "a + b * c - d / e % f",
    "wan.up within 500ms",
    "NOT(wan.up) || (wan.rx_bytes >> 10) & 0xFF != 0",
    "ROUND(temp.celsius * 1.8 + 32, 1)",
    "OR(port1.link, port2.link, port3.link, port4.link)",
    "db.Interface{[0-9]%}.Status == 'Up'",
    "DELAY(alarm.active, 30s) and not maintenance.mode",
    "12:30:00 <= clock.time && clock.time < 18:00:00",
    "SUM(line1.calls, line2.calls, line3.calls) / 3.0",
    "IF(system.state == \"ready\", 'ok', 'wait')",
    "BITAND(gpio.inputs, 0x0F) == 0x05",
    "-offset + ABS(sensor.delta)",
    "STABLE(dsl.sync, 2m) && NOT(ISERR(dsl.rate))",
    "DATETIME(2024-01-15, 08:00:00) < NOW()",
};

// A function of any arity, for catalogue names this build may lack.
class AnyArity : public NonTemporalFunctionNode {
public:
    AnyArity(const String& name, const String& parameters)
        : NonTemporalFunctionNode(name, parameters) {}
    XCode compute(Value& result) override {
        result = Value(true);
        return XCode();
    }
};

void registerMissingFunctions() {
    static bool done = false;
    if (done) return;
    done = true;
    static auto* kept = new std::vector<std::unique_ptr<FunctionFactory::FactoryBase>>();
    for (const char* name :
         {"AND",   "NOT", "DEBOUNCE",  "COUNTIF", "NOW",    "TODAY",  "ROUND", "OR",
          "DELAY", "SUM", "IF",        "ABS",     "BITAND", "STABLE", "ISERR", "DATETIME",
          "GT",    "LT",  "GE",        "LE",      "EQ",     "NEQ",    "DIFF",  "PRODUCT",
          "DIV",   "MOD", "BITRSHIFT", "WITHIN",  "NEG"}) {
        if (!FunctionFactory::INSTANCE()->get(name)) {
            kept->emplace_back(new FunctionFactory::Factory<AnyArity>(name, "[value]*", "bench"));
        }
    }
}

size_t corpusBytes() {
    size_t bytes = 0;
    for (const char* text : kCorpus) bytes += String(text).length();
    return bytes;
}

void BM_Lex(benchmark::State& state) {
    Lexer lexer;
    std::vector<String> corpus(std::begin(kCorpus), std::end(kCorpus));
    for (auto _ : state) {
        for (const String& text : corpus) {
            XCode rc = lexer.analyze(text);
            benchmark::DoNotOptimize(rc);
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * corpus.size()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * corpusBytes()));
}
BENCHMARK(BM_Lex);

void BM_Parse(benchmark::State& state) {
    registerMissingFunctions();
    std::vector<String> corpus(std::begin(kCorpus), std::end(kCorpus));
    for (auto _ : state) {
        for (const String& text : corpus) {
            Parser parser(nullptr);
            XCode rc = parser.parse("bench", text);
            if (rc.isErr()) {
                state.SkipWithError(rc.getString().c_str());
                return;
            }
            benchmark::DoNotOptimize(parser.getRoots().data());
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * corpus.size()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * corpusBytes()));
}
BENCHMARK(BM_Parse);

// Each iteration parses formulas over names never seen before, so every
// undefined reference, function node and sharing key is new. The engine
// keeps them for the life of the process, as it keeps everything parsed.
void BM_ParseFresh(benchmark::State& state) {
    registerMissingFunctions();
    uint64_t serial = 0;
    size_t bytes = 0;
    std::vector<String> batch;
    size_t next = 0;
    for (auto _ : state) {
        if (next == batch.size()) {
            // The texts are made outside the measured time, in batches.
            state.PauseTiming();
            batch.clear();
            for (int i = 0; i < 4096; ++i, ++serial) {
                const auto n = static_cast<unsigned long long>(serial);
                batch.push_back(String::Formatted(
                    "AND(n%llu.up, NOT(n%llu.alarm)) || n%llu.load * 2 > 80 + n%llu.base", n, n, n,
                    n));
            }
            next = 0;
            state.ResumeTiming();
        }
        const String& text = batch[next++];
        bytes += text.length();
        Parser parser(nullptr);
        XCode rc = parser.parse(text);
        if (rc.isErr()) {
            state.SkipWithError(rc.getString().c_str());
            return;
        }
        benchmark::DoNotOptimize(parser.getRoots().data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    state.SetBytesProcessed(static_cast<int64_t>(bytes));
}
// A fixed count, so that the tables end at a size a large device reaches
// (some 10^5 entries) rather than growing with the runner's calibration.
BENCHMARK(BM_ParseFresh)->Iterations(10000);

void BM_NameToRegex(benchmark::State& state) {
    const String pattern = "db.Interface{[0-9]%}.Stats.%.Bytes";
    for (auto _ : state) {
        String regex = Lexer::NAME_TO_REGEX(pattern, false);
        benchmark::DoNotOptimize(regex.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * pattern.length()));
}
BENCHMARK(BM_NameToRegex);

}  // namespace
