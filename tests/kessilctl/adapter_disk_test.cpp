#include "tests/kessilctl/adapter_run.h"

#include <nlohmann/json.hpp>

namespace kessil::test {
namespace {

using nlohmann::json;
using std::filesystem::exists;

constexpr std::size_t sector = 512;
constexpr std::size_t sectors_in_image = 7003; // three blocks of 1 MiB, and 859 sectors

/// What differs from sector to sector, and from byte to byte.
std::string Content(std::size_t size, unsigned seed)
{
    std::string content(size, '\0');
    for (std::size_t at = 0; at < size; ++at)
        content[at] = static_cast<char>(at * 31 + at / sector * 7 + seed);
    return content;
}

class AdapterDiskTest : public AdapterTest
{
protected:
    AdapterDiskTest() { WriteFile(image, content); }

    Outcome Read(std::vector<std::string> arguments) { return RunAdapter("read-disk", WithDisk(std::move(arguments))); }
    Outcome Write(std::vector<std::string> arguments)
    {
        return RunAdapter("write-disk", WithDisk(std::move(arguments)));
    }

    std::vector<std::string> WithDisk(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.end(), {"-m", "alpha", "-d", "disk.img"});
        return arguments;
    }

    /// Expects that neither the file nor a part of it exists.
    void ExpectNoFile() const
    {
        EXPECT_FALSE(exists(file));
        EXPECT_FALSE(exists(partial));
    }

    /// Expects the log lines of a disk that was closed in order.
    static void ExpectClosed(const Outcome &outcome)
    {
        EXPECT_NE(outcome.err.find("adapter, level 2: closed alpha/disk.img\nadapter, level 2: no more disks\n"),
                  std::string::npos)
            << outcome.err;
    }

    static void ExpectError(const Outcome &outcome, int exit_code, const std::string &text)
    {
        EXPECT_EQ(outcome.exit_code, exit_code) << outcome.err;
        EXPECT_NE(outcome.err.find(text), std::string::npos) << outcome.err;
    }

    const std::string content = Content(sectors_in_image * sector, 1);
    const std::filesystem::path image = root / "machines" / "alpha" / "disk.img";
    const std::filesystem::path file = base / "file";
    const std::filesystem::path partial = base / "file.partial";
};

TEST_F(AdapterDiskTest, ReadsAllSectorsIntoAFile)
{
    const Outcome outcome = Read({"--sectors", "7003", "--to", file.string()});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_TRUE(ReadFile(file) == content);
    EXPECT_FALSE(exists(partial));
    EXPECT_EQ(outcome.out.rfind("adapter read-disk: 7003 sectors, 3.6 MB in ", 0), 0u) << outcome.out;
    ExpectClosed(outcome);
    EXPECT_NE(outcome.err.find("read-disk 100%, 1 of 1 files, 3.6 MB"), std::string::npos) << outcome.err;
}

TEST_F(AdapterDiskTest, ReadsAPartAndPrintsItsDigest)
{
    WriteFile(image, std::string(sector, 'x') + "abc" + std::string(509, '\0') + std::string(sector, 'x'));
    const Outcome outcome = Read({"--start", "1", "--sectors", "1", "--to", file.string()});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_TRUE(ReadFile(file) == "abc" + std::string(509, '\0'));
    // As sha256sum prints it.
    const std::string digest = "b064446561934ed673ed230b6c0e68ebde7d574bf81288b00ac88ff6e518ade4";
    EXPECT_NE(outcome.out.find("\nsha256 " + digest + "\n"), std::string::npos) << outcome.out;
}

TEST_F(AdapterDiskTest, ReadsNothingIntoAnEmptyFile)
{
    EXPECT_EQ(Read({"--start", "7003", "--sectors", "0", "--to", file.string()}).exit_code, 0);
    EXPECT_EQ(ReadFile(file), "");
}

TEST_F(AdapterDiskTest, WritesAFileBackAndReadsTheSame)
{
    const std::string changed = Content(2500 * sector, 100);
    WriteFile(file, changed);
    const Outcome outcome = Write({"--start", "4000", "--from", file.string(), "--verify"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_TRUE(ReadFile(image) == content.substr(0, 4000 * sector) + changed + content.substr(6500 * sector));
    EXPECT_EQ(outcome.out.rfind("adapter write-disk: 2500 sectors, 1.3 MB in ", 0), 0u) << outcome.out;
    EXPECT_NE(outcome.out.find(", verified\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.err.find("verify 100%, 1 of 1 files, 1.3 MB"), std::string::npos) << outcome.err;
    ExpectClosed(outcome);

    const Outcome again = Read({"--start", "4000", "--sectors", "2500", "--to", (base / "again").string()});
    EXPECT_EQ(again.exit_code, 0) << again.err;
    EXPECT_TRUE(ReadFile(base / "again") == changed);
}

TEST_F(AdapterDiskTest, GivesTheResultToScripts)
{
    WriteFile(file, std::string(1024, '\0'));
    const json written = json::parse(Write({"--from", file.string(), "--verify", "--json"}).out);
    EXPECT_EQ(written["task"], "adapter write-disk");
    EXPECT_EQ(written["exit_code"], 0);
    EXPECT_EQ(written["bytes"], 1024);
    EXPECT_EQ(written["sha256"], "5f70bf18a086007016e948b04aed3b82103a36bea41755b6cddfaf10ace3c6ef");
    EXPECT_EQ(written["verified"], true);
    EXPECT_FALSE(written.contains("end"));
    EXPECT_FALSE(written.contains("items"));
    EXPECT_EQ(written["log"][2]["text"], "opened alpha/disk.img, 7003 sectors");

    const json failed = json::parse(Read({"--sectors", "7004", "--to", (base / "other").string(), "--json"}).out);
    EXPECT_EQ(failed["exit_code"], 1);
    EXPECT_FALSE(failed.contains("sha256"));
    EXPECT_FALSE(failed.contains("verified"));
}

TEST_F(AdapterDiskTest, ReportsThatThereIsNoSuchDisk)
{
    ExpectError(RunAdapter("read-disk", {"-m", "beta", "-d", "d", "--sectors", "1", "--to", file.string()}), 1,
                "failed: there is no disk beta/d\n");
    ExpectNoFile();
}

TEST_F(AdapterDiskTest, LeavesNothingWhenItReadsBeyondTheEnd)
{
    const Outcome outcome = Read({"--start", "1", "--sectors", "7003", "--to", file.string()});
    ExpectError(outcome, 1,
                "failed: 859 sectors from 6145 on reach beyond the end of alpha/disk.img, which has 7003\n");
    ExpectClosed(outcome);
    ExpectNoFile();
}

TEST_F(AdapterDiskTest, DoesNotWriteAnImageThatIsProtected)
{
    using std::filesystem::perms;
    WriteFile(file, std::string(sector, 'x'));
    const auto writable = perms::owner_write | perms::group_write | perms::others_write;
    std::filesystem::permissions(image, writable, std::filesystem::perm_options::remove);
    const Outcome outcome = Write({"--from", file.string()});
    std::filesystem::permissions(image, perms::owner_write, std::filesystem::perm_options::add);
    ExpectError(outcome, 1, "failed: the disk alpha/disk.img is open for reading only\n");
    ExpectClosed(outcome);
    EXPECT_TRUE(ReadFile(image) == content);
}

TEST_F(AdapterDiskTest, KeepsAFileThatIsThere)
{
    WriteFile(file, "mine");
    ExpectError(Read({"--sectors", "1", "--to", file.string()}), 2, "exists");
    EXPECT_EQ(ReadFile(file), "mine");
    EXPECT_FALSE(exists(partial));
}

TEST_F(AdapterDiskTest, KeepsAPartialFileThatIsNotItsOwn)
{
    WriteFile(partial, "mine");
    ExpectError(Read({"--sectors", "1", "--to", file.string()}), 2, "file.partial exists\n");
    EXPECT_EQ(ReadFile(partial), "mine");
    EXPECT_FALSE(exists(file));
}

TEST_F(AdapterDiskTest, ReportsWhatItCanNotWrite)
{
    ExpectError(Read({"--sectors", "1", "--to", (base / "nowhere" / "file").string()}), 7, "file.partial: ");
}

TEST_F(AdapterDiskTest, RequiresWholeSectorsAndAFile)
{
    ExpectError(Write({"--from", file.string()}), 7, "cannot read ");
    WriteFile(file, std::string(513, 'x'));
    ExpectError(Write({"--from", file.string()}), 2, "513 bytes, is not a multiple of 512\n");
    EXPECT_TRUE(ReadFile(image) == content);
}

TEST_F(AdapterDiskTest, DoesNotWriteBeyondTheEnd)
{
    WriteFile(file, std::string(2 * sector, 'x'));
    ExpectError(Write({"--start", "7002", "--from", file.string()}), 1, "which has 7003\n");
    EXPECT_TRUE(ReadFile(image) == content);
}

TEST_F(AdapterDiskTest, EndsARunThatReadsInOrderWhenItIsInterrupted)
{
    const Outcome outcome =
        RunAdapterInterrupted("read-disk 29%", "read-disk", WithDisk({"--sectors", "7003", "--to", file.string()}));
    ExpectError(outcome, 130, "kessilctl: interrupted\n");
    ExpectClosed(outcome);
    ExpectNoFile();
}

TEST_F(AdapterDiskTest, EndsARunThatWritesInOrderWhenItIsInterrupted)
{
    WriteFile(file, std::string(sectors_in_image * sector, 'x'));
    const Outcome outcome =
        RunAdapterInterrupted("write-disk 29%", "write-disk", WithDisk({"--from", file.string(), "--verify"}));
    ExpectError(outcome, 130, "kessilctl: interrupted\n");
    ExpectClosed(outcome);
    const std::string now = ReadFile(image);
    EXPECT_TRUE(now.substr(0, 1048576) == std::string(1048576, 'x'));
    EXPECT_TRUE(now.substr(1048576) == content.substr(1048576));
}

TEST_F(AdapterDiskTest, LeavesNothingWhenTheHelperDies)
{
    ExpectError(RunStrangeAdapter("read-disk", {"-m", "m", "-d", "dies", "--sectors", "4096", "--to", file.string()}),
                4, "kessilctl: the helper died in ReadSectors");
    ExpectNoFile();
    WriteFile(file, std::string(4096 * sector, 'x'));
    ExpectError(RunStrangeAdapter("write-disk", {"-m", "m", "-d", "dies", "--from", file.string()}), 4,
                "kessilctl: the helper died in WriteSectors");
}

TEST_F(AdapterDiskTest, LeavesNothingWhenACallHangs)
{
    ExpectError(RunStrangeAdapter("read-disk", {"-m", "m", "-d", "hangs", "--sectors", "4096", "--to", file.string(),
                                                "--time-limit", "1"}),
                5, "kessilctl: still waiting for ReadSectors");
    ExpectNoFile();
}

TEST_F(AdapterDiskTest, ReportsThatWhatWasWrittenIsNotReadBack)
{
    WriteFile(file, std::string(sector, 'x'));
    const std::vector<std::string> arguments = {"-m", "m", "-d", "forgets", "--from", file.string()};
    EXPECT_EQ(RunStrangeAdapter("write-disk", arguments).exit_code, 0);
    std::vector<std::string> verifying = arguments;
    verifying.emplace_back("--verify");
    const Outcome outcome = RunStrangeAdapter("write-disk", verifying);
    ExpectError(outcome, 8, "kessilctl: forgets: what was read back differs from what was written\n");
    EXPECT_NE(outcome.out.find(", not verified: something else was read back\n"), std::string::npos) << outcome.out;
}

TEST_F(AdapterDiskTest, LeavesNothingWhenTheDiskDoesNotClose)
{
    ExpectError(
        RunStrangeAdapter("read-disk", {"-m", "m", "-d", "stays open", "--sectors", "1", "--to", file.string()}), 1,
        "CloseDisk");
    ExpectNoFile();
}

TEST_F(AdapterDiskTest, PassesTheDiskLibrarysTexts)
{
    const Outcome outcome = RunStrangeAdapter("read-disk", {"-m", "m", "-d", "d", "--sectors", "1", "--to",
                                                            file.string(), "--config", "first", "--lib", "second"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_NE(outcome.err.find("adapter, level 3: first\nadapter, level 4: second\n"), std::string::npos)
        << outcome.err;
}

TEST_F(AdapterDiskTest, ReachesFarIntoALargeDisk)
{
    constexpr std::uint64_t far = (4ull << 30) + 1048576;
    std::filesystem::resize_file(image, far);
    WriteFile(file, std::string(sector, 'f'));
    ASSERT_EQ(Write({"--start", "8390655", "--from", file.string()}).exit_code, 0);
    ASSERT_EQ(Read({"--start", "8390654", "--sectors", "2", "--to", (base / "read").string()}).exit_code, 0);
    EXPECT_TRUE(ReadFile(base / "read") == std::string(sector, '\0') + std::string(sector, 'f'));
    ExpectError(Read({"--start", "8390656", "--sectors", "1", "--to", file.string() + "2"}), 1, "which has 8390656");
}

} // namespace
} // namespace kessil::test
