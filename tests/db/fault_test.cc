// Faults of a database file while it is in use: opened read-only, locked by
// another connection (one writing, or one reading while a commit waits for
// it), deleted while open. Each refused write names the file and SQLite's
// reason; what was committed before stays, what was refused reaches no
// component, and once the fault is gone the same write commits and is
// delivered exactly once.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "db/db_test_support.h"
#include "host/component/component_manager.h"

namespace {

using dbtest::TempFile;

// What a fault leaves open until it is lifted: the other connection and its
// transaction.
struct Other {
    VXPtr<DB::Database> db;
    std::unique_ptr<DB::Transaction> tx;
};

struct Fault {
    const char* name;
    DB::Database::OpenMode mode;
    // Makes the fault on the file `path` that `db` has open.
    std::function<void(const String& path, Other& other)> make;
    bool liftable;  // ending the other connection's transaction lifts it
    const char* text;
    const char* reason;
};

// Another connection to the file holding a transaction of `type`; a read
// transaction reads an entry, so that it holds the file's shared lock.
void hold(const String& path, Other& other, int type) {
    ASSERT_TRUE(DB::Database::OPEN(other.db, path).isSuccess());
    other.tx = std::make_unique<DB::Transaction>(type, other.db);
    ASSERT_TRUE(other.tx->start().isSuccess());
    if (type == DB::TRANSACTION_READ) {
        DB::ObjRead e(*other.tx);
        ASSERT_TRUE(e.setStructNo(other.tx->getBase().getStructNo("Interface")).isSuccess());
        ASSERT_TRUE(e.readFirst().isSuccess());
    }
}

const Fault kFaults[] = {
    {"read-only", DB::Database::OPEN_READ_ONLY, [](const String&, Other&) {}, false,
     "DATABASE IS READ-ONLY", "attempt to write a readonly database"},
    {"another connection writes", DB::Database::OPEN_READ_WRITE,
     [](const String& path, Other& other) { hold(path, other, DB::TRANSACTION_WRITE); }, true,
     "DATABASE IS BUSY", "database is locked"},
    {"another connection reads during the commit", DB::Database::OPEN_READ_WRITE,
     [](const String& path, Other& other) { hold(path, other, DB::TRANSACTION_READ); }, true,
     "DATABASE IS BUSY", "database is locked"},
    {"deleted while open", DB::Database::OPEN_READ_WRITE,
     [](const String& path, Other&) { ASSERT_EQ(std::remove(path.c_str()), 0); }, false,
     "DATABASE FILE MOVED OR DELETED", "attempt to write a readonly database"},
};

TEST(FaultTest, RefusedWritesNameTheFileLoseNothingAndAreDeliveredOnceWhenLifted) {
    for (const Fault& fault : kFaults) {
        SCOPED_TRACE(fault.name);
        TempFile file("fault");
        uint64_t eth0 = 0;
        {
            VXPtr<DB::Database> setup;
            ASSERT_TRUE(
                DB::Database::OPEN(setup, file.path(), DB::Database::OPEN_CREATE).isSuccess());
            ASSERT_TRUE(setup->applySchemaFile(dbtest::schemaPath()).isSuccess());
            eth0 = dbtest::addInterface(setup, "eth0");
        }
        VXPtr<DB::Database> db;
        ASSERT_TRUE(DB::Database::OPEN(db, file.path(), fault.mode).isSuccess());
        db->setBusyTimeout(0);
        VX::ComponentManager manager("fault-test");
        VXVector<String> delivered;
        manager.addDatabaseHandler([&](DB::EventType_, DB::ObjRead& e) {
            e.getAsString("mtu", delivered.emplace_back());
        });
        ASSERT_TRUE(dbtest::registerFor(db, "Interface", DB::EVENT_UPDATE, &manager).isSuccess());
        auto raise = [&](const char* mtu) {
            return dbtest::inWrite(db, [&](DB::ObjWrite& w) {
                return w.update("Interface", eth0, {{"mtu", mtu}});
            });
        };

        Other other;
        fault.make(file.path(), other);
        XCode rc = raise("9000");
        EXPECT_EQ(rc.getValue(), DB::E_DATABASE);
        EXPECT_EQ(rc.getString(),
                  String(fault.text) + ": " + file.path() + " (" + fault.reason + ")");
        EXPECT_TRUE(delivered.empty());
        EXPECT_EQ(dbtest::read(db, "Interface", "mtu"), (VXVector<String>{"1500"}));
        if (!fault.liftable) continue;

        other.tx.reset();
        ASSERT_TRUE(raise("9000").isSuccess());
        EXPECT_EQ(delivered, (VXVector<String>{"9000"}));
        EXPECT_EQ(dbtest::read(other.db, "Interface", "mtu"), (VXVector<String>{"9000"}));
    }
}

}  // namespace
