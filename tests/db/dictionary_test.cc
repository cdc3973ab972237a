// The dictionary as read from the example schema: table, field and index
// numbers, type codes from declared types, structure fields and their
// members, index fields in index order, and numbering across schema changes.
#include <gtest/gtest.h>

#include "db_test_support.h"

namespace {

using dbtest::openExample;

class DictionaryTest : public ::testing::Test {
protected:
    VXPtr<DB::Database> db_ = openExample();
    VXPtr<const DB::Base> base_ = db_->getBase();
};

TEST_F(DictionaryTest, TablesAreNumberedInCreationOrderFromOne) {
    const char* names[] = {"System", "Interface", "Port", "Address", "Route"};
    ASSERT_EQ(base_->getNumberOfStructs(), 5);
    for (uint16_t i = 0; i < 5; ++i) {
        EXPECT_EQ(base_->getStructNo(names[i]), i + 1) << names[i];
        String name;
        ASSERT_TRUE(base_->getStructName(i + 1, name).isSuccess());
        EXPECT_EQ(name, names[i]);
    }
    EXPECT_EQ(base_->getStructNo("Vlan"), DB::NO_STRUCT);
    EXPECT_EQ(base_->getStructNo("interface"), DB::NO_STRUCT);  // case-sensitive
    String name;
    XCode rc = base_->getStructName(6, name);
    EXPECT_EQ(rc.getValue(), DB::E_SCHEMA);
    EXPECT_EQ(rc.getString(), "INVALID DATABASE TABLE NUMBER: 6");
    EXPECT_EQ(base_->getStructName(0, name).getValue(), DB::E_SCHEMA);
}

TEST_F(DictionaryTest, TypeCodesComeFromDeclaredTypes) {
    struct Case {
        const char* table;
        const char* field;
        uint32_t type;
        uint32_t size;
    } cases[] = {
        {"Interface", "objType", DB::FT_U8, 1},
        {"Interface", "mtu", DB::FT_U16, 2},
        {"System", "bootCount", DB::FT_U32, 4},
        {"Interface", "speed", DB::FT_U64, 8},
        {"Port", "priority", DB::FT_S8, 1},
        {"Port", "delayOffset", DB::FT_S16, 2},
        {"Port", "temperature", DB::FT_S32, 4},
        {"System", "clockDrift", DB::FT_S64, 8},
        {"Port", "rxPower", DB::FT_READING, 8},
        {"Interface", "name", DB::FT_CHAR, 16},
        {"Interface", "description", DB::FT_TEXT, 0},
        {"Interface", "state.admin", DB::FT_BOOL, 1},
        {"Interface", "state", DB::FT_STRUCT, 0},
        {"Interface", "rxGain", DB::FT_REAL, 8},
        {"System", "maintenance.window", DB::FT_STRUCT, 0},
        {"System", "maintenance.window.start", DB::FT_U16, 2},
    };
    for (const Case& c : cases) {
        DB::FieldInfo info;
        uint16_t table = base_->getStructNo(c.table);
        ASSERT_TRUE(base_->getFieldInfo(table, c.field, info).isSuccess()) << c.field;
        EXPECT_EQ(info.type, c.type) << c.table << "." << c.field;
        EXPECT_EQ(info.size, c.size) << c.table << "." << c.field;
        EXPECT_EQ(info.name, c.field);
        EXPECT_EQ(info.no, base_->getFieldNo(table, c.field));
        DB::FieldInfo byNo;
        ASSERT_TRUE(base_->getFieldInfo(table, info.no, byNo).isSuccess());
        EXPECT_EQ(byNo.name, c.field);
    }
}

TEST_F(DictionaryTest, ColumnsComeFirstThenStructuresInOrderOfAppearance) {
    uint16_t system = base_->getStructNo("System");
    VXVector<String> fields;
    ASSERT_TRUE(base_->getListOfFields(system, fields).isSuccess());
    // Columns in table order, then each structure where its first member is.
    VXVector<String> expected = {"hostname",
                                 "contact",
                                 "location",
                                 "timezoneOffset",
                                 "bootCount",
                                 "clockDrift",
                                 "uptimeReading",
                                 "maintenance.enabled",
                                 "maintenance.window.start",
                                 "maintenance.window.length",
                                 "maintenance",
                                 "maintenance.window"};
    EXPECT_EQ(fields, expected);
    EXPECT_EQ(base_->getFieldNo(system, "maintenance"), 10);
    EXPECT_EQ(base_->getFieldNo(system, "nosuch"), DB::NO_FIELD);
    EXPECT_EQ(base_->getFieldNo(99, "hostname"), DB::NO_FIELD);

    DB::FieldInfo info;
    XCode rc = base_->getFieldInfo(system, "nosuch", info);
    EXPECT_EQ(rc.getValue(), DB::E_SCHEMA);
    EXPECT_EQ(rc.getString(), "NO SUCH DATABASE FIELD: System.nosuch");
    EXPECT_EQ(info.no, DB::NO_FIELD);  // untouched
}

TEST_F(DictionaryTest, StructureMembersAreTheNextNameComponent) {
    struct Case {
        const char* table;
        const char* field;
        VXVector<String> members;
    } cases[] = {
        {"Interface", "state", {"admin", "oper"}},
        {"Port", "counters", {"inOctets", "outOctets"}},
        {"Address", "parent", {"parentStructNo", "parentId"}},
        {"System", "maintenance", {"enabled", "window"}},
        {"System", "maintenance.window", {"start", "length"}},
    };
    for (const Case& c : cases) {
        VXVector<String> members;
        ASSERT_TRUE(
            base_->getListOfStructFields(base_->getStructNo(c.table), c.field, members).isSuccess())
            << c.field;
        EXPECT_EQ(members, c.members) << c.table << "." << c.field;
    }
    VXVector<String> members;
    XCode rc = base_->getListOfStructFields(base_->getStructNo("Interface"), "mtu", members);
    EXPECT_EQ(rc.getString(), "NOT A STRUCTURE FIELD: Interface.mtu");
}

TEST_F(DictionaryTest, IndexesByNameWithFieldsInIndexOrder) {
    uint16_t port = base_->getStructNo("Port");
    uint16_t address = base_->getStructNo("Address");
    EXPECT_EQ(base_->getIndexNo(port, "identifier"), 0);
    EXPECT_EQ(base_->getIndexNo(port, "byVlan"), 1);
    EXPECT_EQ(base_->getIndexNo(port, "identifier_Port"), DB::NO_INDEX);
    EXPECT_EQ(base_->getIndexNo(base_->getStructNo("System"), "identifier"), DB::NO_INDEX);
    EXPECT_EQ(base_->getIndexNo(DB::NO_STRUCT, "identifier"), DB::NO_INDEX);

    VXVector<String> fields;
    ASSERT_TRUE(base_->getListOfIndexFields(address, 0, fields).isSuccess());
    VXVector<String> expected = {"objType", "objStatus", "parent.parentStructNo", "parent.parentId",
                                 "id"};
    EXPECT_EQ(fields, expected);
    XCode rc = base_->getListOfIndexFields(address, 1, fields);
    EXPECT_EQ(rc.getString(), "INVALID DATABASE INDEX NUMBER: Address.1");

    // Index order, not column order. The added table comes after the others,
    // and a dictionary already handed out stays as it was.
    ASSERT_TRUE(db_->applySchema("CREATE TABLE Pair (b U8, a TEXT, c U8);"
                                 "CREATE UNIQUE INDEX identifier_Pair ON Pair (c, a);")
                    .isSuccess());
    VXPtr<const DB::Base> base = db_->getBase();
    EXPECT_EQ(base->getStructNo("Pair"), 6);
    EXPECT_EQ(base->getStructNo("Address"), 4);
    EXPECT_EQ(base_->getStructNo("Pair"), DB::NO_STRUCT);
    ASSERT_TRUE(base->getListOfIndexFields(6, 0, fields).isSuccess());
    EXPECT_EQ(fields, (VXVector<String>{"c", "a"}));
}

}  // namespace
