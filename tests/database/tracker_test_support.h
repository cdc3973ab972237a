// Shared set-up of the database tracker's tests: the example device schema
// in an in-memory database made the process's default one, a tracker whose
// component manager forwards every notification to it, and "db." variables
// made through the Repository and destroyed after each test (published
// objects live for the whole process).
#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "db/db_test_support.h"
#include "host/component/component_manager.h"
#include "host/runtime/crit.h"
#include "host/runtime/monitor.h"
#include "sysevent/database/database_tracker.h"
#include "sysevent/repository/repository.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent::testing {

class TrackerTest : public ::testing::Test {
protected:
    TrackerTest() {
        DB::Database::SET_DEFAULT(db_);
        manager_.addDatabaseHandler([this](DB::EventType_ type, DB::ObjRead& entry) {
            EXPECT_TRUE(tracker_.onDatabaseEvent(type, entry).isSuccess());
        });
    }
    ~TrackerTest() override {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        for (const String& name : variables_) repository->destroy(name);
        DB::Database::SET_DEFAULT(nullptr);
    }

    // The variable of a "db." name, made on the fly by the Repository.
    VXPPtr<IRead> variable(const String& name) {
        VXPPtr<IRead> out;
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        EXPECT_TRUE(repository->get(name, out).isSuccess()) << name.c_str();
        variables_.push_back(name);
        return out;
    }

    XCode track(const String& name) {
        VXPPtr<IRead> v = variable(name);
        return tracker_.startTracking(v);
    }

    static Value valueOf(const String& name) {
        Value v;
        XCode rc = Repository::GET_VALUE(name, v);
        EXPECT_TRUE(rc.isSuccess()) << name.c_str() << ": " << rc.toString().c_str();
        return v;
    }

    XCode write(const std::function<XCode(DB::ObjWrite&)>& op) { return dbtest::inWrite(db_, op); }

    VXPtr<DB::Database> db_ = dbtest::openExample();
    VX::ComponentManager manager_{"tracker-test"};
    DatabaseTracker tracker_{&manager_};
    VXVector<String> variables_;
};

inline Value U(unsigned long long n) {
    return Value(n);
}
inline Value S(const char* s) {
    return Value(String(s));
}

}  // namespace VX::SysEvent::testing
