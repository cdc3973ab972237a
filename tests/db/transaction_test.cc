// Transactions: their misuse (and that of writes outside a write
// transaction), the default database, nesting by joining, ending out of
// order (writers on several threads are the soak test's).
#include <gtest/gtest.h>

#include <thread>

#include "db_test_support.h"

namespace {

class TransactionTest : public ::testing::Test {
protected:
    VXPtr<DB::Database> db_ = dbtest::openExample();
};

TEST_F(TransactionTest, MisuseIsReported) {
    DB::Transaction read(DB::TRANSACTION_READ, db_), write(DB::TRANSACTION_WRITE, db_);
    DB::Transaction second(DB::TRANSACTION_WRITE, db_);
    DB::ObjWrite inRead(read);
    const DB::ObjWrite::Values x = {{"name", "x"}};
    const struct {
        XCode rc;
        const char* text;
    } cases[] = {
        {read.commit(), "TRANSACTION NOT STARTED"},
        {inRead.insert("Interface", x), "TRANSACTION NOT STARTED"},
        {(read.start(), read.start()), "TRANSACTION ALREADY STARTED"},
        {inRead.insert("Interface", x), "NOT A WRITE TRANSACTION"},
        {write.start(), "CANNOT WRITE INSIDE A READ TRANSACTION: :memory:"},
        {db_->applySchema("CREATE TABLE T (a U8)"), "TRANSACTION ALREADY ACTIVE: :memory:"},
        {(read.commit(), write.start(), second.start()), "TRANSACTION ALREADY ACTIVE: :memory:"},
        {DB::Transaction(7, db_).start(), "INVALID TRANSACTION TYPE: 7"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.rc.getValue(), DB::E_TRANSACTION) << c.text;
        EXPECT_EQ(c.rc.getString(), c.text);
    }
    EXPECT_TRUE(write.commit().isSuccess());

    // Without a database named, the default one (the tool's transcripts work
    // on it), if any.
    DB::Database::SET_DEFAULT(nullptr);
    EXPECT_EQ(DB::Transaction(DB::TRANSACTION_READ).start().getString(), "NO DATABASE");
}

// A joined read sees the enclosing write and ends only itself; one that
// outlives its outer transaction disturbs neither the next one nor other
// threads.
TEST_F(TransactionTest, JoinedTransactions) {
    auto write = std::make_unique<DB::Transaction>(DB::TRANSACTION_WRITE, db_);
    ASSERT_TRUE(write->start().isSuccess());
    ASSERT_TRUE(DB::ObjWrite(*write).insert("Interface", {{"name", "eth0"}}).isSuccess());
    {
        DB::Transaction read(DB::TRANSACTION_READ, db_);
        ASSERT_TRUE(read.start().isSuccess());
        EXPECT_EQ(dbtest::read(db_, "Interface", "name"), (VXVector<String>{"eth0"}));
        ASSERT_TRUE(read.commit().isSuccess());
    }
    ASSERT_TRUE(DB::ObjWrite(*write).insert("Interface", {{"name", "eth1"}}).isSuccess());
    ASSERT_TRUE(write->rollback().isSuccess());
    EXPECT_TRUE(dbtest::read(db_, "Interface").empty());

    ASSERT_TRUE(write->start().isSuccess());
    DB::Transaction joined(DB::TRANSACTION_READ, db_);
    ASSERT_TRUE(joined.start().isSuccess());
    ASSERT_TRUE(write->commit().isSuccess());
    write.reset();
    DB::Transaction next(DB::TRANSACTION_WRITE, db_);
    ASSERT_TRUE(next.start().isSuccess());  // a fresh outermost transaction
    ASSERT_TRUE(joined.commit().isSuccess());
    ASSERT_TRUE(DB::ObjWrite(next).insert("Interface", {{"name", "eth0"}}).isSuccess());
    ASSERT_TRUE(next.commit().isSuccess());
    std::thread other([this] { EXPECT_NE(dbtest::addInterface(db_, "eth1"), 0u); });
    other.join();
}

}  // namespace
