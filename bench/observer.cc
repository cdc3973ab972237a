// The cost of one value change delivered to N Observers of one name.
//
//   Direct/N          each Observer's callable runs inside SET_VALUE.
//   Queued/N          each Observer queues the call on the engine loop; the
//                     loop is drained on the manual clock right after the
//                     change, so the figure is queueing plus handling
//                     without a thread hand-over.
//   QueuedThread/N    the same on the loop's real thread: the change, the
//                     wake-up and every handling, until the last arrived.
// N = 0 is the cost of the change itself (look-up, set, propagation).
#include <benchmark/benchmark.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/event_loop.h"
#include "host/runtime/function.h"
#include "host/runtime/manual_time.h"
#include "sysevent/repository/observer.h"
#include "sysevent/repository/repository.h"
#include "sysevent/value/value.h"

namespace {

using VX::SysEvent::Observer;
using VX::SysEvent::Repository;
using VX::SysEvent::Value;

const char* const kName = "bench.observed";

// Counts deliveries without a lock on the hot path; a waiter can block until
// a target count is reached.
struct Counter {
    std::atomic<unsigned long long> count{0};
    std::atomic<unsigned long long> target{0};
    std::mutex mutex;
    std::condition_variable reached;

    void hit() {
        if (count.fetch_add(1, std::memory_order_acq_rel) + 1 ==
            target.load(std::memory_order_acquire)) {
            std::lock_guard<std::mutex> guard(mutex);
            reached.notify_one();
        }
    }
    void waitFor(unsigned long long n) {
        std::unique_lock<std::mutex> guard(mutex);
        target.store(n, std::memory_order_release);
        reached.wait(guard, [&] { return count.load(std::memory_order_acquire) >= n; });
    }
};

enum class Kind { Direct, Queued, QueuedThread };

void deliver(benchmark::State& state, Kind kind) {
    const auto observers = static_cast<size_t>(state.range(0));
    if (kind == Kind::Queued) VX::ManualTime::ENABLE(VX::Time(1700000000, 0));
    Repository::SET_VALUE(kName, Value(0ULL));

    Counter counter;
    std::vector<std::unique_ptr<Observer>> watching;
    for (size_t i = 0; i < observers; ++i) {
        auto callable = [&counter](String, Value) { counter.hit(); };
        Observer::ValueChangeCallback callback =
            kind == Kind::Direct ? Observer::ValueChangeCallback(VX::directCall(), callable)
                                 : Observer::ValueChangeCallback(VX::SysEvent::EVENT_LOOP(),
                                                                 callable, VX::Delivery::Queued);
        watching.push_back(std::make_unique<Observer>(std::move(callback)));
        watching.back()->addTo(kName, false);
    }

    unsigned long long value = 0;
    for (auto _ : state) {
        Repository::SET_VALUE(kName, Value(++value));
        if (kind == Kind::Queued) VX::ManualTime::ADVANCE(0);
        if (kind == Kind::QueuedThread) counter.waitFor(value * observers);
    }
    if (counter.count.load() != value * observers) state.SkipWithError("a delivery went missing");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * observers));

    watching.clear();
    Repository::DESTROY_CONSTANT(kName);
    if (kind == Kind::Queued) VX::ManualTime::DISABLE();
}

void Direct(benchmark::State& state) {
    deliver(state, Kind::Direct);
}
void Queued(benchmark::State& state) {
    deliver(state, Kind::Queued);
}
void QueuedThread(benchmark::State& state) {
    deliver(state, Kind::QueuedThread);
}

BENCHMARK(Direct)->Arg(0)->Arg(1)->Arg(10)->Arg(1000);
BENCHMARK(Queued)->Arg(0)->Arg(1)->Arg(10)->Arg(1000);
BENCHMARK(QueuedThread)->Arg(1)->Arg(10)->Arg(1000);

}  // namespace
