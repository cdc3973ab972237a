// Writing entries: every refused write names its cause and changes nothing,
// while the transaction goes on; updates and deletes by key; deleting an
// entry deletes its children.
#include <gtest/gtest.h>

#include "db_test_support.h"

namespace {

using dbtest::field;
using dbtest::insert;
using dbtest::inWrite;
using dbtest::uids;

class WriteTest : public ::testing::Test {
protected:
    VXPtr<DB::Database> db_ = dbtest::openExample();
};

TEST_F(WriteTest, RefusedWritesChangeNothingAndTheTransactionGoesOn) {
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    uint64_t addr = dbtest::addAddress(db_, eth0, "1", "10.0.0.1");
    const std::string under = "id=2,ip=::2,prefixLength=64,parent.parentStructNo=";
    enum Op { INSERT, UPDATE, REMOVE };
    const struct {
        Op op;
        const char* table;
        uint64_t uid;
        std::string values;  // as dbtest::values reads them
        uint32_t code;
        const char* text;
    } cases[] = {
        {INSERT, "Vlan", 0, "", DB::E_SCHEMA, "NO SUCH DATABASE TABLE: Vlan"},
        {INSERT, "Interface", 0, "name=x,colour=red", DB::E_SCHEMA,
         "NO SUCH DATABASE FIELD: Interface.colour"},
        {INSERT, "Interface", 0, "name=x,mtu=70000", DB::E_VALUE,
         "INVALID VALUE FOR DATABASE FIELD: Interface.mtu"},
        {INSERT, "Interface", 0, "name=x,state.admin=yes", DB::E_VALUE,
         "INVALID VALUE FOR DATABASE FIELD: Interface.state.admin"},
        {INSERT, "Interface", 0, "name=a-name-of-17-char", DB::E_VALUE,
         "VALUE TOO LONG FOR DATABASE FIELD: Interface.name"},
        {INSERT, "Interface", 0, "name=x,state=true", DB::E_VALUE,
         "CANNOT WRITE STRUCTURE FIELD: Interface.state"},
        {INSERT, "Interface", 0, "name=x,name=y", DB::E_VALUE,
         "DATABASE FIELD GIVEN TWICE: Interface.name"},
        {INSERT, "Interface", 0, "name=eth0", DB::E_CONSTRAINT, "ENTRY ALREADY EXISTS: Interface"},
        {INSERT, "Interface", 0, "", DB::E_CONSTRAINT,
         "MISSING VALUE FOR DATABASE FIELD: Interface.name"},
        {INSERT, "Address", 0, under + "2,parent.parentId=99", DB::E_CONSTRAINT,
         "PARENT DATABASE ENTRY DOES NOT EXIST: Address"},
        {INSERT, "Address", 0, under + "99,parent.parentId=1", DB::E_CONSTRAINT,
         "PARENT DATABASE ENTRY DOES NOT EXIST: Address"},
        {UPDATE, "Address", addr, "parent.parentStructNo=4,parent.parentId=" + std::to_string(addr),
         DB::E_CONSTRAINT, "DATABASE ENTRY WOULD BE ITS OWN ANCESTOR: Address"},
        {UPDATE, "Interface", 99, "mtu=1", DB::E_NOT_FOUND, "DATABASE ENTRY NOT FOUND: Interface"},
        {REMOVE, "Interface", 99, "", DB::E_NOT_FOUND, "DATABASE ENTRY NOT FOUND: Interface"},
    };
    DB::Transaction tx(DB::TRANSACTION_WRITE, db_);
    ASSERT_TRUE(tx.start().isSuccess());
    DB::ObjWrite w(tx);
    for (const auto& c : cases) {
        XCode rc = c.op == INSERT   ? w.insert(c.table, dbtest::values(c.values))
                   : c.op == UPDATE ? w.update(c.table, c.uid, dbtest::values(c.values))
                                    : w.remove(c.table, c.uid);
        EXPECT_EQ(rc.getValue(), c.code) << c.text;
        EXPECT_EQ(rc.getString(), c.text);
    }
    ASSERT_TRUE(w.insert("Interface", {{"name", "eth1"}}).isSuccess());
    ASSERT_TRUE(tx.commit().isSuccess());
    EXPECT_EQ(uids(db_, "Interface").size(), 2u);
    EXPECT_EQ(uids(db_, "Address").size(), 1u);
    EXPECT_EQ(field(db_, "Address", addr, "parent.parentStructNo"), "2");
}

TEST_F(WriteTest, WritesNeedAStartedWriteTransaction) {
    DB::Transaction read(DB::TRANSACTION_READ, db_);
    DB::ObjWrite w(read);
    EXPECT_EQ(w.insert("Interface", {{"name", "x"}}).getString(), "TRANSACTION NOT STARTED");
    ASSERT_TRUE(read.start().isSuccess());
    XCode rc = w.insert("Interface", {{"name", "x"}});
    EXPECT_EQ(rc.getValue(), DB::E_TRANSACTION);
    EXPECT_EQ(rc.getString(), "NOT A WRITE TRANSACTION");
}

TEST_F(WriteTest, UpdateAndRemoveByKey) {
    uint64_t port = insert(db_, "Port", {{"number", "3"}, {"vlan", "10"}});
    insert(db_, "Port", {{"number", "4"}});
    auto key = [](DB::Transaction& tx, const char* number) {
        DB::_Key k(3, 0, tx.getDatabaseDescription());
        EXPECT_TRUE(k.set("objType", 2u).isSuccess());
        EXPECT_TRUE(k.set("objStatus", 10u).isSuccess());
        EXPECT_TRUE(k.set("number", number).isSuccess());
        return k;
    };
    ASSERT_TRUE(inWrite(db_, [&](DB::ObjWrite& w) {
                    DB::Transaction probe(DB::TRANSACTION_READ, db_);
                    return w.update(key(probe, "3"), {{"vlan", "20"}, {"priority", "-3"}});
                }).isSuccess());
    EXPECT_EQ(field(db_, "Port", port, "vlan"), "20");
    EXPECT_EQ(field(db_, "Port", port, "priority"), "-3");
    XCode rc = inWrite(db_, [&](DB::ObjWrite& w) {
        DB::Transaction probe(DB::TRANSACTION_READ, db_);
        return w.remove(key(probe, "5"));
    });
    EXPECT_EQ(rc.getString(), "DATABASE ENTRY NOT FOUND: Port");
    ASSERT_TRUE(inWrite(db_, [&](DB::ObjWrite& w) {
                    DB::Transaction probe(DB::TRANSACTION_READ, db_);
                    return w.remove(key(probe, "3"));
                }).isSuccess());
    EXPECT_EQ(uids(db_, "Port").size(), 1u);
}

TEST_F(WriteTest, RemovingAnEntryRemovesItsChildren) {
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    uint64_t eth1 = dbtest::addInterface(db_, "eth1");
    dbtest::addAddress(db_, eth0, "1", "10.0.0.1");
    dbtest::addAddress(db_, eth0, "2", "10.0.0.2");
    uint64_t kept = dbtest::addAddress(db_, eth1, "1", "10.0.1.1");
    ASSERT_TRUE(
        inWrite(db_, [&](DB::ObjWrite& w) { return w.remove("Interface", eth0); }).isSuccess());
    EXPECT_EQ(uids(db_, "Interface"), (VXVector<uint64_t>{eth1}));
    EXPECT_EQ(uids(db_, "Address"), (VXVector<uint64_t>{kept}));
    EXPECT_EQ(field(db_, "Address", kept, "ip"), "10.0.1.1");
}

}  // namespace
