// Tracking "db." variables through the Repository: the value read when
// tracking starts, entries that appear later, updates and deletes (also of a
// parent) reaching the variables and an expression over them, several
// variables on one entry until they stop, observation per table and entry,
// failures with the variable's name, the log lines, and a locked file.
#include <gtest/gtest.h>

#include <memory>

#include "database/tracker_test_support.h"
#include "sysevent/repository/observer.h"

namespace VX::SysEvent::testing {
namespace {

using dbtest::insert;

// A variable, an expression over it and a child entry's variable follow
// committed changes: updates, the deletion (of the parent too) to #N/A!, and
// an entry of the same identifier made again.
TEST_F(TrackerTest, FollowsUpdatesDeletesAndNewEntries) {
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    dbtest::addAddress(db_, eth0, "1", "10.0.0.1");
    ASSERT_TRUE(track("db.Interface:eth0.mtu").isSuccess());
    ASSERT_TRUE(track("db.Interface:eth0.Address:1.ip").isSuccess());
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        ASSERT_TRUE(
            repository->createExpression("", "trackerTest.jumbo", "db.Interface:eth0.mtu > 1500")
                .isSuccess());
    }
    variables_.push_back("trackerTest.jumbo");
    EXPECT_EQ(valueOf("db.Interface:eth0.mtu"), U(1500));
    EXPECT_EQ(valueOf("db.Interface:eth0.Address:1.ip"), S("10.0.0.1"));
    EXPECT_EQ(valueOf("trackerTest.jumbo"), Value(false));

    ASSERT_TRUE(write([&](DB::ObjWrite& w) {
                    return w.update("Interface", eth0, {{"mtu", "9000"}});
                }).isSuccess());
    EXPECT_EQ(valueOf("db.Interface:eth0.mtu"), U(9000));
    EXPECT_EQ(valueOf("trackerTest.jumbo"), Value(true));

    ASSERT_TRUE(write([&](DB::ObjWrite& w) { return w.remove("Interface", eth0); }).isSuccess());
    EXPECT_EQ(valueOf("db.Interface:eth0.mtu"), kNA);
    EXPECT_EQ(valueOf("db.Interface:eth0.Address:1.ip"), kNA);
    EXPECT_EQ(valueOf("trackerTest.jumbo"), kNA);

    insert(db_, "Interface", {{"name", "eth0"}, {"mtu", "1280"}});
    EXPECT_EQ(valueOf("db.Interface:eth0.mtu"), U(1280));
    EXPECT_EQ(valueOf("trackerTest.jumbo"), Value(false));
}

TEST_F(TrackerTest, EntryThatDoesNotExistYet) {
    RTD::CaptureMonitor monitor(2);
    MON = &monitor;
    XCode rc = track("db.Port:3.delayOffset");
    MON = nullptr;
    ASSERT_TRUE(rc.isSuccess()) << rc.toString().c_str();
    EXPECT_EQ(valueOf("db.Port:3.delayOffset"), kNA);
    EXPECT_TRUE(monitor.contains("[db.Port:3.delayOffset] Database entry does not exist (yet)"));

    insert(db_, "Port", {{"number", "4"}, {"delayOffset", "-1"}});  // another entry
    EXPECT_EQ(valueOf("db.Port:3.delayOffset"), kNA);
    insert(db_, "Port", {{"number", "3"}, {"delayOffset", "-7"}});
    EXPECT_EQ(valueOf("db.Port:3.delayOffset"), F(-7.0));
}

// One update reaches every variable of the entry, until it stops tracking.
// Each table is observed once with a count of its variables (kept at zero),
// each entry once with all its variables.
TEST_F(TrackerTest, VariablesOfOneEntryFollowItUntilStopped) {
    uint64_t port = insert(db_, "Port", {{"number", "1"}});
    dbtest::addInterface(db_, "eth0");
    VXPPtr<IRead> vlan = variable("db.Port:1.vlan");
    ASSERT_TRUE(tracker_.startTracking(vlan).isSuccess());
    ASSERT_TRUE(track("db.Port:1.state.admin").isSuccess());
    ASSERT_TRUE(track("db.Port:2.vlan").isSuccess());  // another entry
    ASSERT_TRUE(track("db.Interface:eth0.mtu").isSuccess());
    EXPECT_EQ(tracker_.getObservedTables(),
              (VXStringHashTable<unsigned>{{"Interface", 1u}, {"Port", 3u}}));
    EXPECT_EQ(tracker_.getObservedEntries().at("Port:1").size(), 2u);
    EXPECT_EQ(valueOf("db.Port:1.state.admin"), Value(true));
    auto update = [&](const char* values) {
        ASSERT_TRUE(write([&](DB::ObjWrite& w) {
                        return w.update("Port", port, dbtest::values(values));
                    }).isSuccess());
    };
    update("vlan=20,state.admin=false");
    EXPECT_EQ(valueOf("db.Port:1.vlan"), U(20));
    EXPECT_EQ(valueOf("db.Port:1.state.admin"), Value(false));
    EXPECT_EQ(valueOf("db.Port:2.vlan"), kNA);

    ASSERT_TRUE(tracker_.stopTracking(vlan).isSuccess());
    update("vlan=30,state.admin=true");
    EXPECT_EQ(valueOf("db.Port:1.vlan"), U(20));
    EXPECT_EQ(valueOf("db.Port:1.state.admin"), Value(true));
    EXPECT_EQ(tracker_.getObservedTables().at("Port"), 2u);
    for (const char* name : {"db.Port:1.state.admin", "db.Port:2.vlan"}) {
        VXPPtr<IRead> v = variable(name);
        ASSERT_TRUE(tracker_.stopTracking(v).isSuccess()) << name;
    }
    EXPECT_EQ(tracker_.getObservedTables().at("Port"), 0u);  // registrations stay
    EXPECT_EQ(tracker_.getObservedEntries().at("Port:1").size(), 0u);
}

TEST_F(TrackerTest, FailuresNameTheVariable) {
    insert(db_, "System", {});
    dbtest::addInterface(db_, "eth0");
    EXPECT_EQ(track("db.Address:1.ip").getString(),
              "db.Address:1.ip: PARENT SPECIFIER REQUIRED: Address");
    EXPECT_EQ(track("db.mtu").getString(), "db.mtu: MISSING TABLE NAME");
    EXPECT_EQ(track("db.Interface:eth0.rxGain").getString(),
              "db.Interface:eth0.rxGain: INVALID DATA TYPE OF DATABASE FIELD");

    VXPPtr<IRead> mtu = variable("db.mtu");
    XCode rc = tracker_.stopTracking(mtu);
    EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
    EXPECT_EQ(rc.getString(), "[db.mtu] 0x7FFFFFFF: MISSING TABLE NAME: MISSING TABLE NAME");

    ASSERT_TRUE(
        Repository::CREATE_CONSTANT("db.System.hostname", "fixed", Value(String("x"))).isSuccess());
    variables_.push_back("db.System.hostname");
    VXPPtr<IRead> constant;
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        ASSERT_TRUE(repository->get("db.System.hostname", constant).isSuccess());
    }
    EXPECT_EQ(tracker_.startTracking(constant).getString(),
              "db.System.hostname: READ-ONLY CONSTANT");
}

TEST_F(TrackerTest, LogLines) {
    RTD::CaptureMonitor monitor(2);
    MON = &monitor;
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    XCode rc = track("db.Interface:eth0.mtu");
    ASSERT_TRUE(rc.isSuccess());
    ASSERT_TRUE(write([&](DB::ObjWrite& w) {
                    return w.update("Interface", eth0, {{"mtu", "1400"}});
                }).isSuccess());
    VXPPtr<IRead> mtu = variable("db.Interface:eth0.mtu");
    ASSERT_TRUE(tracker_.stopTracking(mtu).isSuccess());
    MON = nullptr;
    for (const char* line :
         {"[db.Interface:eth0.mtu] Start tracking database",
          "[Interface] Start observing database table", "[Interface:eth0] Start observing entry",
          "[Interface] Database table changed",
          "[Interface:eth0] Database table changed for observed entry",
          "[db.Interface:eth0.mtu] Database table changed for variable",
          "[db.Interface:eth0.mtu] Stop tracking database",
          "[Interface:eth0] Stop observing entry"}) {
        EXPECT_TRUE(monitor.contains(line)) << line;
    }
    for (const auto& l : monitor.lines()) {
        if (l.text.indexOf("database") >= 0 || l.text.indexOf("entry") >= 0) {
            EXPECT_EQ(l.level, 2) << l.text.c_str();
        }
    }

    RTD::CaptureMonitor quiet(1);
    MON = &quiet;
    ASSERT_TRUE(track("db.Interface:eth0.name").isSuccess());
    MON = nullptr;
    EXPECT_FALSE(quiet.contains("Start tracking database"));
    EXPECT_FALSE(quiet.contains("Start observing entry"));
}

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
