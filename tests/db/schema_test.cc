// Bad schemas and bad files: each fails with its own code and leaves the
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

// Each refusal's text is in the tool's db_schema transcript; here, the code
// and the dictionary, which stays the one handed out before.
TEST(SchemaTest, BadSchemasAreRefusedAndLeaveTheDatabaseAsItWas) {
    VXPtr<DB::Database> db = openExample();
    VXPtr<const DB::Base> before = db->getBase();
    const struct {
        const char* sql;
        uint32_t code;
    } cases[] = {
        {"CREATE TABLE T (a U8); CREATE INDEX identifier_T ON T (a)", DB::E_SCHEMA},
        {"CREATE TABLE T (a U8 NOT NULL); INSERT INTO T DEFAULT VALUES", DB::E_CONSTRAINT},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(db->applySchema(c.sql).getValue(), c.code) << c.sql;
        EXPECT_EQ(db->getBase(), before) << c.sql;
    }
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
    std::string bytes = fileBytes(damaged.path());
    ASSERT_GT(bytes.size(), 6u * 4096);
    bytes.replace(4 * 4096, 4096, 4096, '\x5A');
    std::ofstream(damaged.path().c_str(), std::ios::binary) << bytes;
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
