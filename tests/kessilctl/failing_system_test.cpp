// kessilctl on a system that can't set or read file times, and doesn't return the program's path.

#include "kessilctl/console/command_line.h"
#include "kessilctl/console/local_path.h"
#include "tests/fakes/fake_file_time.h"
#include "tests/fakes/fake_program_path.h"
#include "tests/kessilctl/kessilctl_run.h"

#include <gmock/gmock.h>

#include <sstream>

namespace kessil::test {
namespace {

using testing::HasSubstr;

class FailingSystem : public KessilctlTest
{
protected:
    FailingSystem() { fake_file_time = {}; }
};

TEST_F(FailingSystem, ABackupIsCompleteButForTheTimesThatItCouldNotSet)
{
    WriteFile(source / "dir" / "file", "content");
    fake_file_time.write_code = 95;
    const Outcome outcome = RunKessilctl("backup", "vorn_fs", {"--to", backup.string()});
    EXPECT_EQ(outcome.exit_code, 7);
    EXPECT_THAT(outcome.err, HasSubstr("dir/file: its time can't be set here\n"));
    EXPECT_THAT(outcome.err, HasSubstr("dir: its time can't be set here\n"));
    EXPECT_EQ(ReadFile(backup / "files" / "dir" / "file"), "content");

    fake_file_time.write_code = 0;
    const Outcome restored = RunKessilctl("restore", "vorn_fs", {"--from", backup.string()});
    EXPECT_EQ(restored.exit_code, 0) << restored.err;
}

TEST_F(FailingSystem, ARestoreInventsNoTimes)
{
    WriteFile(source / "file", "content");
    ASSERT_EQ(RunKessilctl("backup", "vorn_fs", {"--to", backup.string()}).exit_code, 0);
    fake_file_time.read_code = 5;
    const Outcome outcome = RunKessilctl("restore", "vorn_fs", {"--from", backup.string()});
    EXPECT_EQ(outcome.exit_code, 7);
    EXPECT_THAT(outcome.err, HasSubstr("its time can't be read"));
    EXPECT_THAT(outcome.err, HasSubstr("file"));
}

std::string DefaultHelper()
{
    std::ostringstream out;
    std::ostringstream err;
    int exit_code = 0;
    const auto command = kessilctl::ParseCommandLine({u"kessilctl", u"ls", u"--library", u"x"}, out, err, exit_code);
    EXPECT_TRUE(command.has_value()) << err.str();
    return command ? command->helper.program : std::string();
}

TEST(DefaultHelper, StandsBesideTheProgram)
{
    const std::filesystem::path directory = std::filesystem::path("/opt") / "kessil" / "bin";
    fake_program_path = directory / "kessilctl";
    EXPECT_EQ(DefaultHelper(), kessilctl::ToText(directory / "kessil"));
    fake_program_path = directory / "kessilctl.exe";
    EXPECT_EQ(DefaultHelper(), kessilctl::ToText(directory / "kessil.exe"));
}

TEST(DefaultHelper, IsInTheWorkingDirectoryWhenTheProgramPathIsUnknown)
{
    fake_program_path.clear();
    EXPECT_EQ(DefaultHelper(), "kessil");
}

} // namespace
} // namespace kessil::test
