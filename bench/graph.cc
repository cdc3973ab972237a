// Cost of one value change through hand-built graphs: a chain and a fan-out
// of observed nodes, a diamond, and unobserved nodes (first change: one dirty
// marking per node; later changes: next to nothing, no recompute).
#include <benchmark/benchmark.h>

#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "sysevent/graph/function_node.h"
#include "sysevent/graph/node.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {
namespace {

uint64_t s_computes = 0;

// Its argument plus one (the sum of its arguments plus one).
class BINC : public NonTemporalFunctionNode {
public:
    using NonTemporalFunctionNode::NonTemporalFunctionNode;
    XCode compute(Value& result) override {
        ++s_computes;
        unsigned long long sum = 1;
        for (unsigned i = 0; i < getChildCount(); ++i) sum += getArgument(i).data.uint;
        result = Value(sum);
        return XCode();
    }
};

VXLWPtr<FunctionNode> inc(std::initializer_list<Node*> args) {
    VXLWPtr<FunctionNode> f(new BINC("BINC", "[number]*"));
    for (Node* a : args) f->addArgument(a);
    return f;
}

struct Graph {
    VXLWPtr<Node> leaf{new Node("leaf", Value(0ULL))};
    std::vector<VXLWPtr<FunctionNode>> nodes;
};

Graph chain(int n) {
    Graph g;
    Node* below = g.leaf.get();
    for (int i = 0; i < n; ++i) {
        g.nodes.push_back(inc({below}));
        below = g.nodes.back().get();
    }
    return g;
}

Graph fanOut(int n) {
    Graph g;
    for (int i = 0; i < n; ++i) g.nodes.push_back(inc({g.leaf.get()}));
    return g;
}

void observe(Graph& g) {
    for (auto& n : g.nodes) n->addInterest();
}

// Sets the leaf to a new value in every iteration and reports the recomputes
// per change.
void changeLoop(benchmark::State& state, Graph& g) {
    unsigned long long v = 1;
    const uint64_t before = s_computes;
    for (auto _ : state) g.leaf->setValue(Value(v++));
    state.counters["recomputes/change"] =
        benchmark::Counter(static_cast<double>(s_computes - before) / state.iterations());
}

void BM_ObservedChain(benchmark::State& state) {
    VXAutoLock lock(LOCK());
    Graph g = chain(static_cast<int>(state.range(0)));
    observe(g);
    changeLoop(state, g);
}
BENCHMARK(BM_ObservedChain)->Arg(1000);

void BM_ObservedFanOut(benchmark::State& state) {
    VXAutoLock lock(LOCK());
    Graph g = fanOut(static_cast<int>(state.range(0)));
    observe(g);
    changeLoop(state, g);
}
BENCHMARK(BM_ObservedFanOut)->Arg(1000);

void BM_ObservedDiamond(benchmark::State& state) {
    VXAutoLock lock(LOCK());
    Graph g;
    auto b = inc({g.leaf.get()});
    auto c = inc({g.leaf.get()});
    g.nodes = {b, c, inc({b.get(), c.get()})};
    g.nodes.back()->addInterest();
    changeLoop(state, g);
}
BENCHMARK(BM_ObservedDiamond);

// Unobserved nodes, each change made on a clean graph: every node is asked
// once and marked dirty. Reading the graph clean again is not timed.
void unobservedFirstChange(benchmark::State& state, Graph& g) {
    unsigned long long v = 1;
    uint64_t computes = 0, dirtied = 0;
    for (auto _ : state) {
        state.PauseTiming();
        for (auto& n : g.nodes) n->getLastEvent();
        state.ResumeTiming();
        const uint64_t before = s_computes;
        g.leaf->setValue(Value(v++));
        computes += s_computes - before;
        state.PauseTiming();
        for (auto& n : g.nodes) dirtied += n->isDirty();
        state.ResumeTiming();
    }
    const double it = static_cast<double>(state.iterations());
    state.counters["recomputes/change"] = benchmark::Counter(computes / it);
    state.counters["dirty markings/change"] = benchmark::Counter(dirtied / it);
}

// Unobserved nodes, already dirty: a change reaches the first dirty nodes and
// stops there.
void unobservedLaterChange(benchmark::State& state, Graph& g) {
    g.leaf->setValue(Value(1000000ULL));
    changeLoop(state, g);
    uint64_t stillDirty = 0;
    for (auto& n : g.nodes) stillDirty += n->isDirty();
    state.counters["dirty nodes"] = benchmark::Counter(static_cast<double>(stillDirty));
}

void BM_UnobservedChainFirstChange(benchmark::State& state) {
    VXAutoLock lock(LOCK());
    Graph g = chain(static_cast<int>(state.range(0)));
    unobservedFirstChange(state, g);
}
BENCHMARK(BM_UnobservedChainFirstChange)->Arg(1000);

void BM_UnobservedChainLaterChange(benchmark::State& state) {
    VXAutoLock lock(LOCK());
    Graph g = chain(static_cast<int>(state.range(0)));
    unobservedLaterChange(state, g);
}
BENCHMARK(BM_UnobservedChainLaterChange)->Arg(1000);

void BM_UnobservedFanOutFirstChange(benchmark::State& state) {
    VXAutoLock lock(LOCK());
    Graph g = fanOut(static_cast<int>(state.range(0)));
    unobservedFirstChange(state, g);
}
BENCHMARK(BM_UnobservedFanOutFirstChange)->Arg(1000);

void BM_UnobservedFanOutLaterChange(benchmark::State& state) {
    VXAutoLock lock(LOCK());
    Graph g = fanOut(static_cast<int>(state.range(0)));
    unobservedLaterChange(state, g);
}
BENCHMARK(BM_UnobservedFanOutLaterChange)->Arg(1000);

}  // namespace
}  // namespace VX::SysEvent
