// The tracker's field reading against the example database: the codes of
// failed reads, key fields of every keyable type, and the entry id of a
// changed entry. (The value and kind each field type becomes are in the
// engine_database transcript.)
#include <gtest/gtest.h>

#include "database/tracker_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using dbtest::insert;
using Field = DatabaseTracker::Field;

class FieldGetTest : public TrackerTest {
protected:
    void SetUp() override {
        eth0_ = dbtest::addInterface(db_, "eth0");
        dbtest::addAddress(db_, eth0_, "1", "10.0.0.1");
        insert(db_, "Route", dbtest::values("destination=default,prefixLength=0,metric=20"));
    }

    // The value of a variable name's field, or the failure (of the name, with
    // no field made, or of the read).
    XCode get(const char* name, Value& value) {
        VXLWPtr<Field> field;
        XCode rc = DatabaseTracker::VARIABLE_NAME_TO_FIELD(field, name);
        EXPECT_EQ(rc.isSuccess(), static_cast<bool>(field)) << name;
        return rc.isSuccess() ? field->get(value) : rc;
    }

    uint64_t eth0_ = 0;
};

TEST_F(FieldGetTest, FailuresOfNamesAndReads) {
    // The texts of the other failures are in the engine_database transcript.
    struct Case {
        const char* name;
        uint32_t code;
        const char* text;
    } cases[] = {
        {"ifmtu", XCode::GENERIC_FAILURE, ""},
        {"db.Port:9.vlan", DatabaseTracker::CANNOT_LOAD,
         "CANNOT LOAD DATABASE ENTRY: Port: DATABASE ENTRY NOT FOUND: Port"},
        {"db.System.hostname", DatabaseTracker::CANNOT_LOAD,
         "CANNOT LOAD FIRST DATABASE ENTRY: System: NO DATABASE ENTRY: System"},
        {"db.Interface:eth9.Address:1.ip", DatabaseTracker::CANNOT_LOAD,
         "CANNOT LOAD DATABASE ENTRY: Interface: DATABASE ENTRY NOT FOUND: Interface"},
        {"db.Interface:eth0.rxGain", XCode::GENERIC_FAILURE, "INVALID DATA TYPE OF DATABASE FIELD"},
        {"db.Interface:eth0.description", DB::E_VALUE,
         "DATABASE FIELD HAS NO VALUE: Interface.description"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Value v(DST_ERR_VAL);
        XCode rc = get(c.name, v);
        EXPECT_EQ(rc.getValue(), c.code);
        EXPECT_EQ(rc.getString(), c.text);
        EXPECT_EQ(v, Value(DST_ERR_VAL));  // untouched
    }
}

TEST_F(FieldGetTest, KeyFieldsOfEveryKeyableType) {
    ASSERT_TRUE(
        db_->applySchema(
               "CREATE TABLE Offset (objType U8 NOT NULL DEFAULT 2, objStatus U8 NOT NULL "
               "DEFAULT 10, delta S16 NOT NULL, big S64 NOT NULL, wide U64 NOT NULL, "
               "label TEXT);"
               "CREATE UNIQUE INDEX identifier_Offset ON Offset (objType, objStatus, delta, "
               "big, wide);"
               "CREATE TABLE Flag (objType U8 NOT NULL DEFAULT 2, objStatus U8 NOT NULL "
               "DEFAULT 10, enabled BOOL NOT NULL, note TEXT);"
               "CREATE UNIQUE INDEX identifier_Flag ON Flag (objType, objStatus, enabled);")
            .isSuccess());
    insert(db_, "Offset", dbtest::values("delta=-5,big=-70000,wide=9,label=neg"));
    insert(db_, "Flag", {{"enabled", "true"}, {"note", "on"}});
    Value v;
    ASSERT_TRUE(get("db.Offset:-5:-70000:9.label", v).isSuccess());
    EXPECT_EQ(v, S("neg"));
    EXPECT_EQ(get("db.Flag:true.note", v).getString(), "Unsupported data type in index: 25");
}

TEST_F(FieldGetTest, EntryIdsOfChangedEntries) {
    insert(db_, "System", {});
    ASSERT_TRUE(
        db_->applySchema("CREATE TABLE Clock (objType U8 NOT NULL DEFAULT 2, objStatus U8 "
                         "NOT NULL DEFAULT 10, source TEXT);"
                         "CREATE UNIQUE INDEX identifier_Clock ON Clock (objType, objStatus);")
            .isSuccess());
    insert(db_, "Clock", {{"source", "gps"}});
    DB::Transaction tx(DB::TRANSACTION_READ, db_);
    ASSERT_TRUE(tx.start().isSuccess());
    struct Case {
        const char* variable;  // names the entry
        const char* id;
    } cases[] = {
        {"db.Interface:eth0.Address:1.ip", "Interface:eth0.Address:1"},
        {"db.Route:default:0.metric", "Route:default:0"},
        {"db.System.hostname", "System"},
        // No user key field: the two forms differ (see the tracker's notes).
        {"db.Clock.source", "Clock:"},
    };
    for (const Case& c : cases) {
        VXLWPtr<Field> field;
        ASSERT_TRUE(DatabaseTracker::VARIABLE_NAME_TO_FIELD(field, c.variable).isSuccess());
        DB::ObjRead entry(tx);
        ASSERT_TRUE(field->table->load(entry, tx).isSuccess()) << c.variable;
        String id;
        ASSERT_TRUE(DatabaseTracker::GET_ENTRY_ID(id, entry).isSuccess()) << c.variable;
        EXPECT_EQ(id, c.id);
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
