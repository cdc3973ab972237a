// Writing entries: every refused write names its cause and changes nothing,
// while the transaction goes on; updates and deletes by key; deleting an
// entry deletes its children.
#include <gtest/gtest.h>

#include <functional>

#include "db_test_support.h"

namespace {

using dbtest::insert;
using dbtest::inWrite;
using dbtest::text;

class WriteTest : public ::testing::Test {
protected:
    // The number of entries of a table.
    int count(const char* table) {
        DB::Transaction tx(DB::TRANSACTION_READ, db_);
        EXPECT_TRUE(tx.start().isSuccess());
        DB::ObjRead e(tx);
        EXPECT_TRUE(e.setStructNo(tx.getBase().getStructNo(table)).isSuccess());
        int n = 0;
        for (XCode rc = e.readFirst(); rc.isSuccess(); rc = e.readNext()) ++n;
        return n;
    }

    String field(const char* table, uint64_t uid, const char* name) {
        DB::Transaction tx(DB::TRANSACTION_READ, db_);
        EXPECT_TRUE(tx.start().isSuccess());
        DB::ObjRead e(tx);
        EXPECT_TRUE(e.setStructNo(tx.getBase().getStructNo(table)).isSuccess());
        String out;
        for (XCode rc = e.readFirst(); rc.isSuccess(); rc = e.readNext()) {
            if (e.getUID() == uid) {
                EXPECT_TRUE(e.getAsString(name, out).isSuccess());
            }
        }
        return out;
    }

    VXPtr<DB::Database> db_ = dbtest::openExample();
};

TEST_F(WriteTest, RefusedWritesChangeNothingAndTheTransactionGoesOn) {
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    uint64_t addr = dbtest::addAddress(db_, eth0, "1", "10.0.0.1");
    String parentId = text(eth0);
    using V = DB::ObjWrite::Values;
    struct Case {
        std::function<XCode(DB::ObjWrite&)> op;
        uint32_t code;
        const char* text;
    } cases[] = {
        {[](auto& w) { return w.insert("Vlan", V{}); }, DB::E_SCHEMA,
         "NO SUCH DATABASE TABLE: Vlan"},
        {[](auto& w) {
             return w.insert("Interface", V{{"name", "x"}, {"colour", "red"}});
         },
         DB::E_SCHEMA, "NO SUCH DATABASE FIELD: Interface.colour"},
        {[](auto& w) {
             return w.insert("Interface", V{{"name", "x"}, {"mtu", "70000"}});
         },
         DB::E_VALUE, "INVALID VALUE FOR DATABASE FIELD: Interface.mtu"},
        {[](auto& w) {
             return w.insert("Interface", V{{"name", "x"}, {"state.admin", "yes"}});
         },
         DB::E_VALUE, "INVALID VALUE FOR DATABASE FIELD: Interface.state.admin"},
        {[](auto& w) {
             return w.insert("Interface", V{{"name", "a-name-of-17-char"}});
         },
         DB::E_VALUE, "VALUE TOO LONG FOR DATABASE FIELD: Interface.name"},
        {[](auto& w) {
             return w.insert("Interface", V{{"name", "x"}, {"state", "true"}});
         },
         DB::E_VALUE, "CANNOT WRITE STRUCTURE FIELD: Interface.state"},
        {[](auto& w) {
             return w.insert("Interface", V{{"name", "x"}, {"name", "y"}});
         },
         DB::E_VALUE, "DATABASE FIELD GIVEN TWICE: Interface.name"},
        {[](auto& w) {
             return w.insert("Interface", V{{"name", "eth0"}});
         },
         DB::E_CONSTRAINT, "ENTRY ALREADY EXISTS: Interface"},
        {[](auto& w) { return w.insert("Interface", V{}); }, DB::E_CONSTRAINT,
         "MISSING VALUE FOR DATABASE FIELD: Interface.name"},
        {[](auto& w) {
             return w.insert("Address", V{{"parent.parentStructNo", "2"},
                                          {"parent.parentId", "99"},
                                          {"id", "2"},
                                          {"ip", "::2"},
                                          {"prefixLength", "64"}});
         },
         DB::E_CONSTRAINT, "PARENT DATABASE ENTRY DOES NOT EXIST: Address"},
        {[](auto& w) {
             return w.insert("Address", V{{"parent.parentStructNo", "99"},
                                          {"parent.parentId", "1"},
                                          {"id", "2"},
                                          {"ip", "::2"},
                                          {"prefixLength", "64"}});
         },
         DB::E_CONSTRAINT, "PARENT DATABASE ENTRY DOES NOT EXIST: Address"},
        {[&](auto& w) {
             return w.update("Address", addr,
                             V{{"parent.parentStructNo", "4"}, {"parent.parentId", text(addr)}});
         },
         DB::E_CONSTRAINT, "DATABASE ENTRY WOULD BE ITS OWN ANCESTOR: Address"},
        {[](auto& w) {
             return w.update("Interface", 99, V{{"mtu", "1"}});
         },
         DB::E_NOT_FOUND, "DATABASE ENTRY NOT FOUND: Interface"},
        {[](auto& w) { return w.remove("Interface", 99); }, DB::E_NOT_FOUND,
         "DATABASE ENTRY NOT FOUND: Interface"},
    };
    DB::Transaction tx(DB::TRANSACTION_WRITE, db_);
    ASSERT_TRUE(tx.start().isSuccess());
    DB::ObjWrite w(tx);
    for (const Case& c : cases) {
        XCode rc = c.op(w);
        EXPECT_EQ(rc.getValue(), c.code) << c.text;
        EXPECT_EQ(rc.getString(), c.text);
    }
    ASSERT_TRUE(w.insert("Interface", {{"name", "eth1"}}).isSuccess());
    ASSERT_TRUE(tx.commit().isSuccess());
    EXPECT_EQ(count("Interface"), 2);
    EXPECT_EQ(count("Address"), 1);
    EXPECT_EQ(field("Address", addr, "parent.parentStructNo"), "2");
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
    EXPECT_EQ(field("Port", port, "vlan"), "20");
    EXPECT_EQ(field("Port", port, "priority"), "-3");
    XCode rc = inWrite(db_, [&](DB::ObjWrite& w) {
        DB::Transaction probe(DB::TRANSACTION_READ, db_);
        return w.remove(key(probe, "5"));
    });
    EXPECT_EQ(rc.getString(), "DATABASE ENTRY NOT FOUND: Port");
    ASSERT_TRUE(inWrite(db_, [&](DB::ObjWrite& w) {
                    DB::Transaction probe(DB::TRANSACTION_READ, db_);
                    return w.remove(key(probe, "3"));
                }).isSuccess());
    EXPECT_EQ(count("Port"), 1);
}

TEST_F(WriteTest, RemovingAnEntryRemovesItsChildren) {
    uint64_t eth0 = dbtest::addInterface(db_, "eth0");
    uint64_t eth1 = dbtest::addInterface(db_, "eth1");
    dbtest::addAddress(db_, eth0, "1", "10.0.0.1");
    dbtest::addAddress(db_, eth0, "2", "10.0.0.2");
    uint64_t kept = dbtest::addAddress(db_, eth1, "1", "10.0.1.1");
    ASSERT_TRUE(
        inWrite(db_, [&](DB::ObjWrite& w) { return w.remove("Interface", eth0); }).isSuccess());
    EXPECT_EQ(count("Interface"), 1);
    EXPECT_EQ(count("Address"), 1);
    EXPECT_EQ(field("Address", kept, "ip"), "10.0.1.1");
}

}  // namespace
