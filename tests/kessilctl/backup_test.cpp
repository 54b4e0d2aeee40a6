#include "tests/kessilctl/kessilctl_run.h"

#include "platform/file_time.h"

#include <nlohmann/json.hpp>

namespace kessil::test {
namespace {

using Tree = std::map<std::string, std::string>;

class BackupTest : public KessilctlTest
{};

TEST_F(BackupTest, WritesTheFilesAndTheirDigests)
{
    WriteFile(source / "abc", "abc");
    WriteFile(source / "dir" / "empty", "");
    std::filesystem::create_directory(source / "nothing in it");
    const Outcome outcome = RunKessilctl("backup", "vorn_fs", {"--to", backup.string()});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    const std::string manifest = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad  files/abc\n"
                                 "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855  files/dir/empty\n";
    EXPECT_EQ(ReadTree(backup), (Tree{{"MANIFEST.sha256", manifest},
                                      {"files", "/"},
                                      {"files/abc", "abc"},
                                      {"files/dir", "/"},
                                      {"files/dir/empty", ""},
                                      {"files/nothing in it", "/"}}));
    EXPECT_EQ(outcome.out.rfind("backup: 2 files, 2 directories, 3 B in ", 0), 0u) << outcome.out;
}

TEST_F(BackupTest, CopiesFilesLargerThanOneBlock)
{
    std::string content;
    for (unsigned at = 0; at < 2500000; ++at)
        content += static_cast<char>(at * 31 + at / 1000);
    WriteFile(source / "large", content);
    WriteFile(source / "one block", content.substr(0, 1048576));
    BackUp();
    EXPECT_TRUE(ReadFile(backup / "files" / "large") == content);
    EXPECT_TRUE(ReadFile(backup / "files" / "one block") == content.substr(0, 1048576));
}

TEST_F(BackupTest, KeepsTheTimes)
{
    WriteFile(source / "dir" / "file", "x");
    const platform::FileTime of_file{981173106, 700};
    const platform::FileTime of_directory{1000000000, 0};
    ASSERT_TRUE(platform::WriteFileTime(source / "dir" / "file", of_file));
    ASSERT_TRUE(platform::WriteFileTime(source / "dir", of_directory));
    BackUp();
    platform::FileTime kept;
    ASSERT_TRUE(platform::ReadFileTime(backup / "files" / "dir" / "file", kept));
    EXPECT_EQ(kept.seconds, of_file.seconds);
    EXPECT_EQ(kept.nanoseconds, of_file.nanoseconds);
    ASSERT_TRUE(platform::ReadFileTime(backup / "files" / "dir", kept));
    EXPECT_EQ(kept.seconds, of_directory.seconds);
}

TEST_F(BackupTest, TakesOneDirectoryOfTheTree)
{
    WriteFile(source / "a" / "b" / "file", "inside");
    WriteFile(source / "a" / "other", "outside");
    EXPECT_EQ(RunKessilctl("backup", "vorn_fs", {"--to", backup.string(), "--subtree", "a/b"}).exit_code, 0);
    EXPECT_EQ(ReadTree(backup / "files"), (Tree{{"file", "inside"}}));
}

TEST_F(BackupTest, BacksUpAnEmptyTree)
{
    BackUp();
    EXPECT_EQ(ReadTree(backup), (Tree{{"MANIFEST.sha256", ""}, {"files", "/"}}));
}

TEST_F(BackupTest, LeavesADirectoryAloneThatHasSomethingInIt)
{
    WriteFile(source / "file", "new");
    WriteFile(backup / "files" / "file", "old");
    const Outcome outcome = RunKessilctl("backup", "vorn_fs", {"--to", backup.string()});
    EXPECT_EQ(outcome.exit_code, 2);
    EXPECT_NE(outcome.err.find("has something in it"), std::string::npos) << outcome.err;
    EXPECT_EQ(ReadTree(backup), (Tree{{"files", "/"}, {"files/file", "old"}}));
}

TEST_F(BackupTest, ReportsWhatItCanNotWrite)
{
    WriteFile(base / "a file", "");
    const Outcome outcome = RunKessilctl("backup", "vorn_fs", {"--to", (base / "a file" / "backup").string()});
    EXPECT_EQ(outcome.exit_code, 7);
    EXPECT_NE(outcome.err.find("a file"), std::string::npos) << outcome.err;
}

TEST_F(BackupTest, GivesTheResultToScripts)
{
    WriteFile(source / "dir" / "file", "12345");
    const Outcome outcome = RunKessilctl("backup", "vorn_fs", {"--to", backup.string(), "--json"});
    EXPECT_EQ(outcome.exit_code, 0);
    const auto result = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(result["task"], "backup");
    EXPECT_EQ(result["exit_code"], 0);
    EXPECT_EQ(result["files"], 1);
    EXPECT_EQ(result["directories"], 1);
    EXPECT_EQ(result["bytes"], 5);
    EXPECT_EQ(result["failures"], nlohmann::json::array());
    // Version, session; listings of two directories: create, open, the items and the end, close; one file: create,
    // open, two reads, close; the session's end.
    EXPECT_EQ(result["calls"], 2 + 2 * 5 + 5 + 1);
    EXPECT_FALSE(result.contains("end"));
}

TEST_F(BackupTest, ShowsABarOnATerminalAndLinesElsewhere)
{
    WriteFile(source / "file", "12345");
    const Outcome bar = RunKessilctl("backup", "vorn_fs", {"--to", backup.string()}, 80);
    EXPECT_EQ(bar.exit_code, 0);
    EXPECT_EQ(bar.err.rfind("\r[", 0), 0u) << bar.err;
    EXPECT_NE(bar.err.find("] backup 100%, 1 of 1 files, 5 B"), std::string::npos) << bar.err;
    EXPECT_EQ(bar.err.back(), '\n');

    const Outcome lines = RunKessilctl("backup", "vorn_fs", {"--to", (base / "again").string()});
    EXPECT_EQ(lines.err.find('\r'), std::string::npos);
    EXPECT_NE(lines.err.find("backup 100%, 1 of 1 files, 5 B"), std::string::npos) << lines.err;
}

} // namespace
} // namespace kessil::test
