// Bad schemas and bad files: each fails with its own text and leaves the
// database and its dictionary as they were; missing and damaged files, and
// files whose schema the layer cannot map (a foreign file is the tool's test).
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
    // Each text follows "INVALID DATABASE SCHEMA: "; "T;" stands for
    // "CREATE TABLE T (a U8);".
    const struct {
        const char *sql, *text;
    } cases[] = {
        {"CREATE TABLE T (a FLOATY)", "UNSUPPORTED FIELD TYPE 'FLOATY': T.a"},
        {"CREATE TABLE T (a CHAR(0))", "UNSUPPORTED FIELD TYPE 'CHAR(0)': T.a"},
        {"CREATE TABLE T (a)", "MISSING FIELD TYPE: T.a"},
        {"CREATE TABLE T (a U8 PRIMARY KEY) WITHOUT ROWID", "TABLE WITHOUT ROWID: T"},
        {"T; CREATE UNIQUE INDEX identifier_T ON T (a + 1)",
         "UNSUPPORTED INDEX EXPRESSION: identifier_T"},
        {"T; CREATE INDEX identifier_T ON T (a)", "IDENTIFIER INDEX NOT UNIQUE: T"},
        {"T; CREATE UNIQUE INDEX identifier_T ON T (a) WHERE a > 0",
         "IDENTIFIER INDEX IS PARTIAL: T"},
        {"T; CREATE INDEX x_T ON T (a); CREATE INDEX x ON T (a)",
         "DUPLICATE DATABASE INDEX NAME: T.x"},
        {R"(CREATE TABLE T ("parent.parentId" U32))", "INVALID PARENT FIELDS: T"},
        {R"(CREATE TABLE T ("parent.parentStructNo" U16, "parent.parentId" TEXT))",
         "INVALID PARENT FIELDS: T"},
        {"CREATE TABLE T (objType TEXT)", "INVALID TYPE OF DATABASE FIELD: T.objType"},
        {R"(CREATE TABLE T (state U8, "state.admin" BOOL))",
         "FIELD IS BOTH VALUE AND STRUCTURE: T.state"},
        {R"(CREATE TABLE T ("State.admin" BOOL))", "INVALID DATABASE STRUCTURE NAME: T.State"},
        {R"(CREATE TABLE T ("a..b" BOOL))", "INVALID DATABASE FIELD NAME: T.a..b"},
        {"CREATE TABLE lower (a U8)", "INVALID DATABASE TABLE NAME: lower"},
        {R"(CREATE TABLE "A:B" (a U8))", "INVALID DATABASE TABLE NAME: A:B"},
        {"CREAT TABLE T (a U8)", R"(near "CREAT": syntax error)"},
        {"T; CREATE TABLE Interface (a U8)", "table Interface already exists"},
        {"T; BEGIN", "cannot start a transaction within a transaction"},
        {"CREATE TABLE T (a U8 NOT NULL); INSERT INTO T DEFAULT VALUES",
         "MISSING VALUE FOR DATABASE FIELD: T.a"},
    };
    VXPtr<DB::Database> db = openExample();
    uint64_t eth0 = dbtest::addInterface(db, "eth0");
    VXPtr<const DB::Base> before = db->getBase();
    for (const auto& c : cases) {
        std::string sql = c.sql;
        if (sql.starts_with("T;")) sql.replace(0, 2, "CREATE TABLE T (a U8);");
        XCode rc = db->applySchema(sql.c_str());
        const bool missing = std::string(c.text).starts_with("MISSING VALUE");
        EXPECT_EQ(rc.getValue(), missing ? DB::E_CONSTRAINT : DB::E_SCHEMA) << c.sql;
        EXPECT_EQ(rc.getString(), String("INVALID DATABASE SCHEMA: ") + c.text) << c.sql;
        EXPECT_EQ(db->getBase(), before) << c.sql;
    }
    // Nothing of any of them stayed: T can be made now, and the data is there.
    ASSERT_TRUE(db->applySchema("CREATE TABLE T (a U8)").isSuccess());
    EXPECT_EQ(db->getBase()->getStructNo("T"), 6);
    EXPECT_EQ(dbtest::read(db, "Interface"), (VXVector<String>{dbtest::text(eth0)}));
    EXPECT_EQ(db->applySchemaFile("/nonexistent/schema.sql").getString(),
              "CANNOT READ SCHEMA FILE: /nonexistent/schema.sql");
}

TEST(SchemaTest, MissingAndDamagedFiles) {
    VXPtr<DB::Database> db;
    TempFile missing("missing");
    XCode rc = DB::Database::OPEN(db, missing.path());
    EXPECT_EQ(rc.getValue(), DB::E_CORRUPT);
    EXPECT_EQ(rc.getString(),
              "CANNOT OPEN DATABASE FILE: " + missing.path() + " (unable to open database file)");
    EXPECT_FALSE(db);

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
    ASSERT_GT(fileBytes(damaged.path()).size(), 6u * 4096);
    writeBytes(damaged.path(), std::string(4096, '\x5A'), 4 * 4096);
    const std::string bytes = fileBytes(damaged.path());
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
