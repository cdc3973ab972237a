// Tracking "db." variables against a locked database file, which the tool
// cannot arrange. (Tracking, its failures and its trace lines are in the
// database and engine_database golden transcripts.)
#include <gtest/gtest.h>

#include <memory>

#include "database/tracker_test_support.h"
#include "sysevent/repository/observer.h"

namespace VX::SysEvent::testing {
namespace {

// A file locked by another connection refuses a write: no variable changes,
// every other name keeps serving, and the write that commits once the lock
// is gone reaches the tracked variable and its Observer exactly once.
TEST_F(TrackerTest, LockedFileRefusesAWriteWhileTheEngineServesOn) {
    dbtest::TempFile file("tracker_lock");
    ASSERT_TRUE(DB::Database::OPEN(db_, file.path(), DB::Database::OPEN_CREATE).isSuccess());
    ASSERT_TRUE(db_->applySchemaFile(dbtest::schemaPath()).isSuccess());
    db_->setBusyTimeout(0);
    DB::Database::SET_DEFAULT(db_);
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    ASSERT_TRUE(track("db.Interface:eth0.mtu").isSuccess());
    VXVector<String> seen;
    Observer observer(Observer::ValueChangeCallback(
        VX::directCall(), [&](String, Value v) { seen.push_back(v.toString()); }));
    observer.addTo("db.Interface:eth0.mtu", false);
    auto raise = [&] {
        return write([&](DB::ObjWrite& w) {
            return w.update("Interface", eth0, {{"mtu", "9000"}});
        });
    };

    VXPtr<DB::Database> other;
    ASSERT_TRUE(DB::Database::OPEN(other, file.path()).isSuccess());
    auto lock = std::make_unique<DB::Transaction>(DB::TRANSACTION_WRITE, other);
    ASSERT_TRUE(lock->start().isSuccess());
    EXPECT_EQ(raise().getString(), "DATABASE IS BUSY: " + file.path() + " (database is locked)");
    EXPECT_EQ(valueOf("db.Interface:eth0.mtu"), U(1500));
    ASSERT_TRUE(Repository::SET_VALUE("trackerTest.other", U(7)).isSuccess());
    variables_.push_back("trackerTest.other");
    EXPECT_EQ(valueOf("trackerTest.other"), U(7));
    EXPECT_TRUE(seen.empty());

    lock.reset();
    ASSERT_TRUE(raise().isSuccess());
    EXPECT_EQ(valueOf("db.Interface:eth0.mtu"), U(9000));
    EXPECT_EQ(seen, (VXVector<String>{"9000"}));
}

}  // namespace
}  // namespace VX::SysEvent::testing
