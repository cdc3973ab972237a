// Shared by the observer tests: a recorder for what a client's callbacks
// receive (safe to feed from the event loop's thread), helpers that publish,
// change and destroy names through the Repository as a client would, and a
// fixture on the manual clock so queued deliveries run only when a test
// advances it.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <ostream>
#include <utility>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/function.h"
#include "host/runtime/lock.h"
#include "host/runtime/manual_time.h"
#include "host/runtime/string.h"
#include "support/print.h"
#include "sysevent/repository/observer.h"
#include "sysevent/repository/repository.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent::testing {

// One callback as the client saw it: the name and the value's display text
// (empty for a destroy callback).
struct Seen {
    String name;
    String text;
    friend bool operator==(const Seen& a, const Seen& b) = default;
    friend void PrintTo(const Seen& s, std::ostream* os) {
        *os << s.name.str() << "=" << s.text.str();
    }
};

inline Seen changed(const char* name, const char* text) {
    return Seen{name, text};
}
inline Seen destroyed(const char* name) {
    return Seen{name, String()};
}

const char* const kNA = "#N/A!";

// Collects callbacks in arrival order; a test thread can wait for a count.
class Recorder {
public:
    void onChange(const String& name, const Value& value) { push(Seen{name, value.toString()}); }
    void onDestroy(const String& name) { push(Seen{name, String()}); }

    std::vector<Seen> seen() const {
        std::lock_guard<std::mutex> guard(mutex_);
        return seen_;
    }
    void clear() {
        std::lock_guard<std::mutex> guard(mutex_);
        seen_.clear();
    }
    // Waits (bounded, as a safety net only) until `n` callbacks arrived.
    bool waitFor(size_t n) {
        std::unique_lock<std::mutex> guard(mutex_);
        return arrived_.wait_for(guard, std::chrono::seconds(20),
                                 [&] { return seen_.size() >= n; });
    }

    Observer::ValueChangeCallback direct() {
        return Observer::ValueChangeCallback(VX::directCall(),
                                             [this](String n, Value v) { onChange(n, v); });
    }
    Observer::DestroyCallback directDestroy() {
        return Observer::DestroyCallback(VX::directCall(), [this](String n) { onDestroy(n); });
    }
    Observer::ValueChangeCallback on(VXEventLoop& loop, VX::Delivery delivery) {
        return Observer::ValueChangeCallback(
            loop, [this](String n, Value v) { onChange(n, v); }, delivery);
    }

private:
    void push(Seen s) {
        {
            std::lock_guard<std::mutex> guard(mutex_);
            seen_.push_back(std::move(s));
        }
        arrived_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<Seen> seen_;
};

// Sets `name` to the unsigned integer `n`, creating a variable if needed.
inline void set(const char* name, unsigned long long n) {
    XCode rc = Repository::SET_VALUE(name, Value(n));
    ASSERT_TRUE(rc.isSuccess()) << rc.toString().str();
}

// Destroys whatever object is published under `name`.
inline void destroy(const char* name) {
    Repository::DESTROY_CONSTANT(name);
}

// The IRead of the object published under `name` (null when there is none).
inline VXPPtr<IRead> readOf(const char* name) {
    VXAutoLock engine(LOCK());
    VXPPtr<IRead> object;
    Repository::INSTANCE()->get(name, object);
    return object;
}

// Queued deliveries run only inside ADVANCE; nothing here sleeps.
class ObserverTest : public ::testing::Test {
protected:
    void SetUp() override { VX::ManualTime::ENABLE(VX::Time(1700000000, 0)); }
    void TearDown() override { VX::ManualTime::DISABLE(); }
};

}  // namespace VX::SysEvent::testing
