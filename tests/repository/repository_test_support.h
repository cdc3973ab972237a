// Helpers for the Repository tests: each test works under names of its own
// (the test's name as the first name segment), because published objects,
// proxy nodes and shared sub-expressions live for the whole process.
#pragma once

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "host/crit.h"
#include "host/monitor.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/repository/read_observer.h"
#include "sysevent/repository/repository.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent::testing {

inline Value U(unsigned long long n) {
    return Value(n);
}

// The test's own name space: "<TestName>.<name>".
inline String N(const char* name) {
    return String(::testing::UnitTest::GetInstance()->current_test_info()->name()) + "." + name;
}

// The test's name, usable as an expression context.
inline String CTX() {
    return String(::testing::UnitTest::GetInstance()->current_test_info()->name());
}

inline Value valueOf(const String& name) {
    Value v;
    const XCode rc = Repository::GET_VALUE(name, v);
    EXPECT_TRUE(rc.isSuccess()) << name.c_str() << ": " << rc.toString().c_str();
    return v;
}

inline VXPPtr<IRead> readable(const String& name) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    VXPPtr<IRead> r;
    EXPECT_TRUE(repository->get(name, r).isSuccess()) << name.c_str();
    return r;
}

inline bool exists(const String& name) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    VXPPtr<INode> node;
    return repository->get(name, node).isSuccess();
}

// Records every notification of one published object.
class RecordingObserver : public IReadObserver {
public:
    std::vector<std::pair<Value, Value>> changes;
    std::vector<String> destroyed;

    void onValueChanged(VXPPtr<IRead>& source, const Value& oldValue,
                        const Value& newValue) override {
        ASSERT_TRUE(source);
        changes.emplace_back(oldValue, newValue);
    }
    void onValueDestroyed(IRead* object) override { destroyed.push_back(object->getName()); }
    std::vector<Value> newValues() const {
        std::vector<Value> out;
        for (const auto& change : changes) out.push_back(change.second);
        return out;
    }
};

// Installs a capturing monitor as VX::SysEvent::MON for the test's duration.
class CapturedLog {
public:
    explicit CapturedLog(int verbosity) : m_monitor(verbosity) { MON = &m_monitor; }
    ~CapturedLog() { MON = nullptr; }
    RTD::CaptureMonitor& operator*() { return m_monitor; }
    RTD::CaptureMonitor* operator->() { return &m_monitor; }

private:
    RTD::CaptureMonitor m_monitor;
};

}  // namespace VX::SysEvent::testing
