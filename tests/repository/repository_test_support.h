// Helpers for the Repository tests: each test works under names of its own
// (the test's name as the first name segment), because published objects,
// proxy nodes and shared sub-expressions live for the whole process. The
// fixture holds the engine lock for the whole test (it is re-entrant, and
// these tests run on one thread), so tests call the Repository directly.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/monitor.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/repository/read_observer.h"
#include "sysevent/repository/repository.h"
#include "sysevent/value/value.h"

// Fails the test (and returns) with the code's text unless `expr` succeeds.
#define ASSERT_OK(expr)                                         \
    do {                                                        \
        const ::XCode rc_ = (expr);                             \
        ASSERT_TRUE(rc_.isSuccess()) << rc_.toString().c_str(); \
    } while (0)

namespace VX::SysEvent::testing {

inline Value U(unsigned long long n) {
    return Value(n);
}
const Value kNA(DST_ERR_NA);

// The test's name, usable as an expression context.
inline String CTX() {
    return String(::testing::UnitTest::GetInstance()->current_test_info()->name());
}

// The test's own name space: "<TestName>.<name>".
inline String N(const char* name) {
    return CTX() + "." + name;
}

inline Value valueOf(const String& name) {
    Value v;
    const XCode rc = Repository::GET_VALUE(name, v);
    EXPECT_TRUE(rc.isSuccess()) << name.c_str() << ": " << rc.toString().c_str();
    return v;
}

inline VXPPtr<IRead> readable(const String& name) {
    VXPPtr<IRead> r;
    EXPECT_TRUE(VXLockPtr<Repository>(Repository::INSTANCE())->get(name, r).isSuccess())
        << name.c_str();
    return r;
}

inline bool exists(const String& name) {
    VXPPtr<INode> node;
    return VXLockPtr<Repository>(Repository::INSTANCE())->get(name, node).isSuccess();
}

using Changes = std::vector<std::pair<Value, Value>>;

// Records every notification of one published object, and runs `action`
// (when set) from inside each change notification. Made with an object, it
// observes it (keeping it alive) until destroyed.
class RecordingObserver : public IReadObserver {
public:
    Changes changes;
    std::vector<String> destroyed;
    std::function<void()> action;

    RecordingObserver() = default;
    explicit RecordingObserver(VXPPtr<IRead> object, bool notifyNow = false) : m_object(object) {
        m_object->addValueObserver(this, notifyNow);
    }
    ~RecordingObserver() override {
        if (m_object) m_object->removeValueObserver(this);
    }

    void onValueChanged(VXPPtr<IRead>& source, const Value& oldValue,
                        const Value& newValue) override {
        ASSERT_TRUE(source);
        changes.emplace_back(oldValue, newValue);
        if (action) action();
    }
    void onValueDestroyed(IRead* object) override { destroyed.push_back(object->getName()); }
    std::vector<Value> newValues() const {
        std::vector<Value> out;
        for (const auto& change : changes) out.push_back(change.second);
        return out;
    }

private:
    VXPPtr<IRead> m_object;
};

// Counts the (re-)parses an expression reports.
class CountingExpressionObserver : public IExpressionObserver {
public:
    int count = 0;
    VXPPtr<IExpression> lastSource;
    void onExpressionChanged(ObserverEvent<IExpression>& event) override {
        ++count;
        lastSource = event.getSource();
    }
};

// Installs a capturing monitor as VX::SysEvent::MON for the test's duration.
class CapturedLog {
public:
    explicit CapturedLog(int verbosity) : m_monitor(verbosity) { MON = &m_monitor; }
    ~CapturedLog() { MON = nullptr; }
    RTD::CaptureMonitor* operator->() { return &m_monitor; }

private:
    RTD::CaptureMonitor m_monitor;
};

// Holds the engine lock and publishes the test's own names.
class RepositoryTest : public ::testing::Test {
protected:
    VXLockPtr<Repository> repo{Repository::INSTANCE()};

    void var(const char* name, const Value& value) {
        ASSERT_OK(repo->createVariable(N(name), "", value));
    }
    void constant(const char* name, const Value& value) {
        ASSERT_OK(repo->createConstant(N(name), "", value));
    }
    // An expression `name` in the test's context.
    void expr(const char* name, const String& text) {
        ASSERT_OK(repo->createExpression(CTX(), name, text));
    }
};

}  // namespace VX::SysEvent::testing
