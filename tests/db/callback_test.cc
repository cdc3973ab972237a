// Change callbacks: what reaches a registered component manager after a
// commit (new, updated, deleted entries, readable, deleted ones with their
// ancestors; a new identifier as a delete and a new entry), what reaches
// nobody (rollbacks, failed operations, tables and event types not
// registered), what triggers add, registrations staged in their transaction,
// queued delivery, destroyed managers, and handlers that write or wait for a
// lock.
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

#include "db_test_support.h"

namespace {

using dbtest::insert;
using dbtest::inWrite;
using dbtest::registerFor;

// Writes each delivered change as a line read while it was being delivered:
// "<event> <table> <key>", then " mtu=<mtu>" for an Interface and
// " parent=<name>" for an entry with a parent Interface.
class Recorder {
public:
    explicit Recorder(
        VX::ComponentManager::Delivery delivery = VX::ComponentManager::DELIVER_DIRECT)
        : manager_("recorder", delivery) {
        manager_.addDatabaseHandler([this](DB::EventType_ type, DB::ObjRead& e) {
            const String table = e.getStructName();
            String key, extra;
            const char* keyField = table == "Interface" ? "name"
                                   : table == "Port"    ? "number"
                                                        : "ip";
            EXPECT_TRUE(e.getAsString(keyField, key).isSuccess());
            if (table == "Interface") {
                EXPECT_TRUE(e.getAsString("mtu", extra).isSuccess());
                extra = " mtu=" + extra;
            }
            DB::ObjRead parent;
            String name;
            if (e.hasParent() && e.getParentObj(parent, 2, 10).isSuccess()) {
                EXPECT_TRUE(parent.get("name", name).isSuccess());
                extra = " parent=" + name;
            }
            const char* event = type == DB::EVENT_NEW      ? "NEW"
                                : type == DB::EVENT_UPDATE ? "UPDATE"
                                                           : "DELETE";
            seen.push_back(String(event) + " " + table + " " + key + extra);
            uids.push_back(e.getUID());
        });
    }

    // Registers for `table` and each of `types`.
    XCode watch(const VXPtr<DB::Database>& db, const char* table,
                std::initializer_list<DB::EventType_> types = {DB::EVENT_NEW, DB::EVENT_DELETE,
                                                               DB::EVENT_UPDATE}) {
        XCode rc;
        for (DB::EventType_ t : types) {
            if (rc.isSuccess()) rc = registerFor(db, table, t, &manager_);
        }
        return rc;
    }

    VX::ComponentManager manager_;
    VXVector<String> seen;
    VXVector<uint64_t> uids;
};

using Lines = VXVector<String>;

class CallbackTest : public ::testing::Test {
protected:
    VXPtr<DB::Database> db_ = dbtest::openExample();
    Recorder rec_;
};

TEST_F(CallbackTest, ChangesArriveReadableAfterTheCommit) {
    ASSERT_TRUE(rec_.watch(db_, "Interface").isSuccess());
    uint64_t eth0 = 0, eth1 = 0;
    {
        DB::Transaction tx(DB::TRANSACTION_WRITE, db_);
        ASSERT_TRUE(tx.start().isSuccess());
        DB::ObjWrite w(tx);
        ASSERT_TRUE(w.insert("Interface", {{"name", "eth0"}}, &eth0).isSuccess());
        ASSERT_TRUE(w.insert("Interface", {{"name", "eth1"}, {"mtu", "1280"}}, &eth1).isSuccess());
        EXPECT_TRUE(rec_.seen.empty());
        ASSERT_TRUE(tx.commit().isSuccess());
    }
    ASSERT_TRUE(inWrite(db_, [&](DB::ObjWrite& w) {
                    return w.update("Interface", eth0, {{"mtu", "9000"}});
                }).isSuccess());
    ASSERT_TRUE(inWrite(db_, [&](DB::ObjWrite& w) {
                    XCode rc = w.update("Interface", eth0, {{"mtu", "9000"}});  // no change
                    return rc.isSuccess() ? w.update("Interface", eth0, {{"name", "wan0"}}) : rc;
                }).isSuccess());
    ASSERT_TRUE(
        inWrite(db_, [&](DB::ObjWrite& w) { return w.remove("Interface", eth0); }).isSuccess());
    // A new identifier is the old entry deleted and a new one, with its UID.
    EXPECT_EQ(rec_.seen, (Lines{"NEW Interface eth0 mtu=1500", "NEW Interface eth1 mtu=1280",
                                "UPDATE Interface eth0 mtu=9000", "DELETE Interface eth0 mtu=9000",
                                "NEW Interface wan0 mtu=9000", "DELETE Interface wan0 mtu=9000"}));
    EXPECT_EQ(rec_.uids, (VXVector<uint64_t>{eth0, eth1, eth0, eth0, eth0, eth0}));
}

// A change carries the entry as stored, also when a trigger of the schema
// changed it further.
TEST_F(CallbackTest, ChangesCarryWhatTriggersMadeOfThem) {
    ASSERT_TRUE(db_->applySchema("CREATE TRIGGER clampMtu AFTER UPDATE OF mtu ON Interface"
                                 " WHEN NEW.mtu > 9216 BEGIN"
                                 " UPDATE Interface SET mtu = 9216 WHERE rowid = NEW.rowid; END;")
                    .isSuccess());
    ASSERT_TRUE(rec_.watch(db_, "Interface", {DB::EVENT_UPDATE}).isSuccess());
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    ASSERT_TRUE(inWrite(db_, [&](DB::ObjWrite& w) {
                    return w.update("Interface", eth0, {{"mtu", "10000"}});
                }).isSuccess());
    EXPECT_EQ(rec_.seen, (Lines{"UPDATE Interface eth0 mtu=9216"}));
}

TEST_F(CallbackTest, DeletedChildrenStillNameTheirDeletedParent) {
    ASSERT_TRUE(rec_.watch(db_, "Address").isSuccess());
    ASSERT_TRUE(rec_.watch(db_, "Interface", {DB::EVENT_DELETE}).isSuccess());
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    dbtest::addAddress(db_, eth0, "1", "10.0.0.1");
    dbtest::addAddress(db_, eth0, "2", "10.0.0.2");
    rec_.seen.clear();
    ASSERT_TRUE(
        inWrite(db_, [&](DB::ObjWrite& w) { return w.remove("Interface", eth0); }).isSuccess());
    EXPECT_EQ(rec_.seen,
              (Lines{"DELETE Address 10.0.0.1 parent=eth0", "DELETE Address 10.0.0.2 parent=eth0",
                     "DELETE Interface eth0 mtu=1500"}));
}

TEST_F(CallbackTest, RolledBackAndFailedChangesReachNobody) {
    ASSERT_TRUE(rec_.watch(db_, "Interface").isSuccess());
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    dbtest::addAddress(db_, eth0, "1", "10.0.0.1");
    rec_.seen.clear();
    {
        DB::Transaction tx(DB::TRANSACTION_WRITE, db_);
        ASSERT_TRUE(tx.start().isSuccess());
        DB::ObjWrite w(tx);
        ASSERT_TRUE(w.insert("Interface", {{"name", "eth1"}}).isSuccess());
        ASSERT_TRUE(w.update("Interface", eth0, {{"mtu", "1400"}}).isSuccess());
        ASSERT_TRUE(tx.rollback().isSuccess());
    }
    {
        DB::Transaction tx(DB::TRANSACTION_WRITE, db_);
        ASSERT_TRUE(tx.start().isSuccess());
        ASSERT_TRUE(DB::ObjWrite(tx).remove("Interface", eth0).isSuccess());
        // Destroyed while open: rolled back.
    }
    XCode rc = inWrite(db_, [&](DB::ObjWrite& w) {
        EXPECT_TRUE(w.insert("Interface", {{"name", "eth0"}}).isErr());
        return XCode();
    });
    ASSERT_TRUE(rc.isSuccess());
    EXPECT_TRUE(rec_.seen.empty());
    EXPECT_EQ(dbtest::uids(db_, "Address").size(), 1u);  // the rolled-back delete left it
}

TEST_F(CallbackTest, RegistrationsArePerTableAndEventType) {
    ASSERT_TRUE(rec_.watch(db_, "Port", {DB::EVENT_NEW}).isSuccess());
    ASSERT_TRUE(rec_.watch(db_, "Port", {DB::EVENT_NEW}).isSuccess());  // once is enough
    Recorder other;
    ASSERT_TRUE(other.watch(db_, "Interface", {DB::EVENT_UPDATE}).isSuccess());
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    uint64_t port = insert(db_, "Port", {{"number", "1"}});
    ASSERT_TRUE(inWrite(db_, [&](DB::ObjWrite& w) {
                    XCode rc = w.update("Port", port, {{"vlan", "5"}});
                    return rc.isSuccess() ? w.update("Interface", eth0, {{"mtu", "1280"}}) : rc;
                }).isSuccess());
    EXPECT_EQ(rec_.seen, (Lines{"NEW Port 1"}));
    EXPECT_EQ(other.seen, (Lines{"UPDATE Interface eth0 mtu=1280"}));
}

TEST_F(CallbackTest, RegistrationsTakeEffectAtTheirCommit) {
    {
        DB::Transaction tx(DB::TRANSACTION_CALLBACK, db_);
        ASSERT_TRUE(tx.start().isSuccess());
        ASSERT_TRUE(DB::REGISTER_CALLBACK(tx, 2, DB::EVENT_NEW, 1, &rec_.manager_).isSuccess());
        ASSERT_TRUE(tx.rollback().isSuccess());
    }
    dbtest::addInterface(db_, "eth0");
    EXPECT_TRUE(rec_.seen.empty());

    DB::Transaction other(DB::TRANSACTION_READ, db_);
    DB::Transaction tx(DB::TRANSACTION_CALLBACK, db_);
    struct Case {
        XCode rc;
        uint32_t code;
        const char* text;
    };
    Case before{DB::REGISTER_CALLBACK(tx, 2, DB::EVENT_NEW, 1, &rec_.manager_), DB::E_TRANSACTION,
                "TRANSACTION NOT STARTED"};
    ASSERT_TRUE(tx.start().isSuccess());
    ASSERT_TRUE(other.start().isSuccess());  // joins
    Case cases[] = {
        before,
        {DB::REGISTER_CALLBACK(other, 2, DB::EVENT_NEW, 1, &rec_.manager_), DB::E_TRANSACTION,
         "NOT A CALLBACK TRANSACTION"},
        {DB::REGISTER_CALLBACK(tx, 9, DB::EVENT_NEW, 1, &rec_.manager_), DB::E_SCHEMA,
         "INVALID DATABASE TABLE NUMBER: 9"},
        {DB::REGISTER_CALLBACK(tx, 2, static_cast<DB::EventType_>(3), 1, &rec_.manager_),
         DB::E_VALUE, "INVALID DATABASE EVENT TYPE: 3"},
        {DB::REGISTER_CALLBACK(tx, 2, DB::EVENT_NEW, 0, &rec_.manager_), DB::E_VALUE,
         "UNSUPPORTED CALLBACK TYPE: 0"},
        {DB::REGISTER_CALLBACK(tx, 2, DB::EVENT_NEW, 1, nullptr), DB::E_VALUE,
         "NO COMPONENT MANAGER"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.rc.getValue(), c.code) << c.text;
        EXPECT_EQ(c.rc.getString(), c.text);
    }
}

TEST_F(CallbackTest, QueuedDeliveryWaitsForTheOwner) {
    Recorder queued(VX::ComponentManager::DELIVER_QUEUED);
    ASSERT_TRUE(queued.watch(db_, "Interface").isSuccess());
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    ASSERT_TRUE(
        inWrite(db_, [&](DB::ObjWrite& w) { return w.remove("Interface", eth0); }).isSuccess());
    EXPECT_TRUE(queued.seen.empty());
    EXPECT_EQ(queued.manager_.getNumberOfQueuedEvents(), 2u);
    EXPECT_EQ(queued.manager_.processQueuedEvents(), 2u);
    EXPECT_EQ(queued.seen,
              (Lines{"NEW Interface eth0 mtu=1500", "DELETE Interface eth0 mtu=1500"}));
    EXPECT_EQ(queued.manager_.processQueuedEvents(), 0u);
}

// Managers destroyed before a change, or by a handler of their own during
// the delivery, and removed handlers hear nothing; the others go on hearing.
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
    EXPECT_EQ(after, 0);  // nothing of a destroyed manager runs
    EXPECT_EQ(calls, 1u);
    EXPECT_TRUE(rec_.manager_.removeDatabaseHandler(id));
    EXPECT_FALSE(rec_.manager_.removeDatabaseHandler(id));
    dbtest::addInterface(db_, "eth1");
    EXPECT_EQ(calls, 1u);
    EXPECT_EQ(rec_.seen.size(), 2u);
}

// A handler that waits for a lock (as a tracker waits for the engine lock)
// must not keep another thread, which holds that lock, from delivering to the
// same manager.
TEST_F(CallbackTest, AWaitingHandlerBlocksNoOtherDelivery) {
    VXLock engine;
    std::promise<void> waiting;
    std::thread::id other;
    std::atomic<int> delivered{0};
    VX::ComponentManager manager("lock-taker");
    manager.addDatabaseHandler([&](DB::EventType_, DB::ObjRead&) {
        if (std::this_thread::get_id() == other) waiting.set_value();
        VXAutoLock hold(engine);
        ++delivered;
    });
    ASSERT_TRUE(registerFor(db_, "Interface", DB::EVENT_NEW, &manager).isSuccess());

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
}

TEST_F(CallbackTest, HandlersMayWriteAndTheirChangesFollow) {
    // A component that gives every new interface a port of its own.
    VX::ComponentManager builder("builder");
    builder.addDatabaseHandler([this](DB::EventType_ type, DB::ObjRead& e) {
        if (type != DB::EVENT_NEW) return;
        String number = String::stringOf(static_cast<unsigned long long>(e.getUID()));
        EXPECT_TRUE(insert(db_, "Port", {{"number", number}}) != 0);
    });
    ASSERT_TRUE(registerFor(db_, "Interface", DB::EVENT_NEW, &builder).isSuccess());
    ASSERT_TRUE(rec_.watch(db_, "Port").isSuccess());
    ASSERT_TRUE(rec_.watch(db_, "Interface").isSuccess());

    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    // The builder ran first (registered first) and its port was delivered
    // before the recorder heard of the interface.
    EXPECT_EQ(rec_.seen, (Lines{"NEW Port " + dbtest::text(eth0), "NEW Interface eth0 mtu=1500"}));
}

}  // namespace
