// Tracking "db." variables through the Repository: the value read when
// tracking starts, entries that appear later, updates and deletes (also of a
// parent), several variables on one entry, stopping, registrations per
// table, failures with the variable's name, and the log lines.
#include <gtest/gtest.h>

#include "database/tracker_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using dbtest::insert;

TEST_F(TrackerTest, FollowsUpdatesDeletesAndNewEntries) {
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    ASSERT_TRUE(track("db.Interface:eth0.mtu").isSuccess());
    EXPECT_EQ(valueOf("db.Interface:eth0.mtu"), U(1500));

    ASSERT_TRUE(write([&](DB::ObjWrite& w) {
                    return w.update("Interface", eth0, {{"mtu", "9000"}});
                }).isSuccess());
    EXPECT_EQ(valueOf("db.Interface:eth0.mtu"), U(9000));

    ASSERT_TRUE(write([&](DB::ObjWrite& w) { return w.remove("Interface", eth0); }).isSuccess());
    EXPECT_EQ(valueOf("db.Interface:eth0.mtu"), kNA);

    insert(db_, "Interface", {{"name", "eth0"}, {"mtu", "1280"}});
    EXPECT_EQ(valueOf("db.Interface:eth0.mtu"), U(1280));
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

TEST_F(TrackerTest, DeletingTheParentReachesTheChildsVariables) {
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    dbtest::addAddress(db_, eth0, "1", "10.0.0.1");
    ASSERT_TRUE(track("db.Interface:eth0.Address:1.ip").isSuccess());
    EXPECT_EQ(valueOf("db.Interface:eth0.Address:1.ip"), S("10.0.0.1"));
    ASSERT_TRUE(write([&](DB::ObjWrite& w) { return w.remove("Interface", eth0); }).isSuccess());
    EXPECT_EQ(valueOf("db.Interface:eth0.Address:1.ip"), kNA);
}

TEST_F(TrackerTest, OneUpdateReachesEveryVariableOfTheEntry) {
    uint64_t port = insert(db_, "Port", {{"number", "1"}});
    ASSERT_TRUE(track("db.Port:1.vlan").isSuccess());
    ASSERT_TRUE(track("db.Port:1.state.admin").isSuccess());
    ASSERT_TRUE(track("db.Port:2.vlan").isSuccess());  // another entry
    EXPECT_EQ(valueOf("db.Port:1.state.admin"), Value(true));
    ASSERT_TRUE(write([&](DB::ObjWrite& w) {
                    return w.update("Port", port, {{"vlan", "20"}, {"state.admin", "false"}});
                }).isSuccess());
    EXPECT_EQ(valueOf("db.Port:1.vlan"), U(20));
    EXPECT_EQ(valueOf("db.Port:1.state.admin"), Value(false));
    EXPECT_EQ(valueOf("db.Port:2.vlan"), kNA);
}

TEST_F(TrackerTest, RegistrationsPerTable) {
    dbtest::addInterface(db_, "eth0");
    insert(db_, "Port", {{"number", "1"}});
    ASSERT_TRUE(track("db.Port:1.vlan").isSuccess());
    ASSERT_TRUE(track("db.Port:1.priority").isSuccess());
    ASSERT_TRUE(track("db.Interface:eth0.mtu").isSuccess());
    const auto& tables = tracker_.getObservedTables();
    EXPECT_EQ(tables.size(), 2u);
    EXPECT_EQ(tables.at("Port"), 2u);
    EXPECT_EQ(tables.at("Interface"), 1u);
    const auto& entries = tracker_.getObservedEntries();
    ASSERT_EQ(entries.count("Port:1"), 1u);
    EXPECT_EQ(entries.at("Port:1").size(), 2u);
}

TEST_F(TrackerTest, StoppedVariablesAreLeftAlone) {
    uint64_t port = insert(db_, "Port", {{"number", "1"}});
    VXPPtr<IRead> vlan = variable("db.Port:1.vlan");
    ASSERT_TRUE(tracker_.startTracking(vlan).isSuccess());
    ASSERT_TRUE(track("db.Port:1.priority").isSuccess());
    ASSERT_TRUE(tracker_.stopTracking(vlan).isSuccess());
    ASSERT_TRUE(write([&](DB::ObjWrite& w) {
                    return w.update("Port", port, {{"vlan", "30"}, {"priority", "3"}});
                }).isSuccess());
    EXPECT_EQ(valueOf("db.Port:1.vlan"), U(1));
    EXPECT_EQ(valueOf("db.Port:1.priority"), U(3));
    EXPECT_EQ(tracker_.getObservedTables().at("Port"), 1u);

    VXPPtr<IRead> priority = variable("db.Port:1.priority");
    ASSERT_TRUE(tracker_.stopTracking(priority).isSuccess());
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

}  // namespace
}  // namespace VX::SysEvent::testing
