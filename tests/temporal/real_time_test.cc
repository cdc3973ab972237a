// One run on the real clock: expiries of DEBOUNCE and DELAY run on the
// engine loop's own thread, with the engine lock held, while another thread
// keeps setting the input. The test waits on a condition variable with a
// generous timeout; the short pauses of the writer only pace it.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

constexpr unsigned long long LAST = 20;

// Records every change of a node with the thread it came on and whether that
// thread held the engine lock.
class Recorder : public NodeObserver {
public:
    struct Seen {
        unsigned long long value;
        std::thread::id thread;
        bool lockHeld;
    };
    void onValueChanged(const Value&, const Value& v) override {
        std::lock_guard<std::mutex> guard(mutex);
        seen.push_back({v.data.uint, std::this_thread::get_id(), LOCK().isHeldByMe()});
        changed.notify_all();
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Seen> seen;
};

class RealTime : public ::testing::Test {
protected:
    // The only tests on the real clock: make sure the manual one is off, and
    // leave it off.
    void SetUp() override { VX::ManualTime::DISABLE(); }
    void TearDown() override { VX::ManualTime::DISABLE(); }
};

TEST_F(RealTime, ExpiriesRunOnTheLoopUnderTheEngineLockWhileAnotherThreadSets) {
    VXLWPtr<Node> x;
    VXLWPtr<FunctionNode> debounce, delayed;
    Recorder debounced, replayed;
    {
        VXAutoLock lock(LOCK());
        x = leaf(num(0));
        debounce = apply("DEBOUNCE", {x.get(), leaf(duration(30)).get()});
        delayed = apply("DELAY", {x.get(), leaf(duration(20)).get()});
        // Interest first: the first computation (0) is not recorded.
        debounce->addInterest();
        debounce->addObserver(&debounced);
        delayed->addInterest();
        delayed->addObserver(&replayed);
    }

    std::thread::id writerId;
    std::thread writer([&] {
        writerId = std::this_thread::get_id();
        for (unsigned long long i = 1; i <= LAST; ++i) {
            {
                VXAutoLock lock(LOCK());
                x->setValue(num(i));
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    writer.join();

    for (Recorder* r : {&debounced, &replayed}) {
        std::unique_lock<std::mutex> guard(r->mutex);
        ASSERT_TRUE(r->changed.wait_for(guard, std::chrono::seconds(20), [&] {
            return !r->seen.empty() && r->seen.back().value == LAST;
        }));
    }

    VXAutoLock lock(LOCK());
    // Every value replayed, in order, each by an expiry on the loop's thread.
    ASSERT_EQ(replayed.seen.size(), LAST);
    for (unsigned long long i = 0; i < LAST; ++i) {
        const Recorder::Seen& s = replayed.seen[i];
        EXPECT_EQ(s.value, i + 1);
        EXPECT_NE(s.thread, writerId);
        EXPECT_NE(s.thread, std::this_thread::get_id());
        EXPECT_TRUE(s.lockHeld);
    }
    // The debounced output rose to the last value, from the loop's thread
    // too (more than one step only if the writer was held up for 30 ms).
    for (size_t i = 0; i < debounced.seen.size(); ++i) {
        const Recorder::Seen& s = debounced.seen[i];
        if (i) {
            EXPECT_GT(s.value, debounced.seen[i - 1].value);
        }
        EXPECT_EQ(s.thread, replayed.seen[0].thread);
        EXPECT_TRUE(s.lockHeld);
    }

    debounce->removeObserver(&debounced);
    delayed->removeObserver(&replayed);
    debounce = nullptr;
    delayed = nullptr;
}

}  // namespace
}  // namespace VX::SysEvent::testing
