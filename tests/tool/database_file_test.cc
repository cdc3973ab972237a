// --db with a file: the file is made with the bundled schema on first use,
// keeps what a run wrote, and a file that is no database is reported.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <string>

#include "tool/tool_runner.h"

namespace ToolTest {
namespace {

class DatabaseFile : public testing::Test {
protected:
    void SetUp() override {
        char dir[] = "/tmp/sysevent_tool_db_XXXXXX";
        ASSERT_NE(mkdtemp(dir), nullptr);
        dir_ = dir;
    }
    void TearDown() override {
        unlink((dir_ + "/config.db").c_str());
        unlink((dir_ + "/garbage.db").c_str());
        rmdir(dir_.c_str());
    }
    std::string dir_;
};

TEST_F(DatabaseFile, EntriesOutliveTheRun) {
    if (!TOOL_AVAILABLE()) GTEST_SKIP() << "the tool is not built";
    std::string db = "--db " + dir_ + "/config.db";
    ToolRun first = RUN_TOOL("run " + db, "db insert Interface:eth0 mtu=9000\n");
    ASSERT_EQ(first.status, 0) << first.output;
    ToolRun second = RUN_TOOL("run " + db, "db show Interface:eth0\n");
    EXPECT_EQ(second.status, 0) << second.output;
    EXPECT_NE(second.output.find("  mtu = 9000\n"), std::string::npos) << second.output;
}

TEST_F(DatabaseFile, FileThatIsNoDatabaseIsReported) {
    if (!TOOL_AVAILABLE()) GTEST_SKIP() << "the tool is not built";
    std::string path = dir_ + "/garbage.db";
    FILE* f = fopen(path.c_str(), "w");
    ASSERT_NE(f, nullptr);
    fputs("this is not a database, not even close; it is plain text of some length\n", f);
    fclose(f);
    ToolRun run = RUN_TOOL("run --db " + path, "eval 1 + 1\n");
    EXPECT_EQ(run.status, 1) << run.output;
    EXPECT_NE(run.output.find(path + ": error: CORRUPT DATABASE FILE"), std::string::npos)
        << run.output;
    // The engine works without a database.
    EXPECT_NE(run.output.find("= 2\n"), std::string::npos) << run.output;
}

}  // namespace
}  // namespace ToolTest
