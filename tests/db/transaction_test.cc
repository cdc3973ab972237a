// Transactions: their misuse, nesting by joining, ending out of order, the
// default database, reads that see the enclosing write, and writers on
// several threads.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "db_test_support.h"

namespace {

using dbtest::inWrite;

class TransactionTest : public ::testing::Test {
protected:
    VXPtr<DB::Database> db_ = dbtest::openExample();
};

TEST_F(TransactionTest, MisuseIsReported) {
    DB::Transaction tx(DB::TRANSACTION_READ, db_);
    EXPECT_EQ(tx.commit().getString(), "TRANSACTION NOT STARTED");
    EXPECT_EQ(tx.rollback().getString(), "TRANSACTION NOT STARTED");
    ASSERT_TRUE(tx.start().isSuccess());
    EXPECT_EQ(tx.start().getString(), "TRANSACTION ALREADY STARTED");

    DB::Transaction write(DB::TRANSACTION_WRITE, db_);
    XCode rc = write.start();
    EXPECT_EQ(rc.getValue(), DB::E_TRANSACTION);
    EXPECT_EQ(rc.getString(), "CANNOT WRITE INSIDE A READ TRANSACTION: :memory:");
    EXPECT_EQ(db_->applySchema("CREATE TABLE T (a U8)").getString(),
              "TRANSACTION ALREADY ACTIVE: :memory:");
    ASSERT_TRUE(tx.commit().isSuccess());

    ASSERT_TRUE(write.start().isSuccess());
    DB::Transaction second(DB::TRANSACTION_WRITE, db_);
    EXPECT_EQ(second.start().getString(), "TRANSACTION ALREADY ACTIVE: :memory:");
    ASSERT_TRUE(write.commit().isSuccess());

    EXPECT_EQ(DB::Transaction(7, db_).start().getString(), "INVALID TRANSACTION TYPE: 7");
}

TEST_F(TransactionTest, DefaultDatabase) {
    DB::Database::SET_DEFAULT(nullptr);
    DB::Transaction none(DB::TRANSACTION_READ);
    EXPECT_EQ(none.start().getString(), "NO DATABASE");
    EXPECT_EQ(none.getBase().getStructNo("Interface"), DB::NO_STRUCT);

    DB::Database::SET_DEFAULT(db_);
    EXPECT_EQ(DB::Database::GET_DEFAULT(), db_);
    DB::Transaction tx(DB::TRANSACTION_READ);
    ASSERT_TRUE(tx.start().isSuccess());
    EXPECT_EQ(tx.getDatabase(), db_);
    EXPECT_EQ(tx.getBase().getStructNo("Interface"), 2);
    ASSERT_TRUE(tx.commit().isSuccess());
    DB::Database::SET_DEFAULT(nullptr);
}

TEST_F(TransactionTest, JoinedReadSeesTheEnclosingWrite) {
    DB::Transaction write(DB::TRANSACTION_WRITE, db_);
    ASSERT_TRUE(write.start().isSuccess());
    uint64_t uid = 0;
    ASSERT_TRUE(DB::ObjWrite(write).insert("Interface", {{"name", "eth0"}}, &uid).isSuccess());
    {
        DB::Transaction read(DB::TRANSACTION_READ, db_);
        ASSERT_TRUE(read.start().isSuccess());
        DB::ObjRead e(read);
        ASSERT_TRUE(e.setStructNo(2).isSuccess());
        ASSERT_TRUE(e.readFirst().isSuccess());
        EXPECT_EQ(e.getUID(), uid);
        ASSERT_TRUE(read.commit().isSuccess());  // ends only the joined one
    }
    // The write goes on after the joined read ended.
    ASSERT_TRUE(DB::ObjWrite(write).insert("Interface", {{"name", "eth1"}}).isSuccess());
    ASSERT_TRUE(write.rollback().isSuccess());
    EXPECT_TRUE(dbtest::uids(db_, "Interface").empty());
}

TEST_F(TransactionTest, JoinedTransactionEndingAfterItsOuterOneDisturbsNothing) {
    auto outer = std::make_unique<DB::Transaction>(DB::TRANSACTION_WRITE, db_);
    ASSERT_TRUE(outer->start().isSuccess());
    DB::Transaction joined(DB::TRANSACTION_READ, db_);
    ASSERT_TRUE(joined.start().isSuccess());
    ASSERT_TRUE(outer->commit().isSuccess());
    outer.reset();

    DB::Transaction next(DB::TRANSACTION_WRITE, db_);
    ASSERT_TRUE(next.start().isSuccess());  // a fresh outermost transaction
    ASSERT_TRUE(joined.commit().isSuccess());
    ASSERT_TRUE(DB::ObjWrite(next).insert("Interface", {{"name", "eth0"}}).isSuccess());
    ASSERT_TRUE(next.commit().isSuccess());

    // The lock is free for other threads again.
    std::thread other([this] { EXPECT_NE(dbtest::addInterface(db_, "eth1"), 0u); });
    other.join();
}

TEST_F(TransactionTest, WritersOnSeveralThreads) {
    constexpr int kThreads = 4;
    constexpr int kEach = 25;
    std::atomic<int> delivered{0};
    VX::ComponentManager manager("counter");
    manager.addDatabaseHandler([&](DB::EventType_, DB::ObjRead& e) {
        String name;
        EXPECT_TRUE(e.get("name", name).isSuccess());
        ++delivered;
    });
    ASSERT_TRUE(dbtest::registerFor(db_, "Interface", DB::EVENT_NEW, &manager).isSuccess());

    VXVector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < kEach; ++i) {
                String name = String::Formatted("if%d.%d", t, i);
                XCode rc = inWrite(db_, [&](DB::ObjWrite& w) {
                    return w.insert("Interface", {{"name", name}});
                });
                EXPECT_TRUE(rc.isSuccess()) << rc.toString().c_str();
            }
        });
    }
    for (auto& t : threads) t.join();
    EXPECT_EQ(delivered.load(), kThreads * kEach);
    EXPECT_EQ(dbtest::uids(db_, "Interface").size(), size_t{kThreads * kEach});
}

}  // namespace
