// Side-by-side twin of the peer workloads kept outside the project (reactive
// signal graphs and spreadsheet formula builds): the same graph shapes, the
// same numbers of updates and the same checks of final values, written as a
// client writes them -- formula text, the Repository, Observers with direct
// callbacks. It prints its table in the peers' line format
//   # <workload> <median ms> <min ms> <max ms> ...
// so that a comparison script can divide the rows workload by workload.
//
// Statistics as on the other side: every run builds a fresh graph (not
// timed), times the workload, checks the values (not timed) and tears the
// graph down again; warm-up runs are checked but not recorded; the row shows
// median, min and max of the recorded runs. A failed check prints "FAILED".
//
// Shapes the formula language cannot express are left out and say so: a
// node holding an array of values (mux). Counters of evaluations inside
// computed nodes have no public counterpart; where the peers count them, the
// twin checks what a client can see instead (values and deliveries).
#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/allocated_bytes.h"
#include "sysevent/sysevent.h"

namespace {

using namespace VX::SysEvent;
using Clock = std::chrono::steady_clock;

constexpr int kWarmup = 3, kReps = 15, kUpdates = 1000;
constexpr int kFormulaWarmup = 5, kFormulaReps = 11, kFormulas = 10000;
constexpr int kSingleUpdates = 100, kSingleWarmup = 10;

struct Failed : std::runtime_error {
    using std::runtime_error::runtime_error;
};
void expect(bool ok, const std::string& what) {
    if (!ok) throw Failed("check failed: " + what);
}
void must(const XCode& rc, const std::string& what) {
    if (rc.isErr()) throw Failed(what + ": " + rc.toString().c_str());
}

String name(const char* prefix, long i) {
    return String::Formatted("%s%ld", prefix, i);
}
// The number after the last letter of a name ("w.b17" -> 17).
size_t indexOf(const String& n) {
    size_t end = n.length(), start = end;
    while (start > 0 && n[start - 1] >= '0' && n[start - 1] <= '9') --start;
    return static_cast<size_t>(std::strtoul(n.c_str() + start, nullptr, 10));
}
double number(Value v) {
    if (v.toFloat().isErr()) return -1e300;
    return v.data.flp;
}
Value uint(long long n) {
    return Value(static_cast<unsigned long long>(n));
}
Value signedNumber(long long n) {
    return n < 0 ? Value(static_cast<double>(n)) : uint(n);
}

// One fresh graph: the names it published, the Observer watching it, and
// handles to the variables a run writes and the names it reads.
struct Graph {
    std::vector<String> published;
    std::unique_ptr<Observer> observer;
    std::vector<double> last;
    long long runs = 0;
    double seen = 0;

    ~Graph() {
        observer.reset();
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        for (auto it = published.rbegin(); it != published.rend(); ++it) repository->destroy(*it);
    }
    void variable(const String& n, const Value& v) {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        must(repository->createVariable(n, "", v), "variable " + std::string(n.c_str()));
        published.push_back(n);
    }
    void expression(const String& n, const String& text) {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        must(repository->createExpression("", n, text), "expression " + std::string(n.c_str()));
        published.push_back(n);
    }
    // Deliveries go to last[index of the name], seen and runs, as an effect
    // per observed node would record them.
    void watch(const std::vector<String>& names, size_t slots = 1) {
        last.assign(slots, 0);
        if (!observer) {
            observer = std::make_unique<Observer>(
                Observer::ValueChangeCallback(VX::directCall(), [this](String n, Value v) {
                    seen = number(std::move(v));
                    if (last.size() > 1) last[indexOf(n)] = seen;
                    ++runs;
                }));
        }
        for (const String& n : names) observer->addTo(n, true);
    }
    void watchQuietly(const std::vector<String>& names) {
        if (!observer) {
            observer = std::make_unique<Observer>(
                Observer::ValueChangeCallback(VX::directCall(), [this](String, Value) { ++runs; }));
        }
        for (const String& n : names) observer->addTo(n, true);
    }
};

VXPPtr<IWrite> writer(const String& n) {
    VXPPtr<IWrite> w;
    must(Repository::GET(n, w), "writer");
    return w;
}
void set(VXPPtr<IWrite>& w, const Value& v) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    must(w->setValue(v), "set");
}
VXPPtr<IRead> reader(const String& n) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    VXPPtr<IRead> r;
    must(repository->get(n, r), "reader");
    return r;
}
double read(VXPPtr<IRead>& r) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    return number(r->getValue());
}
double read(const String& n) {
    Value v;
    must(Repository::GET_VALUE(n, v), "read " + std::string(n.c_str()));
    return number(v);
}

struct Stats {
    double median, min, max;
};
Stats summarise(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return {times[times.size() / 2], times.front(), times.back()};
}
double since(Clock::time_point t0) {
    return std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
}

// A workload: build (untimed), run (timed), check (untimed); a fresh graph
// per run.
struct Workload {
    std::function<void(Graph&)> build, run, check;
};
Stats measure(const Workload& w, int warmup, int reps) {
    std::vector<double> times;
    for (int r = 0; r < warmup + reps; ++r) {
        Graph g;
        w.build(g);
        const auto t0 = Clock::now();
        w.run(g);
        const double t = since(t0);
        w.check(g);
        if (r >= warmup) times.push_back(t);
    }
    return summarise(times);
}

// --- Reactive graph shapes (1000 source updates each unless noted) ---------

void updates(Graph&, const char* source, int count = kUpdates) {
    VXPPtr<IWrite> w = writer(source);
    for (int i = 1; i <= count; ++i) set(w, uint(i));
}

// from -> c1 = from + 1 -> ... -> cn; returns the names.
std::vector<String> chain(Graph& g, const char* prefix, const String& from, int n) {
    std::vector<String> names;
    String previous = from;
    for (int i = 1; i <= n; ++i) {
        names.push_back(name(prefix, i));
        g.expression(names.back(), previous + " + 1");
        previous = names.back();
    }
    return names;
}

String sumOf(const std::vector<String>& names) {
    String text;
    for (const String& n : names) text += (text.empty() ? "" : " + ") + n;
    return text;
}

Workload deep() {
    return {
        [](Graph& g) {
            g.variable("deep.src", uint(0));
            g.watch({chain(g, "deep.c", "deep.src", 50).back()});
        },
        [](Graph& g) { updates(g, "deep.src"); },
        [](Graph& g) { expect(g.seen == kUpdates + 50 && g.runs == kUpdates + 1, "deep tail"); }};
}

Workload broad() {
    return {[](Graph& g) {
                g.variable("broad.src", uint(0));
                std::vector<String> leaves;
                for (int i = 0; i < 50; ++i) {
                    g.expression(name("broad.a", i), String::Formatted("broad.src + %d", i));
                    leaves.push_back(name("broad.b", i));
                    g.expression(leaves.back(), name("broad.a", i) + " + 1");
                }
                g.watch(leaves, 50);
            },
            [](Graph& g) { updates(g, "broad.src"); },
            [](Graph& g) {
                for (int i = 0; i < 50; ++i) expect(g.last[i] == kUpdates + i + 1, "broad leaves");
                expect(g.runs == 50 * (kUpdates + 1), "broad runs");
            }};
}

Workload diamond() {
    return {[](Graph& g) {
                g.variable("diamond.src", uint(0));
                std::vector<String> mids;
                for (int i = 0; i < 5; ++i) {
                    mids.push_back(name("diamond.m", i));
                    g.expression(mids.back(), "diamond.src + 1");
                }
                g.expression("diamond.sink", sumOf(mids));
                g.watch({"diamond.sink"});
            },
            [](Graph& g) { updates(g, "diamond.src"); },
            [](Graph& g) {
                expect(g.seen == 5 * (kUpdates + 1) && g.runs == kUpdates + 1, "diamond sink");
            }};
}

Workload triangle() {
    return {[](Graph& g) {
                g.variable("triangle.src", uint(0));
                g.expression("triangle.sink", sumOf(chain(g, "triangle.c", "triangle.src", 10)));
                g.watch({"triangle.sink"});
            },
            [](Graph& g) { updates(g, "triangle.src"); },
            [](Graph& g) {
                expect(g.seen == 10 * kUpdates + 55 && g.runs == kUpdates + 1, "triangle sink");
            }};
}

Workload repeated() {
    return {[](Graph& g) {
                g.variable("repeated.src", uint(0));
                g.expression("repeated.sum", sumOf(std::vector<String>(30, "repeated.src")));
                g.watch({"repeated.sum"});
            },
            [](Graph& g) { updates(g, "repeated.src"); },
            [](Graph& g) {
                expect(g.seen == 30 * kUpdates && g.runs == kUpdates + 1, "repeated sum");
            }};
}

// Even source values read dbl a hundred times, odd ones never.
Workload unstable() {
    return {[](Graph& g) {
                g.variable("unstable.src", uint(0));
                g.expression("unstable.dbl", "unstable.src * 2");
                g.expression("unstable.out", "IF(unstable.src % 2 == 0, unstable.src + " +
                                                 sumOf(std::vector<String>(100, "unstable.dbl")) +
                                                 ", unstable.src)");
                g.watch({"unstable.out"});
            },
            [](Graph& g) { updates(g, "unstable.src"); },
            [](Graph& g) {
                expect(g.seen == 201 * kUpdates && g.runs == kUpdates + 1, "unstable value");
            }};
}

// b = 0 * a never changes, so nothing after it may be delivered again.
Workload avoidable() {
    return {[](Graph& g) {
                g.variable("avoidable.src", uint(0));
                g.expression("avoidable.a", "avoidable.src + 0");
                g.expression("avoidable.h0", "0 * avoidable.a");
                for (int n = 1; n <= 4; ++n) {
                    g.expression(name("avoidable.h", n),
                                 String::Formatted("MOD((avoidable.h%d + %d) * 31 + 7, 1000003)",
                                                   n - 1, n - 1));
                }
                g.watch({"avoidable.h4"});
            },
            [](Graph& g) { updates(g, "avoidable.src"); },
            [](Graph& g) {
                expect(g.runs == 1 && read("avoidable.a") == kUpdates, "avoidable deliveries");
            }};
}

// cellx: n layers of 4 cells (a' = b, b' = a - c, c' = b + d, d' = c), every
// cell observed; timed: writing the 4 sources, then reading the last layer.
std::vector<long long> cellxReference(int n, std::vector<long long> v) {
    for (int i = 0; i < n; ++i) v = {v[1], v[0] - v[2], v[1] + v[3], v[2]};
    return v;
}
struct Cellx {
    std::vector<VXPPtr<IWrite>> sources;
    std::vector<VXPPtr<IRead>> end;
    std::vector<double> before, after;
};
Workload cellx(int n) {
    auto state = std::make_shared<Cellx>();
    return {[n, state](Graph& g) {
                std::vector<String> all;
                auto cell = [](int layer, int k) {
                    return String::Formatted("cellx.%c%d", "abcd"[k], layer);
                };
                for (int k = 0; k < 4; ++k) g.variable(cell(0, k), uint(k + 1));
                for (int i = 1; i <= n; ++i) {
                    const String texts[] = {cell(i - 1, 1), cell(i - 1, 0) + " - " + cell(i - 1, 2),
                                            cell(i - 1, 1) + " + " + cell(i - 1, 3),
                                            cell(i - 1, 2)};
                    for (int k = 0; k < 4; ++k) {
                        all.push_back(cell(i, k));
                        g.expression(all.back(), texts[k]);
                    }
                }
                g.watchQuietly(all);
                state->sources.clear();
                state->end.clear();
                for (int k = 0; k < 4; ++k) state->sources.push_back(writer(cell(0, k)));
                for (int k = 0; k < 4; ++k) state->end.push_back(reader(cell(n, k)));
                state->before.clear();
                for (auto& r : state->end) state->before.push_back(read(r));
            },
            [state](Graph&) {
                {
                    VXLockPtr<Repository> repository(Repository::INSTANCE());
                    for (int k = 0; k < 4; ++k)
                        must(state->sources[k]->setValue(uint(4 - k)), "set");
                }
                state->after.clear();
                for (auto& r : state->end) state->after.push_back(read(r));
            },
            [n, state](Graph&) {
                const auto before = cellxReference(n, {1, 2, 3, 4});
                const auto after = cellxReference(n, {4, 3, 2, 1});
                for (int k = 0; k < 4; ++k) {
                    expect(state->before[k] == static_cast<double>(before[k]) &&
                               state->after[k] == static_cast<double>(after[k]),
                           "cellx " + std::to_string(n));
                }
                state->sources.clear();
                state->end.clear();
            }};
}

// n observed expressions src + i over one source, k updates.
Workload fanout(int n, int k) {
    return {[n](Graph& g) {
                g.variable("fanout.src", uint(0));
                std::vector<String> names;
                for (int i = 0; i < n; ++i) {
                    names.push_back(name("fanout.c", i));
                    g.expression(names.back(), String::Formatted("fanout.src + %d", i));
                }
                g.watch(names, n);
            },
            [k](Graph& g) { updates(g, "fanout.src", k); },
            [n, k](Graph& g) {
                expect(g.runs == static_cast<long long>(n) * (k + 1), "fanout runs");
                for (int i = 0; i < n; ++i) expect(g.last[i] == k + i, "fanout values");
            }};
}

// n expressions over one source that nobody observes (read once or never);
// the first update is part of the build.
Workload unobserved(int n, int k, bool readOnce) {
    return {[n, readOnce](Graph& g) {
                g.variable("lazy.src", uint(0));
                for (int i = 0; i < n; ++i) {
                    g.expression(name("lazy.c", i), String::Formatted("lazy.src + %d", i));
                }
                if (readOnce) {
                    for (int i = 0; i < n; ++i) read(name("lazy.c", i));
                }
                VXPPtr<IWrite> w = writer("lazy.src");
                set(w, uint(1000000));
            },
            [k](Graph& g) { updates(g, "lazy.src", k); },
            [n, k](Graph&) {
                expect(read("lazy.c7") == k + 7 && read(name("lazy.c", n - 1)) == k + n - 1,
                       "lazy pull after updates");
            }};
}

// --- Formula builds (10,000 formulas) -----------------------------------------

// f.A1 = 0, f.A<i> = f.A<i-1> + 1 up to f.A10001; timed: publishing and the
// first read of the tail. In order, or tail first (every formula waits for
// the name before it).
Workload chainBuild(bool tailFirst) {
    auto tail = std::make_shared<double>();
    return {
        [](Graph&) {},
        [tail, tailFirst](Graph& g) {
            auto formula = [&](int i) {
                g.expression(name("f.A", i), name("f.A", i - 1) + " + 1");
            };
            if (tailFirst) {
                for (int i = kFormulas + 1; i >= 2; --i) formula(i);
                g.variable("f.A1", uint(0));
            } else {
                g.variable("f.A1", uint(0));
                for (int i = 2; i <= kFormulas + 1; ++i) formula(i);
            }
            *tail = read(name("f.A", kFormulas + 1));
        },
        [tail](Graph&) { expect(*tail == kFormulas && read("f.A5001") == 5000, "chain A10001"); }};
}

// f.A1 = 0, f.B<i> = f.A1 * 2 + 1 (one formula text for all); timed:
// publishing and reading the last.
Workload fanBuild() {
    auto last = std::make_shared<double>();
    return {[](Graph&) {},
            [last](Graph& g) {
                g.variable("f.A1", uint(0));
                for (int i = 1; i <= kFormulas; ++i) g.expression(name("f.B", i), "f.A1 * 2 + 1");
                *last = read(name("f.B", kFormulas));
            },
            [last](Graph&) { expect(*last == 1 && read("f.B1") == 1, "fan B10000"); }};
}

// f.A<r> = r % 7 - 3, f.B<r> = r % 10, f.C<r> = IF(AND(A>0, B<5), A*2, B-k)
// with k = r (every formula its own text) or k = 1 (one shape); or the data
// alone. Timed: publishing and reading every formula.
enum class Parse { Distinct, SameShape, DataOnly };
Workload parse(Parse kind) {
    auto values = std::make_shared<std::vector<double>>();
    return {[](Graph&) {},
            [values, kind](Graph& g) {
                values->clear();
                for (int r = 1; r <= kFormulas; ++r) {
                    g.variable(name("f.A", r), signedNumber(r % 7 - 3));
                    g.variable(name("f.B", r), uint(r % 10));
                    if (kind == Parse::DataOnly) continue;
                    g.expression(name("f.C", r),
                                 String::Formatted("IF(AND(f.A%d>0,f.B%d<5),f.A%d*2,f.B%d-%d)", r,
                                                   r, r, r, kind == Parse::Distinct ? r : 1));
                }
                if (kind == Parse::DataOnly) {
                    values->push_back(read(name("f.B", kFormulas)));
                    return;
                }
                for (int r = 1; r <= kFormulas; ++r) values->push_back(read(name("f.C", r)));
            },
            [values, kind](Graph&) {
                if (kind == Parse::DataOnly) {
                    expect(values->at(0) == kFormulas % 10, "data");
                    return;
                }
                for (int r = 1; r <= kFormulas; ++r) {
                    const long long a = r % 7 - 3, b = r % 10, k = kind == Parse::Distinct ? r : 1;
                    expect((*values)[r - 1] == (a > 0 && b < 5 ? a * 2 : b - k), "parse C");
                }
            }};
}

// One graph; per update: set the source, read one name, each timed alone.
Stats singleUpdates(const std::function<void(Graph&)>& build, const char* source,
                    const String& readName, const std::function<double(long long)>& expected) {
    Graph g;
    build(g);
    VXPPtr<IWrite> w = writer(source);
    VXPPtr<IRead> r = reader(readName);
    std::vector<double> times;
    for (long long i = -kSingleWarmup; i <= kSingleUpdates; ++i) {
        if (i == 0) continue;
        const long long v = i < 0 ? 1000 - i : i;
        const auto t0 = Clock::now();
        set(w, uint(v));
        const double got = read(r);
        const double t = since(t0);
        expect(got == expected(v), "update " + std::to_string(v));
        if (i > 0) times.push_back(t);
    }
    return summarise(times);
}

void row(const char* workload, const Stats& s, const char* note) {
    std::printf("# %-26s%12.3f%12.3f%12.3f  %s\n", workload, s.median, s.min, s.max, note);
    std::fflush(stdout);
}
void failedRow(const char* workload, const char* why) {
    std::printf("# %-26s%12s  %s\n", workload, "FAILED", why);
    std::fflush(stdout);
}
// The workloads named on the command line, or all when none is.
std::vector<std::string> g_selected;
bool selected(const char* workload) {
    return g_selected.empty() ||
           std::find(g_selected.begin(), g_selected.end(), workload) != g_selected.end();
}

void attempt(const char* workload, const std::function<Stats()>& fn, const char* note) {
    if (!selected(workload)) return;
    try {
        row(workload, fn(), note);
    } catch (const std::exception& e) {
        failedRow(workload, e.what());
    }
}

#ifdef SYSEVENT_WITH_JEMALLOC
// Bytes per published expression "mem.src + 1" under a name of its own,
// 100,000 of them; median of 3 fresh graphs.
double bytesPerExpression() {
    const int n = 100000;
    std::vector<double> samples;
    for (int round = 0; round < 3; ++round) {
        Graph g;
        g.variable("mem.src", uint(0));
        g.published.reserve(n + 1);
        const size_t before = allocatedBytes();
        for (int i = 0; i < n; ++i) g.expression(name("mem.e", i), "mem.src + 1");
        const double bytes = static_cast<double>(allocatedBytes() - before) / n;
        expect(read("mem.e0") == 1 && read(name("mem.e", n - 1)) == 1, "memory graph values");
        samples.push_back(bytes);
    }
    return summarise(samples).median;
}
#endif

void runAll() {
    std::printf("# SysEvent, formula text + Repository + direct Observers\n");
    std::printf(
        "# median of %d timed runs after %d warm-up runs; fresh graph per run; building is "
        "not timed\n",
        kReps, kWarmup);
    std::printf("# %-26s%12s%12s%12s\n", "workload", "median ms", "min ms", "max ms");
    const std::pair<const char*, Workload> kairo[] = {
        {"deep", deep()},          {"broad", broad()},       {"diamond", diamond()},
        {"triangle", triangle()},  {"repeated", repeated()}, {"unstable", unstable()},
        {"avoidable", avoidable()}};
    // Not a structured binding: Clang 14 cannot capture one in a lambda.
    for (const auto& entry : kairo) {
        const Workload& w = entry.second;
        attempt(
            entry.first, [&] { return measure(w, kWarmup, kReps); }, "1000 updates");
    }
    std::printf("# mux: not expressible (the formula language has no array values)\n");
    for (int n : {1000, 2500, 5000}) {
        const std::string workload = "cellx" + std::to_string(n);
        attempt(
            workload.c_str(), [&] { return measure(cellx(n), kWarmup, kReps); },
            "4 source writes, read the last layer");
    }
    attempt(
        "fanout1000", [] { return measure(fanout(1000, 100), kWarmup, kReps); },
        "1,000 observed expressions, 100 updates");
    attempt(
        "fanout100000", [] { return measure(fanout(100000, 10), kWarmup, kReps); },
        "100,000 observed expressions, 10 updates");
    attempt(
        "unobserved100000", [] { return measure(unobserved(100000, 1000, false), kWarmup, kReps); },
        "100,000 expressions never read, 1,000 updates");
    attempt(
        "unobservedReadOnce100000",
        [] { return measure(unobserved(100000, 100, true), kWarmup, kReps); },
        "100,000 expressions read once, 100 updates");

    std::printf(
        "# formula builds: median of %d after %d warm-up; updates: median of %d single "
        "updates after %d warm-up\n",
        kFormulaReps, kFormulaWarmup, kSingleUpdates, kSingleWarmup);
    attempt(
        "chainBuild", [] { return measure(chainBuild(false), kFormulaWarmup, kFormulaReps); },
        "10,000 chained expressions, published in order, tail read");
    attempt(
        "chainBuildIncremental",
        [] { return measure(chainBuild(true), kFormulaWarmup, kFormulaReps); },
        "the same published tail first");
    attempt(
        "chainUpdate",
        [] {
            return singleUpdates([](Graph& g) { chainBuild(false).run(g); }, "f.A1",
                                 name("f.A", kFormulas + 1),
                                 [](long long i) { return static_cast<double>(i + kFormulas); });
        },
        "set f.A1, read f.A10001; per update");
    attempt(
        "fanBuild", [] { return measure(fanBuild(), kFormulaWarmup, kFormulaReps); },
        "f.A1 + 10,000 expressions f.A1 * 2 + 1, last read");
    attempt(
        "fanUpdate",
        [] {
            return singleUpdates([](Graph& g) { fanBuild().run(g); }, "f.A1",
                                 name("f.B", kFormulas),
                                 [](long long i) { return static_cast<double>(2 * i + 1); });
        },
        "set f.A1, read f.B10000; per update");
    attempt(
        "parseDistinct",
        [] { return measure(parse(Parse::Distinct), kFormulaWarmup, kFormulaReps); },
        "20,000 variables + 10,000 distinct IF/AND expressions, all read");
    attempt(
        "parseSameShape",
        [] { return measure(parse(Parse::SameShape), kFormulaWarmup, kFormulaReps); },
        "20,000 variables + 10,000 same-shape IF/AND expressions, all read");
    attempt(
        "parseDataOnly",
        [] { return measure(parse(Parse::DataOnly), kFormulaWarmup, kFormulaReps); },
        "the 20,000 variables alone (baseline)");

#ifdef SYSEVENT_WITH_JEMALLOC
    if (!selected("memory")) return;
    try {
        std::printf(
            "# bytes per published expression 'src + 1' incl. its name, 100,000 (jemalloc "
            "stats.allocated): %.1f\n",
            bytesPerExpression());
    } catch (const std::exception& e) {
        std::printf("# bytes per published expression FAILED: %s\n", e.what());
    }
#else
    std::printf("# bytes per published expression skipped: built without jemalloc\n");
#endif
}

}  // namespace

// The workloads run on a thread with a large stack, which the engine's walks
// over graph depth no longer need (they keep their own stacks); the depth
// test in tests/graph is what runs them on a small one.
// Arguments: workload names to run (and "memory"); none runs everything.
int main(int argc, char** argv) {
    g_selected.assign(argv + 1, argv + argc);
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstacksize(&attr, size_t{1} << 30);
    pthread_t thread;
    if (pthread_create(
            &thread, &attr,
            [](void*) -> void* {
                runAll();
                return nullptr;
            },
            nullptr) != 0) {
        std::fprintf(stderr, "cannot start the benchmark thread\n");
        return 1;
    }
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attr);
    return 0;
}
