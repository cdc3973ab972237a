// Bad schemas and bad files: each fails with its own text and leaves the
// database and its dictionary as they were; missing, foreign and damaged
// files, and files whose schema the layer cannot map.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "db_test_support.h"

namespace {

using dbtest::openExample;
using dbtest::TempFile;

std::string fileBytes(const String& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeBytes(const String& path, const std::string& bytes, std::streamoff at = 0) {
    std::fstream out(path.c_str(), std::ios::binary | std::ios::in | std::ios::out);
    if (!out) out.open(path.c_str(), std::ios::binary | std::ios::out);
    out.seekp(at);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

TEST(SchemaTest, BadSchemasAreRefusedAndLeaveTheDatabaseAsItWas) {
    struct Case {
        const char* sql;
        uint32_t code;
        const char* text;
    } cases[] = {
        {"CREATE TABLE T (a FLOATY)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: UNSUPPORTED FIELD TYPE 'FLOATY': T.a"},
        {"CREATE TABLE T (a CHAR(0))", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: UNSUPPORTED FIELD TYPE 'CHAR(0)': T.a"},
        {"CREATE TABLE T (a)", DB::E_SCHEMA, "INVALID DATABASE SCHEMA: MISSING FIELD TYPE: T.a"},
        {"CREATE TABLE T (a U8 PRIMARY KEY) WITHOUT ROWID", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: TABLE WITHOUT ROWID: T"},
        {"CREATE TABLE T (a U8); CREATE UNIQUE INDEX identifier_T ON T (a + 1)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: UNSUPPORTED INDEX EXPRESSION: identifier_T"},
        {"CREATE TABLE T (a U8); CREATE INDEX identifier_T ON T (a)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: IDENTIFIER INDEX NOT UNIQUE: T"},
        {"CREATE TABLE T (a U8); CREATE UNIQUE INDEX identifier_T ON T (a) WHERE a > 0",
         DB::E_SCHEMA, "INVALID DATABASE SCHEMA: IDENTIFIER INDEX IS PARTIAL: T"},
        {"CREATE TABLE T (a U8); CREATE INDEX x_T ON T (a); CREATE INDEX x ON T (a)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: DUPLICATE DATABASE INDEX NAME: T.x"},
        {"CREATE TABLE T (\"parent.parentId\" U32)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: INVALID PARENT FIELDS: T"},
        {"CREATE TABLE T (\"parent.parentStructNo\" U16, \"parent.parentId\" TEXT)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: INVALID PARENT FIELDS: T"},
        {"CREATE TABLE T (objType TEXT)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: INVALID TYPE OF DATABASE FIELD: T.objType"},
        {"CREATE TABLE T (state U8, \"state.admin\" BOOL)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: FIELD IS BOTH VALUE AND STRUCTURE: T.state"},
        {"CREATE TABLE T (\"State.admin\" BOOL)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: INVALID DATABASE STRUCTURE NAME: T.State"},
        {"CREATE TABLE T (\"a..b\" BOOL)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: INVALID DATABASE FIELD NAME: T.a..b"},
        {"CREATE TABLE lower (a U8)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: INVALID DATABASE TABLE NAME: lower"},
        {"CREATE TABLE \"A:B\" (a U8)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: INVALID DATABASE TABLE NAME: A:B"},
        {"CREAT TABLE T (a U8)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: near \"CREAT\": syntax error"},
        {"CREATE TABLE T (a U8); CREATE TABLE Interface (a U8)", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: table Interface already exists"},
        {"CREATE TABLE T (a U8); BEGIN", DB::E_SCHEMA,
         "INVALID DATABASE SCHEMA: cannot start a transaction within a transaction"},
        {"CREATE TABLE T (a U8 NOT NULL); INSERT INTO T DEFAULT VALUES", DB::E_CONSTRAINT,
         "INVALID DATABASE SCHEMA: MISSING VALUE FOR DATABASE FIELD: T.a"},
    };
    VXPtr<DB::Database> db = openExample();
    uint64_t eth0 = dbtest::addInterface(db, "eth0");
    VXPtr<const DB::Base> before = db->getBase();
    for (const Case& c : cases) {
        XCode rc = db->applySchema(c.sql);
        EXPECT_EQ(rc.getValue(), c.code) << c.sql;
        EXPECT_EQ(rc.getString(), c.text) << c.sql;
        EXPECT_EQ(db->getBase(), before) << c.sql;
    }
    // Nothing of any of them stayed: T can be made now, and the data is there.
    ASSERT_TRUE(db->applySchema("CREATE TABLE T (a U8)").isSuccess());
    EXPECT_EQ(db->getBase()->getStructNo("T"), 6);
    EXPECT_EQ(dbtest::read(db, "Interface"), (VXVector<String>{dbtest::text(eth0)}));
    EXPECT_EQ(db->applySchemaFile("/nonexistent/schema.sql").getString(),
              "CANNOT READ SCHEMA FILE: /nonexistent/schema.sql");
}

TEST(SchemaTest, MissingForeignAndDamagedFiles) {
    VXPtr<DB::Database> db;
    TempFile missing("missing");
    XCode rc = DB::Database::OPEN(db, missing.path());
    EXPECT_EQ(rc.getValue(), DB::E_CORRUPT);
    EXPECT_EQ(rc.getString(),
              "CANNOT OPEN DATABASE FILE: " + missing.path() + " (unable to open database file)");
    EXPECT_FALSE(db);

    TempFile foreign("foreign");
    const std::string text(3000, 'x');
    writeBytes(foreign.path(), text);
    rc = DB::Database::OPEN(db, foreign.path());
    EXPECT_EQ(rc.getValue(), DB::E_CORRUPT);
    EXPECT_EQ(rc.getString(),
              "CORRUPT DATABASE FILE: " + foreign.path() + " (file is not a database)");
    EXPECT_EQ(fileBytes(foreign.path()), text);

    // A real database with a page overwritten in the middle of its data.
    TempFile damaged("damaged");
    {
        VXPtr<DB::Database> good;
        ASSERT_TRUE(
            DB::Database::OPEN(good, damaged.path(), DB::Database::OPEN_CREATE).isSuccess());
        ASSERT_TRUE(good->applySchemaFile(dbtest::schemaPath()).isSuccess());
        ASSERT_TRUE(dbtest::inWrite(good, [](DB::ObjWrite& w) {
                        XCode rc;
                        for (int i = 0; i < 400 && rc.isSuccess(); ++i) {
                            rc = w.insert("Port", {{"number", String::stringOf(i)}});
                        }
                        return rc;
                    }).isSuccess());
    }
    std::string bytes = fileBytes(damaged.path());
    ASSERT_GT(bytes.size(), 6u * 4096);
    writeBytes(damaged.path(), std::string(4096, '\x5A'), 4 * 4096);
    bytes = fileBytes(damaged.path());
    rc = DB::Database::OPEN(db, damaged.path());
    EXPECT_EQ(rc.getValue(), DB::E_CORRUPT);
    // SQLite's finding (which page, which tree) follows the file's name.
    EXPECT_TRUE(rc.getString().startsWith("CORRUPT DATABASE FILE: " + damaged.path() + " ("))
        << rc.getString().c_str();
    EXPECT_EQ(fileBytes(damaged.path()), bytes);
}

TEST(SchemaTest, FileWithAnUnmappableSchemaDoesNotOpen) {
    // Schema SQL that commits by itself makes its tables permanent even when
    // the layer refuses them; such a file then fails to open.
    TempFile file("unmappable");
    {
        VXPtr<DB::Database> db;
        ASSERT_TRUE(DB::Database::OPEN(db, file.path(), DB::Database::OPEN_CREATE).isSuccess());
        XCode rc = db->applySchema("CREATE TABLE T (a FLOATY); COMMIT;");
        EXPECT_EQ(rc.getString(), "INVALID DATABASE SCHEMA: TRANSACTION STATEMENT IN SCHEMA");
        EXPECT_EQ(db->getBase()->getNumberOfStructs(), 0);
    }
    VXPtr<DB::Database> db;
    XCode rc = DB::Database::OPEN(db, file.path());
    EXPECT_EQ(rc.getValue(), DB::E_SCHEMA);
    EXPECT_EQ(rc.getString(), "UNSUPPORTED FIELD TYPE 'FLOATY': T.a");
}

}  // namespace
