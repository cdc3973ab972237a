// How deep a chain of function nodes the recursive algorithms survive on an
// 8 MiB stack (the default of the device's threads). Each trial runs in a
// forked child, on a thread with exactly that stack, so that an overflow
// kills only the trial. Slow and build-dependent (sanitizers use far more
// stack), hence disabled; run with --gtest_also_run_disabled_tests
// --gtest_filter='*StackDepth*'.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

#include "graph/graph_test_support.h"

namespace VX::SysEvent::testing {
namespace {

constexpr size_t STACK_SIZE = 8u << 20;

// leaf <- F <- F <- ... <- top, `depth` function nodes. With `clean`, each
// node is computed as it is added (never deeper than one level), so that the
// chain starts clean without a deep lazy recompute; otherwise all are dirty.
struct Chain {
    VXLWPtr<Node> leaf;
    VXLWPtr<FunctionNode> top;
};

Chain buildChain(size_t depth, bool clean) {
    Chain c{leaf("leaf", 1), nullptr};
    Node* below = c.leaf.get();
    for (size_t i = 0; i < depth; ++i) {
        VXLWPtr<FunctionNode> f(new TSUM("F", ""));
        f->addArgument(below);
        if (clean) f->getLastEvent();
        c.top = f;  // the chain is held through its top: each node owns its child
        below = f.get();
    }
    return c;
}

enum class Algorithm {
    Propagation,
    LazyRecompute,
    IsDescendant,
    NormalizedExpression,
    Destruction
};

const char* nameOf(Algorithm a) {
    switch (a) {
        case Algorithm::Propagation:
            return "shallBeUpdated + update";
        case Algorithm::LazyRecompute:
            return "recompute via getLastEvent";
        case Algorithm::IsDescendant:
            return "isDescendant";
        case Algorithm::NormalizedExpression:
            return "getNormalizedExpression";
        case Algorithm::Destruction:
            return "destruction";
    }
    return "";
}

struct Trial {
    Algorithm algorithm;
    size_t depth;
};

void* runTrial(void* arg) {
    const Trial& t = *static_cast<Trial*>(arg);
    VXAutoLock lock(LOCK());
    Chain c = buildChain(t.depth, t.algorithm != Algorithm::LazyRecompute);
    switch (t.algorithm) {
        case Algorithm::Propagation:
            c.top->addInterest();
            c.leaf->setValue(Value(2ULL));
            if (c.top->peekLastEvent().value != Value(2ULL)) _exit(2);
            break;
        case Algorithm::LazyRecompute:
            if (c.top->getValue() != Value(1ULL)) _exit(2);
            break;
        case Algorithm::IsDescendant:
            if (!c.top->isDescendant(c.leaf.get())) _exit(2);
            break;
        case Algorithm::NormalizedExpression:
            if (c.top->getNormalizedExpression().length() != 3 * t.depth + 4) _exit(2);
            break;
        case Algorithm::Destruction:
            c.top = nullptr;
            if (!c.leaf->getParents().empty()) _exit(2);
            break;
    }
    _exit(0);  // skip the (possibly deep) teardown of the other cases
}

// True when the trial completes on an 8 MiB stack.
bool survives(Algorithm a, size_t depth) {
    fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        Trial t{a, depth};
        pthread_attr_t attr;
        pthread_attr_init(&attr);
        pthread_attr_setstacksize(&attr, STACK_SIZE);
        pthread_t thread;
        if (pthread_create(&thread, &attr, runTrial, &t) != 0) _exit(3);
        pthread_join(thread, nullptr);
        _exit(4);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) > 1) ADD_FAILURE() << "trial failed: " << status;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// The largest depth that survives, to within 1 %, or `cap` if that survives.
size_t maxDepth(Algorithm a, size_t cap) {
    size_t good = 0, bad = 1024;
    while (bad <= cap && survives(a, bad)) good = bad, bad *= 2;
    if (bad > cap) return good;
    while (bad - good > good / 100 + 1) {
        const size_t mid = good + (bad - good) / 2;
        (survives(a, mid) ? good : bad) = mid;
    }
    return good;
}

TEST(DISABLED_StackDepth, ChainOfFunctionNodesOnAnEightMiBStack) {
    for (Algorithm a : {Algorithm::Propagation, Algorithm::LazyRecompute, Algorithm::IsDescendant,
                        Algorithm::NormalizedExpression, Algorithm::Destruction}) {
        // getNormalizedExpression copies each level's text into the next: the
        // cap keeps its quadratic cost bounded.
        const size_t cap = a == Algorithm::NormalizedExpression ? (1u << 17) : (1u << 20);
        const size_t depth = maxDepth(a, cap);
        printf("%-28s %s%zu nodes\n", nameOf(a), depth == cap ? ">= " : "", depth);
        RecordProperty(nameOf(a), static_cast<int>(depth));
        // Far beyond any expression a configuration writes.
        EXPECT_GE(depth, 10000u) << nameOf(a);
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
