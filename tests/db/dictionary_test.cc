// The dictionary read from the example schema: table, field and index
// numbers, type codes from declared types, structures and their members,
// index fields in index order, and numbering across schema changes.
#include <gtest/gtest.h>

#include <array>

#include "db_test_support.h"

namespace {

TEST(DictionaryTest, NumbersTypesStructuresAndIndexes) {
    VXPtr<DB::Database> db = dbtest::openExample();
    VXPtr<const DB::Base> base = db->getBase();
    ASSERT_EQ(base->getNumberOfStructs(), 5);
    String name;
    EXPECT_TRUE(base->getStructName(5, name).isSuccess() && name == "Route");
    EXPECT_EQ(base->getStructNo("interface"), DB::NO_STRUCT);  // case-sensitive
    EXPECT_EQ(base->getStructName(6, name).getString(), "INVALID DATABASE TABLE NUMBER: 6");

    // Type codes (the limits of each type are in the tool's db_entries
    // transcript), and field numbers: columns first, then structures, whose
    // members are listed in column order.
    const struct {
        uint16_t table;
        const char* field;
        uint32_t type, size;
        uint16_t no;
        VXVector<String> members;
    } fields[] = {
        {2, "name", DB::FT_CHAR, 16, 2, {}},
        {3, "rxPower", DB::FT_READING, 8, 8, {}},
        {2, "state", DB::FT_STRUCT, 0, 9, {"admin", "oper"}},
        {1, "maintenance.window", DB::FT_STRUCT, 0, 11, {"start", "length"}},
    };
    VXVector<String> list;
    for (const auto& f : fields) {
        DB::FieldInfo info, byNo;
        ASSERT_TRUE(base->getFieldInfo(f.table, f.field, info).isSuccess()) << f.field;
        EXPECT_EQ((std::array<uint32_t, 3>{info.type, info.size, info.no}),
                  (std::array<uint32_t, 3>{f.type, f.size, f.no}))
            << f.field;
        ASSERT_TRUE(base->getFieldInfo(f.table, info.no, byNo).isSuccess());
        EXPECT_EQ(byNo.name, f.field);
        if (f.members.empty()) continue;
        ASSERT_TRUE(base->getListOfStructFields(f.table, f.field, list).isSuccess()) << f.field;
        EXPECT_EQ(list, f.members) << f.field;
    }
    DB::FieldInfo info;
    EXPECT_EQ(base->getFieldInfo(1, "nosuch", info).getString(),
              "NO SUCH DATABASE FIELD: System.nosuch");
    EXPECT_EQ(base->getListOfStructFields(2, "mtu", list).getString(),
              "NOT A STRUCTURE FIELD: Interface.mtu");

    EXPECT_EQ(base->getIndexNo(3, "byVlan"), 1);
    ASSERT_TRUE(base->getListOfIndexFields(4, 0, list).isSuccess());
    EXPECT_EQ(list, (VXVector<String>{"objType", "objStatus", "parent.parentStructNo",
                                      "parent.parentId", "id"}));

    // Index order, not column order; an added table comes last, and a
    // dictionary already handed out stays as it was.
    ASSERT_TRUE(db->applySchema("CREATE TABLE Pair (b U8, a TEXT, c U8);"
                                "CREATE UNIQUE INDEX identifier_Pair ON Pair (c, a);")
                    .isSuccess());
    EXPECT_EQ(db->getBase()->getStructNo("Pair"), 6);
    EXPECT_EQ(base->getStructNo("Pair"), DB::NO_STRUCT);
    ASSERT_TRUE(db->getBase()->getListOfIndexFields(6, 0, list).isSuccess());
    EXPECT_EQ(list, (VXVector<String>{"c", "a"}));
}

}  // namespace
