// Change callbacks: what reaches a registered component manager after a
// commit and what reaches nobody, registrations staged in their transaction,
// queued delivery, destroyed managers, and handlers that write or wait.
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

#include "db_test_support.h"

namespace {

using dbtest::inWrite;
using dbtest::registerFor;
using Lines = VXVector<String>;

// Each delivered change as "<event> <table> <key>", with " mtu=" for an
// Interface and " parent=" for an entry under an Interface, read while it
// was being delivered.
class Recorder {
public:
    explicit Recorder(VX::ComponentManager::Delivery d = VX::ComponentManager::DELIVER_DIRECT)
        : manager_("recorder", d) {
        manager_.addDatabaseHandler([this](DB::EventType_ type, DB::ObjRead& e) {
            const String table = e.getStructName();
            String line = type == DB::EVENT_NEW      ? "NEW "
                          : type == DB::EVENT_UPDATE ? "UPDATE "
                                                     : "DELETE ";
            String key, mtu, name;
            e.getAsString(table == "Interface" ? "name" : table == "Port" ? "number" : "ip", key);
            line += table + " " + key;
            if (e.getAsString("mtu", mtu).isSuccess()) line += " mtu=" + mtu;
            DB::ObjRead parent;
            if (e.getParentObj(parent, 2, 10).isSuccess() && parent.get("name", name).isSuccess())
                line += " parent=" + name;
            seen.push_back(line);
        });
    }
    XCode watch(const VXPtr<DB::Database>& db, const char* table,
                std::initializer_list<DB::EventType_> types = {DB::EVENT_NEW, DB::EVENT_DELETE,
                                                               DB::EVENT_UPDATE}) {
        XCode rc;
        for (DB::EventType_ t : types)
            rc = rc.isSuccess() ? registerFor(db, table, t, &manager_) : rc;
        return rc;
    }
    VX::ComponentManager manager_;
    Lines seen;
};

class CallbackTest : public ::testing::Test {
protected:
    XCode update(uint64_t uid, const char* values) {
        return inWrite(db_, [&](DB::ObjWrite& w) {
            return w.update("Interface", uid, dbtest::values(values));
        });
    }
    XCode remove(uint64_t uid) {
        return inWrite(db_, [&](DB::ObjWrite& w) { return w.remove("Interface", uid); });
    }
    VXPtr<DB::Database> db_ = dbtest::openExample();
    Recorder rec_;
};

// Changes arrive after their commit, in order, readable; an update that
// changes nothing is none, a new identifier is a delete and a new entry, and
// what a cascade made of a change arrives too (a trigger's changes are in the
// tool's db_schema transcript).
TEST_F(CallbackTest, CommittedChangesArriveInOrderWithWhatCascadesMade) {
    ASSERT_TRUE(rec_.watch(db_, "Interface").isSuccess());
    ASSERT_TRUE(rec_.watch(db_, "Address", {DB::EVENT_DELETE}).isSuccess());
    uint64_t eth0 = 0, eth1 = 0;
    ASSERT_TRUE(inWrite(db_, [&](DB::ObjWrite& w) {
                    XCode rc = w.insert("Interface", {{"name", "eth0"}}, &eth0);
                    if (rc.isSuccess())
                        rc = w.insert("Interface", dbtest::values("name=eth1,mtu=1280"), &eth1);
                    EXPECT_TRUE(rec_.seen.empty());  // not before the commit
                    return rc;
                }).isSuccess());
    dbtest::addAddress(db_, eth0, "1", "10.0.0.1");
    ASSERT_TRUE(update(eth0, "mtu=9216").isSuccess());
    ASSERT_TRUE(update(eth0, "mtu=9216").isSuccess());  // no change, no event
    ASSERT_TRUE(update(eth0, "name=wan0").isSuccess());
    ASSERT_TRUE(remove(eth0).isSuccess());
    // Deleted children still name their deleted parent.
    EXPECT_EQ(rec_.seen,
              (Lines{"NEW Interface eth0 mtu=1500", "NEW Interface eth1 mtu=1280",
                     "UPDATE Interface eth0 mtu=9216", "DELETE Interface eth0 mtu=9216",
                     "NEW Interface wan0 mtu=9216", "DELETE Address 10.0.0.1 parent=wan0",
                     "DELETE Interface wan0 mtu=9216"}));
}

TEST_F(CallbackTest, RolledBackFailedAndUnregisteredChangesReachNobody) {
    ASSERT_TRUE(rec_.watch(db_, "Port", {DB::EVENT_NEW}).isSuccess());
    ASSERT_TRUE(rec_.watch(db_, "Port", {DB::EVENT_NEW}).isSuccess());  // once is enough
    Recorder other;
    ASSERT_TRUE(other.watch(db_, "Interface", {DB::EVENT_UPDATE}).isSuccess());
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    uint64_t port = dbtest::insert(db_, "Port", {{"number", "1"}});
    {
        DB::Transaction tx(DB::TRANSACTION_WRITE, db_);
        ASSERT_TRUE(tx.start().isSuccess());
        ASSERT_TRUE(DB::ObjWrite(tx).update("Interface", eth0, {{"mtu", "1400"}}).isSuccess());
        ASSERT_TRUE(tx.rollback().isSuccess());
        ASSERT_TRUE(tx.start().isSuccess());
        ASSERT_TRUE(DB::ObjWrite(tx).update("Interface", eth0, {{"mtu", "1300"}}).isSuccess());
        EXPECT_TRUE(DB::ObjWrite(tx).insert("Port", {{"number", "1"}}).isErr());
        // Destroyed while open: rolled back.
    }
    ASSERT_TRUE(inWrite(db_, [&](DB::ObjWrite& w) {
                    XCode rc = w.update("Port", port, {{"vlan", "5"}});
                    return rc.isSuccess() ? w.update("Interface", eth0, {{"mtu", "1280"}}) : rc;
                }).isSuccess());
    EXPECT_EQ(rec_.seen, (Lines{"NEW Port 1"}));
    EXPECT_EQ(other.seen, (Lines{"UPDATE Interface eth0 mtu=1280"}));
}

// A registration needs a callback transaction of its own and is staged in
// it: rolled back, it is gone.
TEST_F(CallbackTest, RegistrationsAreCheckedAndTakeEffectAtTheirCommit) {
    DB::Transaction tx(DB::TRANSACTION_CALLBACK, db_), joined(DB::TRANSACTION_READ, db_);
    EXPECT_EQ(DB::REGISTER_CALLBACK(tx, 2, DB::EVENT_NEW, 1, &rec_.manager_).getString(),
              "TRANSACTION NOT STARTED");
    ASSERT_TRUE(tx.start().isSuccess() && joined.start().isSuccess());
    EXPECT_EQ(DB::REGISTER_CALLBACK(joined, 2, DB::EVENT_NEW, 1, &rec_.manager_).getString(),
              "NOT A CALLBACK TRANSACTION");
    EXPECT_EQ(DB::REGISTER_CALLBACK(tx, 2, DB::EVENT_NEW, 0, &rec_.manager_).getString(),
              "UNSUPPORTED CALLBACK TYPE: 0");
    ASSERT_TRUE(DB::REGISTER_CALLBACK(tx, 2, DB::EVENT_NEW, 1, &rec_.manager_).isSuccess());
    ASSERT_TRUE(joined.commit().isSuccess());
    ASSERT_TRUE(tx.rollback().isSuccess());
    dbtest::addInterface(db_, "eth0");
    EXPECT_TRUE(rec_.seen.empty());
}

TEST_F(CallbackTest, QueuedDeliveryWaitsForTheOwner) {
    Recorder queued(VX::ComponentManager::DELIVER_QUEUED);
    ASSERT_TRUE(queued.watch(db_, "Interface").isSuccess());
    ASSERT_TRUE(remove(dbtest::addInterface(db_, "eth0")).isSuccess());
    EXPECT_TRUE(queued.seen.empty());
    EXPECT_EQ(queued.manager_.getNumberOfQueuedEvents(), 2u);
    EXPECT_EQ(queued.manager_.processQueuedEvents(), 2u);
    EXPECT_EQ(queued.seen,
              (Lines{"NEW Interface eth0 mtu=1500", "DELETE Interface eth0 mtu=1500"}));
    EXPECT_EQ(queued.manager_.processQueuedEvents(), 0u);
}

// Managers destroyed before a change, or by their own handler during it, and
// removed handlers hear nothing; the others go on hearing.
TEST_F(CallbackTest, DestroyedManagersAndRemovedHandlersHearNothing) {
    auto gone = std::make_unique<Recorder>();
    ASSERT_TRUE(gone->watch(db_, "Interface").isSuccess());
    gone.reset();
    auto owner = std::make_unique<VX::ComponentManager>("short-lived");
    int after = 0;
    owner->addDatabaseHandler([&](DB::EventType_, DB::ObjRead&) { owner.reset(); });
    owner->addDatabaseHandler([&](DB::EventType_, DB::ObjRead&) { ++after; });
    ASSERT_TRUE(registerFor(db_, "Interface", DB::EVENT_NEW, owner.get()).isSuccess());
    unsigned calls = 0;
    unsigned id = rec_.manager_.addDatabaseHandler([&](DB::EventType_, DB::ObjRead&) { ++calls; });
    ASSERT_TRUE(rec_.watch(db_, "Interface").isSuccess());
    dbtest::addInterface(db_, "eth0");
    EXPECT_FALSE(owner);
    EXPECT_EQ(after, 0);
    EXPECT_TRUE(rec_.manager_.removeDatabaseHandler(id));
    EXPECT_FALSE(rec_.manager_.removeDatabaseHandler(id));
    dbtest::addInterface(db_, "eth1");
    EXPECT_EQ(calls, 1u);
    EXPECT_EQ(rec_.seen.size(), 2u);
}

// A handler waiting for a lock (as a tracker waits for the engine lock) must
// not keep another thread, which holds that lock, from delivering to the
// same manager; a handler may write, and its change follows.
TEST_F(CallbackTest, HandlersMayWaitOrWrite) {
    VXLock engine;
    std::promise<void> waiting;
    std::thread::id other;
    std::atomic<int> delivered{0};
    VX::ComponentManager manager("lock-taker");
    manager.addDatabaseHandler([&](DB::EventType_, DB::ObjRead& e) {
        if (std::this_thread::get_id() == other) waiting.set_value();
        VXAutoLock hold(engine);
        ++delivered;
        if (e.getUID() == 2) dbtest::insert(db_, "Port", {{"number", "2"}});
    });
    ASSERT_TRUE(registerFor(db_, "Interface", DB::EVENT_NEW, &manager).isSuccess());
    ASSERT_TRUE(rec_.watch(db_, "Port").isSuccess());
    ASSERT_TRUE(rec_.watch(db_, "Interface").isSuccess());
    engine.lock();
    std::thread writer([&] {
        other = std::this_thread::get_id();
        dbtest::addInterface(db_, "eth0");
    });
    waiting.get_future().wait();        // the writer's handler now waits for `engine`
    dbtest::addInterface(db_, "eth1");  // delivered here, under `engine`
    EXPECT_EQ(delivered.load(), 1);
    engine.unlock();
    writer.join();
    EXPECT_EQ(delivered.load(), 2);
    // The port written by the first handler was delivered before the
    // recorder, registered later, heard of its interface.
    EXPECT_EQ(rec_.seen[0], "NEW Port 2");
    EXPECT_EQ(rec_.seen[1], "NEW Interface eth1 mtu=1500");
}

}  // namespace
