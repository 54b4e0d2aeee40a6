#include "tests/kessilctl/kessilctl_run.h"

#include "kessilctl/console/local_path.h"
#include "platform/file_time.h"

#include <nlohmann/json.hpp>

namespace kessil::test {
namespace {

using Tree = std::map<std::string, std::string>;

class RestoreTest : public KessilctlTest
{
protected:
    Outcome RestoreTo(const std::filesystem::path &directory, const std::vector<std::string> &more = {})
    {
        Serve(directory);
        std::vector<std::string> arguments = {"--from", backup.string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunKessilctl("restore", "vorn_fs", arguments);
    }
};

TEST_F(RestoreTest, RestoresTheWholeTree)
{
    std::string large;
    for (unsigned at = 0; at < 3 * 1048576 + 5; ++at)
        large += static_cast<char>(at * 17 + at / 4096);
    WriteFile(source / "large", large);
    WriteFile(source / "empty", "");
    WriteFile(source / "dir" / "sub" / "file", "content");
    std::filesystem::create_directories(source / "dir" / "nothing");
    const platform::FileTime moment{981173106, 700};
    for (const auto &path : {source / "large", source / "empty", source / "dir" / "sub", source / "dir"})
        ASSERT_TRUE(platform::WriteFileTime(path, moment));
    BackUp();

    const Outcome outcome = RestoreTo(target);
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_TRUE(ReadTree(target) == ReadTree(source));
    for (const auto &path : {target / "large", target / "empty", target / "dir" / "sub", target / "dir"}) {
        platform::FileTime restored;
        ASSERT_TRUE(platform::ReadFileTime(path, restored));
        EXPECT_EQ(restored.seconds, moment.seconds) << path;
        EXPECT_EQ(restored.nanoseconds, moment.nanoseconds) << path;
    }
    EXPECT_EQ(outcome.out.rfind("restore: 3 files, 3 directories, 3.1 MB in ", 0), 0u) << outcome.out;
}

TEST_F(RestoreTest, RestoresNamesOfAllAlphabets)
{
    const std::vector<std::string> names = {"\xC3\xBCml\xC3\xA4ut", "\xE6\x97\xA5\xE6\x9C\xAC",
                                            "\xF0\x9F\x97\x84 beyond 16 bits", " leading space"};
    for (const std::string &name : names)
        WriteFile(source / kessilctl::ToPath(name) / kessilctl::ToPath(name), "of " + name);
    backup = base / kessilctl::ToPath(names[0]);
    const std::string place = kessilctl::ToText(backup);
    EXPECT_EQ(RunKessilctl("backup", "vorn_fs", {"--to", place}).exit_code, 0);
    Serve(target);
    const Outcome outcome = RunKessilctl("restore", "vorn_fs", {"--from", place});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(ReadTree(target), ReadTree(source));
    EXPECT_EQ(ReadTree(target).size(), 2 * names.size());
    EXPECT_NE(ReadFile(backup / "MANIFEST.sha256").find("  files/" + names[1] + "/" + names[1] + "\n"),
              std::string::npos);
}

TEST_F(RestoreTest, OverwritesWhatExistsAndLeavesTheRest)
{
    WriteFile(source / "file", "from the backup");
    BackUp();
    WriteFile(target / "file", "changed since");
    WriteFile(target / "other", "stays");
    EXPECT_EQ(RestoreTo(target).exit_code, 0);
    EXPECT_EQ(ReadTree(target), (Tree{{"file", "from the backup"}, {"other", "stays"}}));
}

TEST_F(RestoreTest, RestoresIntoADirectoryOfTheTree)
{
    WriteFile(source / "dir" / "file", "content");
    BackUp();
    EXPECT_EQ(RestoreTo(target, {"--subtree", "to/here"}).exit_code, 0);
    EXPECT_EQ(ReadTree(target),
              (Tree{{"to", "/"}, {"to/here", "/"}, {"to/here/dir", "/"}, {"to/here/dir/file", "content"}}));
}

TEST_F(RestoreTest, DoesNotRestoreWhatIsDamaged)
{
    WriteFile(source / "damaged", "as it was");
    WriteFile(source / "whole", "as it was");
    BackUp();
    WriteFile(backup / "files" / "damaged", "as it is!");
    WriteFile(target / "damaged", "there before");
    const Outcome outcome = RestoreTo(target, {"--json"});
    EXPECT_EQ(outcome.exit_code, 8);
    EXPECT_EQ(ReadTree(target), (Tree{{"damaged", "there before"}, {"whole", "as it was"}}));
    const auto result = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(result["exit_code"], 8);
    EXPECT_EQ(result["files"], 1);
    EXPECT_EQ(result["bytes"], 9);
    ASSERT_EQ(result["differences"].size(), 1u);
    EXPECT_EQ(result["differences"][0]["file"], "damaged");
    EXPECT_NE(outcome.err.find("kessilctl: damaged: the file in the backup doesn't match the manifest"),
              std::string::npos)
        << outcome.err;
}

TEST_F(RestoreTest, ReportsWhatTheBackupLacksAndWhatItHasBesides)
{
    WriteFile(source / "lost", "x");
    WriteFile(source / "kept", "x");
    BackUp();
    std::filesystem::remove(backup / "files" / "lost");
    WriteFile(backup / "files" / "added", "y");
    const Outcome outcome = RestoreTo(target);
    EXPECT_EQ(outcome.exit_code, 8);
    EXPECT_NE(outcome.err.find("lost: missing from the backup"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("added: not in the manifest"), std::string::npos) << outcome.err;
    EXPECT_EQ(ReadTree(target), (Tree{{"kept", "x"}}));
}

TEST_F(RestoreTest, RequiresACompleteBackup)
{
    const Outcome outcome = RestoreTo(target);
    EXPECT_EQ(outcome.exit_code, 7);
    EXPECT_NE(outcome.err.find("MANIFEST.sha256"), std::string::npos) << outcome.err;

    WriteFile(backup / "MANIFEST.sha256", "not a manifest\n");
    EXPECT_EQ(RestoreTo(target).exit_code, 7);

    WriteFile(backup / "MANIFEST.sha256", std::string(64, '0') + "  elsewhere/file\n");
    EXPECT_EQ(RestoreTo(target).exit_code, 7);
}

TEST_F(RestoreTest, NamesTheFileThatTheLibraryCanNotTake)
{
    WriteFile(source / "name", "a file");
    WriteFile(source / "other", "x");
    BackUp();
    std::filesystem::create_directory(target / "name");
    const Outcome outcome = RestoreTo(target);
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_NE(outcome.err.find("kessilctl: name: not a regular file (code 6)"), std::string::npos) << outcome.err;
    EXPECT_EQ(ReadTree(target), (Tree{{"name", "/"}, {"other", "x"}}));
}

} // namespace
} // namespace kessil::test
