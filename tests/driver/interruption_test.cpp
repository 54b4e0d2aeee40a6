#include "driver_run.h"

namespace kessil::test {
namespace {

class InterruptionTest : public DriverTest
{};

TEST_F(InterruptionTest, EndsABackupWithoutLeavingAHalf)
{
    for (const char *name : {"a", "b", "c", "d"})
        WriteFile(source / name, std::string(3000000, *name));
    const Outcome outcome = RunDriverInterrupted("backup 8%", "backup", "vorn_fs", {"--to", backup.string()});
    EXPECT_EQ(outcome.exit_code, 130);
    EXPECT_NE(outcome.err.find("kessilctl: interrupted\n"), std::string::npos) << outcome.err;
    EXPECT_EQ(ReadTree(backup), (std::map<std::string, std::string>{{"files", "/"}}));
    EXPECT_EQ(RunDriver("restore", "vorn_fs", {"--from", backup.string()}).exit_code, 7);
}

TEST_F(InterruptionTest, EndsARestoreWithoutLeavingAHalf)
{
    WriteFile(source / "file", std::string(3000000, 'x'));
    BackUp();
    WriteFile(target / "file", "there before");
    Serve(target);
    const Outcome outcome = RunDriverInterrupted("restore 34%", "restore", "vorn_fs", {"--from", backup.string()});
    EXPECT_EQ(outcome.exit_code, 130);
    EXPECT_EQ(ReadFile(target / "file"), "there before");
}

TEST_F(InterruptionTest, EndsACallThatHangs)
{
    const Outcome outcome = RunDriverInterrupted("still waiting", "ls", "hangs", {"--time-limit", "2"});
    EXPECT_EQ(outcome.exit_code, 130);
    EXPECT_NE(outcome.err.find("kessilctl: interrupted\n"), std::string::npos) << outcome.err;
}

} // namespace
} // namespace kessil::test
