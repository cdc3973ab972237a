// The recursive algorithms of the graph get through a chain of 10000 function
// nodes, far deeper than any expression a configuration writes, on an 8 MiB
// stack (the default of the device's threads). Each trial runs in a forked
// child, on a thread with exactly that stack, so that an overflow kills only
// the trial. The budget holds for optimized builds; instrumented or
// unoptimized frames are several times larger, so those builds give the
// thread four times the stack and check only that the algorithms get through.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "graph/graph_test_support.h"

namespace VX::SysEvent::testing {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__OPTIMIZE__)
constexpr size_t STACK_SIZE = 32u << 20;
#else
constexpr size_t STACK_SIZE = 8u << 20;
#endif
constexpr size_t DEPTH = 10000;

enum class Algorithm { Propagation, LazyRecompute, IsDescendant, Expression, Destruction };

// Builds leaf <- F <- ... <- top (DEPTH function nodes, the chain held
// through its top) and runs the algorithm on it; exits 0 when it gave the
// right answer. Except for LazyRecompute each node is computed as it is
// added, so that the chain starts clean without a deep recompute.
void* runTrial(void* arg) {
    const Algorithm a = *static_cast<Algorithm*>(arg);
    VXAutoLock lock(LOCK());
    VXLWPtr<Node> bottom = leaf("leaf", 1);
    VXLWPtr<FunctionNode> top;
    for (size_t i = 0; i < DEPTH; ++i) {
        VXLWPtr<FunctionNode> f = make<TSUM>({top ? top.get() : bottom.get()}, "F");
        if (a != Algorithm::LazyRecompute) f->getLastEvent();
        top = f;
    }
    bool ok = false;
    switch (a) {
        case Algorithm::Propagation:
            top->addInterest();
            bottom->setValue(Value(2ULL));
            ok = top->peekLastEvent().value == Value(2ULL);
            break;
        case Algorithm::LazyRecompute:
            ok = top->getValue() == Value(1ULL);
            break;
        case Algorithm::IsDescendant:
            ok = top->isDescendant(bottom.get());
            break;
        case Algorithm::Expression:
            ok = top->getNormalizedExpression().length() == 3 * DEPTH + 4;
            break;
        case Algorithm::Destruction:
            top = nullptr;
            ok = bottom->getParents().empty();
            break;
    }
    _exit(ok ? 0 : 2);  // skip the (possibly deep) teardown of the other cases
}

TEST(StackDepth, TenThousandLevelsOnAnEightMiBStack) {
    const std::pair<Algorithm, const char*> trials[] = {
        {Algorithm::Propagation, "shallBeUpdated + update"},
        {Algorithm::LazyRecompute, "recompute via getLastEvent"},
        {Algorithm::IsDescendant, "isDescendant"},
        {Algorithm::Expression, "getNormalizedExpression"},
        {Algorithm::Destruction, "destruction"},
    };
    for (auto [algorithm, name] : trials) {
        fflush(nullptr);
        const pid_t pid = fork();
        if (pid == 0) {
            pthread_attr_t attr;
            pthread_attr_init(&attr);
            pthread_attr_setstacksize(&attr, STACK_SIZE);
            pthread_t thread;
            if (pthread_create(&thread, &attr, runTrial, &algorithm) != 0) _exit(3);
            pthread_join(thread, nullptr);
            _exit(4);
        }
        int status = 0;
        ASSERT_EQ(waitpid(pid, &status, 0), pid);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0)
            << name << ": status " << status << (WIFSIGNALED(status) ? " (killed)" : "");
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
