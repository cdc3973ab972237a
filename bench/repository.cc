// Cost of the Repository's operations, all through formula text and public
// calls: a value change observed through a chain of 1000 expressions, a
// fan-out of 1000 observed expressions, and 10,000 unobserved expressions
// over one variable; publishing 10,000 expressions (parse + publish);
// re-setting the formula at the end of a long chain; and the memory one
// published expression takes (jemalloc's statistics).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "host/runtime/crit.h"
#include "support/allocated_bytes.h"
#include "sysevent/repository/read_observer.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {
namespace {

Value U(unsigned long long n) {
    return Value(n);
}

// Counts the changes it is told of.
class CountingObserver : public IReadObserver {
public:
    unsigned long long changes = 0;
    void onValueChanged(VXPPtr<IRead>&, const Value&, const Value&) override { ++changes; }
};

void check(const XCode& rc, const char* what) {
    if (rc.isErr()) {
        std::fprintf(stderr, "%s: %s\n", what, rc.toString().c_str());
        std::abort();
    }
}

void observe(const String& name, CountingObserver& observer) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    VXPPtr<IRead> object;
    check(repository->get(name, object), "observe");
    object->addValueObserver(&observer, false);
}

Value valueOf(const String& name) {
    Value v;
    check(Repository::GET_VALUE(name, v), "read");
    return v;
}

// v, then e1 = v + 1, e2 = e1 + 1, ... e1000 = e999 + 1; e1000 observed.
// Google Benchmark calls each function several times: the graph is built on
// the first call and kept (with its observers) for the later ones.
void BM_SetValueThroughObservedChain(benchmark::State& state) {
    const unsigned length = static_cast<unsigned>(state.range(0));
    const String context = String::Formatted("chain%u", length);
    static CountingObserver* observer = nullptr;
    if (!observer) {
        observer = new CountingObserver();
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        check(repository->createVariable(context + ".v", "", U(0)), "variable");
        check(repository->createExpression(context, "e1", "v + 1"), "e1");
        for (unsigned i = 2; i <= length; ++i) {
            check(repository->createExpression(context, String::Formatted("e%u", i),
                                               String::Formatted("e%u + 1", i - 1)),
                  "chain");
        }
        observe(context + String::Formatted(".e%u", length), *observer);
    }
    const String top = context + String::Formatted(".e%u", length);
    static unsigned long long n = 0;
    const unsigned long long changesBefore = observer->changes;
    const unsigned long long first = n;
    for (auto _ : state) check(Repository::SET_VALUE(context + ".v", U(++n)), "set");
    if (valueOf(top) != U(n + length) || observer->changes - changesBefore != n - first) {
        state.SkipWithError("the chain did not follow");
    }
}
BENCHMARK(BM_SetValueThroughObservedChain)->Arg(1000)->Unit(benchmark::kMicrosecond);

// fan.v and 1000 observed expressions fan.e<i> = v + i.
void BM_SetValueFanOut(benchmark::State& state) {
    const unsigned width = static_cast<unsigned>(state.range(0));
    const String context = String::Formatted("fan%u", width);
    static std::vector<CountingObserver>* observers = nullptr;
    if (!observers) {
        observers = new std::vector<CountingObserver>(width);
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        check(repository->createVariable(context + ".v", "", U(0)), "variable");
        for (unsigned i = 0; i < width; ++i) {
            const String name = String::Formatted("e%u", i);
            check(repository->createExpression(context, name, String::Formatted("v + %u", i)),
                  "fan");
            observe(context + "." + name, (*observers)[i]);
        }
    }
    static unsigned long long n = 0;
    const unsigned long long changesBefore = (*observers)[0].changes;
    const unsigned long long first = n;
    for (auto _ : state) check(Repository::SET_VALUE(context + ".v", U(++n)), "set");
    if (valueOf(context + String::Formatted(".e%u", width - 1)) != U(n + width - 1) ||
        (*observers)[0].changes - changesBefore != n - first) {
        state.SkipWithError("the fan-out did not follow");
    }
}
BENCHMARK(BM_SetValueFanOut)->Arg(1000)->Unit(benchmark::kMicrosecond);

// lazy.v and 10,000 expressions nobody observes: a change marks them stale
// once; later changes pass them by.
void BM_SetValueUnobserved(benchmark::State& state) {
    const unsigned count = static_cast<unsigned>(state.range(0));
    const String context = String::Formatted("lazy%u", count);
    static bool built = false;
    if (!built) {
        built = true;
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        check(repository->createVariable(context + ".v", "", U(0)), "variable");
        for (unsigned i = 0; i < count; ++i) {
            check(repository->createExpression(context, String::Formatted("e%u", i),
                                               String::Formatted("v + %u", i)),
                  "lazy");
        }
    }
    static unsigned long long n = 0;
    for (auto _ : state) check(Repository::SET_VALUE(context + ".v", U(++n)), "set");
    if (valueOf(context + ".e7") != U(n + 7)) state.SkipWithError("a stale expression read wrong");
}
BENCHMARK(BM_SetValueUnobserved)->Arg(10000)->Unit(benchmark::kMicrosecond);

// Publishing `count` expressions over one variable, each its own formula;
// per iteration a fresh set of names (the names and shared nodes of earlier
// iterations stay, as they do in the engine).
void BM_CreateExpressions(benchmark::State& state) {
    const unsigned count = static_cast<unsigned>(state.range(0));
    check(Repository::SET_VALUE("create.v", U(1)), "variable");
    static unsigned round = 0;
    for (auto _ : state) {
        const String context = String::Formatted("create.r%u", round++);
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        for (unsigned i = 0; i < count; ++i) {
            check(repository->createExpression(context, String::Formatted("e%u", i),
                                               String::Formatted("create.v * %u", i + 1)),
                  "create");
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * count);
}
BENCHMARK(BM_CreateExpressions)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(3);

// Re-setting the formula of the last of `length` chained expressions, which
// one more formula uses. Each re-binding asks whether the new formula closes
// a cycle: the nodes below it are the whole chain, the nodes above it two.
void BM_RebindUsedChainTail(benchmark::State& state) {
    const unsigned length = static_cast<unsigned>(state.range(0));
    const String context = String::Formatted("rebind%u", length);
    static bool built = false;
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    if (!built) {
        built = true;
        check(repository->setValue(context + ".v", U(0)), "source");
        check(repository->createExpression(context, "e1", "v + 1"), "head");
        for (unsigned i = 2; i <= length; ++i) {
            check(repository->createExpression(context, String::Formatted("e%u", i),
                                               String::Formatted("e%u + 1", i - 1)),
                  "link");
        }
        check(repository->createExpression(context, "user", String::Formatted("e%u", length)),
              "user");
    }
    const String tail = String::Formatted("e%u", length);
    const String texts[2] = {String::Formatted("e%u + 2", length - 1),
                             String::Formatted("e%u + 1", length - 1)};
    unsigned n = 0;
    for (auto _ : state) check(repository->setExpression(context, tail, texts[n++ & 1]), "rebind");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_RebindUsedChainTail)->Arg(10000)->Unit(benchmark::kMicrosecond);

#ifdef SYSEVENT_WITH_JEMALLOC
// Memory per published expression: `count` expressions, each with a formula
// of its own (range 1 = 1: new proxy, function node and literal each) or all
// with the same formula text (range 1 = 0: the function node is shared).
void BM_MemoryPerExpression(benchmark::State& state) {
    const unsigned count = static_cast<unsigned>(state.range(0));
    const bool distinct = state.range(1) != 0;
    check(Repository::SET_VALUE("memory.v", U(1)), "variable");
    static unsigned round = 0;
    double bytesPerExpression = 0;
    for (auto _ : state) {
        const String context = String::Formatted("memory.%s%u", distinct ? "d" : "s", round++);
        const size_t before = allocatedBytes();
        {
            VXLockPtr<Repository> repository(Repository::INSTANCE());
            for (unsigned i = 0; i < count; ++i) {
                const String text = distinct
                                        ? String::Formatted("memory.v * %u", 100000 * round + i)
                                        : String("memory.v * 2");
                check(repository->createExpression(context, String::Formatted("e%u", i), text),
                      "create");
            }
        }
        bytesPerExpression = static_cast<double>(allocatedBytes() - before) / count;
    }
    state.counters["bytes_per_expression"] = bytesPerExpression;
}
BENCHMARK(BM_MemoryPerExpression)
    ->Args({10000, 1})
    ->Args({10000, 0})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);
#endif

}  // namespace
}  // namespace VX::SysEvent
