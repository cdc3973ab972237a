// Faults of a database file while it is in use: opened read-only, locked by
// another connection (one writing, or one reading while a commit waits for
// it), deleted while open. Each refused write names the file and SQLite's
// reason; what was committed before stays, what was refused reaches no
// component, and once the fault is gone the same write commits and is
// delivered exactly once.
#include <gtest/gtest.h>

#include <memory>

#include "db/db_test_support.h"
#include "host/component/component_manager.h"

namespace {

using dbtest::TempFile;

// A fault: the mode the file is opened in, and another connection holding a
// transaction of type `hold` (NONE: no other connection) until it ends,
// which lifts the fault; or the file deleted while open.
constexpr int NONE = -1;
const struct Fault {
    const char* name;
    DB::Database::OpenMode mode;
    int hold;
    bool deleted;
    const char *text, *reason;
} kFaults[] = {
    {"read-only", DB::Database::OPEN_READ_ONLY, NONE, false, "DATABASE IS READ-ONLY",
     "attempt to write a readonly database"},
    {"another connection writes", DB::Database::OPEN_READ_WRITE, DB::TRANSACTION_WRITE, false,
     "DATABASE IS BUSY", "database is locked"},
    {"another connection reads during the commit", DB::Database::OPEN_READ_WRITE,
     DB::TRANSACTION_READ, false, "DATABASE IS BUSY", "database is locked"},
    {"deleted while open", DB::Database::OPEN_READ_WRITE, NONE, true,
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

        VXPtr<DB::Database> other;
        std::unique_ptr<DB::Transaction> held;
        if (fault.hold != NONE) {
            // A read transaction reads an entry, so that it holds the shared lock.
            ASSERT_TRUE(DB::Database::OPEN(other, file.path()).isSuccess());
            held = std::make_unique<DB::Transaction>(fault.hold, other);
            ASSERT_TRUE(held->start().isSuccess());
            DB::ObjRead e(*held);
            ASSERT_TRUE(e.setStructNo(held->getBase().getStructNo("Interface")).isSuccess());
            ASSERT_TRUE(e.readFirst().isSuccess());
        }
        ASSERT_TRUE(!fault.deleted || std::remove(file.path().c_str()) == 0);
        XCode rc = raise("9000");
        EXPECT_EQ(rc.getValue(), DB::E_DATABASE);
        EXPECT_EQ(rc.getString(),
                  String(fault.text) + ": " + file.path() + " (" + fault.reason + ")");
        EXPECT_TRUE(delivered.empty());
        EXPECT_EQ(dbtest::read(db, "Interface", "mtu"), (VXVector<String>{"1500"}));
        if (!held) continue;

        held.reset();
        ASSERT_TRUE(raise("9000").isSuccess());
        EXPECT_EQ(delivered, (VXVector<String>{"9000"}));
        EXPECT_EQ(dbtest::read(other, "Interface", "mtu"), (VXVector<String>{"9000"}));
    }
}

}  // namespace
