// Several client threads create, set, read and destroy values and
// expressions at once while another thread observes and reads: every call
// runs under the engine lock, so each thread sees its own writes exactly,
// the observer hears of every change in order, and the final values add up.
// Run under ThreadSanitizer too (scripts/test).
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/function.h"
#include "sysevent/repository/observer.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {
namespace {

constexpr unsigned WORKERS = 4;
constexpr unsigned long long ROUNDS = 200;

String workerName(unsigned w, const char* name) {
    return String::Formatted("conc.w%u.%s", w, name);
}

Value read(const String& name) {
    Value v;
    const XCode rc = Repository::GET_VALUE(name, v);
    EXPECT_TRUE(rc.isSuccess()) << rc.toString().c_str();
    return v;
}

// One client: its own variable v, an expression e = v * 2 made beforehand,
// and short-lived expressions of its own. Half-way it waits for the watcher's
// first read, so that at least one read overlaps the clients however the
// threads are scheduled.
void work(unsigned w, const std::atomic<unsigned>& reads) {
    const String context = String::Formatted("conc.w%u", w);
    for (unsigned long long j = 1; j <= ROUNDS; ++j) {
        while (j == ROUNDS / 2 && reads.load() == 0) std::this_thread::yield();
        ASSERT_TRUE(Repository::SET_VALUE(workerName(w, "v"), Value(j)).isSuccess());
        EXPECT_EQ(read(workerName(w, "e")), Value(2 * j));
        if (j % 3 == 0) {
            {
                VXLockPtr<Repository> repository(Repository::INSTANCE());
                ASSERT_TRUE(repository->createExpression(context, "t", "v + 1000").isSuccess());
            }
            EXPECT_EQ(read(workerName(w, "t")), Value(j + 1000));
            VXLockPtr<Repository> repository(Repository::INSTANCE());
            repository->destroyExpression(context, "t");
        }
    }
}

TEST(RepositoryConcurrency, ClientsCreateSetReadAndDestroyWhileAnotherObserves) {
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        for (unsigned w = 0; w < WORKERS; ++w) {
            ASSERT_TRUE(
                repository->createVariable(workerName(w, "v"), "", Value(0ull)).isSuccess());
            ASSERT_TRUE(repository->createExpression(String::Formatted("conc.w%u", w), "e", "v * 2")
                            .isSuccess());
        }
        ASSERT_TRUE(repository->createExpression("conc", "total", "SUM(conc.w%.v)").isSuccess());
    }

    // Every change of every e, in the order the observer heard of them.
    std::mutex heardMutex;
    std::map<String, std::vector<Value>> heard;
    Observer observer(
        Observer::ValueChangeCallback(VX::directCall(), [&](String name, Value value) {
            std::lock_guard<std::mutex> guard(heardMutex);
            heard[name].push_back(value);
        }));
    observer.addTo("conc.w%.e", false);

    std::atomic<bool> done{false};
    std::atomic<unsigned> reads{0};
    std::thread watcher([&] {
        // Reads while the clients write a sum over a pattern (of values that
        // are always even), and keeps subscribing to the short-lived names.
        Observer transient;
        while (!done.load()) {
            transient.addTo("conc.w%.t", true);
            VXVector<Value> values;
            {
                VXLockPtr<Repository> repository(Repository::INSTANCE());
                EXPECT_TRUE(
                    repository->evaluateExpression("conc", "SUM(conc.w%.e)", values).isSuccess());
            }
            ASSERT_EQ(values.size(), 1u);
            EXPECT_EQ(values[0].data.uint % 2, 0u);
            transient.removeFrom("conc.w%.t");
            reads.fetch_add(1);
        }
    });

    std::vector<std::thread> clients;
    for (unsigned w = 0; w < WORKERS; ++w) clients.emplace_back(work, w, std::cref(reads));
    for (std::thread& t : clients) t.join();
    done.store(true);
    watcher.join();

    EXPECT_GT(reads.load(), 0u);
    EXPECT_EQ(read("conc.total"), Value(WORKERS * ROUNDS));
    std::vector<Value> expected;
    for (unsigned long long j = 1; j <= ROUNDS; ++j) expected.push_back(Value(2 * j));
    for (unsigned w = 0; w < WORKERS; ++w) EXPECT_EQ(heard[workerName(w, "e")], expected) << w;
    VXVector<VXPPtr<INode>> left;
    ASSERT_TRUE(Repository::GET("conc.w%.t", left).isSuccess());
    EXPECT_TRUE(left.empty());
}

}  // namespace
}  // namespace VX::SysEvent
