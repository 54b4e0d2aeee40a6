#include "tests/kessilctl/kessilctl_run.h"

#include "platform/file_time.h"

#include <nlohmann/json.hpp>

namespace kessil::test {
namespace {

class ListTest : public KessilctlTest
{
protected:
    ListTest()
    {
        WriteFile(source / "b.txt", "12345");
        WriteFile(source / "a" / "inner", "");
        for (const auto &path : {source / "b.txt", source / "a" / "inner", source / "a"})
            EXPECT_TRUE(platform::WriteFileTime(path, {981173106, 700}));
    }
};

TEST_F(ListTest, ListsOneDirectory)
{
    const Outcome outcome = RunKessilctl("ls", "vorn_fs", {});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "directory              0 2001-02-03 04:05:06Z a\n"
                           "file                   5 2001-02-03 04:05:06Z b.txt\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(RunKessilctl("ls", "vorn_fs", {"a"}).out, "file                   0 2001-02-03 04:05:06Z inner\n");
}

TEST_F(ListTest, ListsEverythingBelow)
{
    EXPECT_EQ(RunKessilctl("ls", "vorn_fs", {"-r"}).out, "directory              0 2001-02-03 04:05:06Z a\n"
                                                         "file                   0 2001-02-03 04:05:06Z a/inner\n"
                                                         "file                   5 2001-02-03 04:05:06Z b.txt\n");
}

TEST_F(ListTest, GivesTheListToScripts)
{
    const auto result = nlohmann::json::parse(RunKessilctl("ls", "vorn_fs", {"--json"}).out);
    EXPECT_EQ(result["task"], "ls");
    EXPECT_EQ(result["files"], 1);
    EXPECT_EQ(result["directories"], 1);
    ASSERT_EQ(result["entries"].size(), 2u);
    EXPECT_EQ(result["entries"][0],
              (nlohmann::json{
                  {"name", "a"}, {"kind", "directory"}, {"bytes", 0}, {"seconds", 981173106}, {"nanoseconds", 700}}));
    EXPECT_EQ(result["entries"][1]["bytes"], 5);
}

} // namespace
} // namespace kessil::test
