#include "tests/kessilctl/kessilctl_run.h"

#include "platform/process.h"
#include "platform/text.h"
#include "tests/support/set_variable.h"

#include <nlohmann/json.hpp>

namespace kessil::test {
namespace {

class ExitCodeTest : public KessilctlTest
{};

bool Contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

TEST_F(ExitCodeTest, HelpListsThemAll)
{
    const Outcome outcome = RunKessilctlPlain({"--help"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.err, "");
    for (const char *line :
         {"\n  0  done", "\n  1  the library or the adapter reported", "\n  2  usage", "\n  3  the helper refused",
          "\n  4  the helper died", "\n  5  a call took longer", "\n  6  the helper did not start", "\n  7  a file",
          "\n  8  restore, write-disk:", "\n  130  interrupted"})
        EXPECT_TRUE(Contains(outcome.out, line)) << line;
}

TEST_F(ExitCodeTest, UsageIsTwo)
{
    const std::vector<std::vector<std::string>> wrong = {
        {},
        {"list"},
        {"ls"},
        {"ls", "--library"},
        {"ls", "--library", "x", "--nonsense"},
        {"ls", "--library", "x", "--time-limit", "-1"},
        {"ls", "--library", "x", "--time-limit", "soon"},
        {"ls", "--library", "x", "a", "b"},
        {"backup", "--library", "x"},
        {"restore", "--library", "x"},
        {"errtext"},
        {"ls", "--library", "x", "--password-fd", "0"},
        {"ls", "--library", "x", "--credentials-only"},
        {"ls", "--library", "x", "--logon", "d\\"},
        {"ls", "--library", "x", "--logon", "u", "--password-fd", "x"},
        {"ls", "--library", "x", "--logon", "u", "--password-fd", "-1"},
        {"backup", "restore"}};
    for (const auto &arguments : wrong) {
        const Outcome outcome = RunKessilctlPlain(arguments);
        EXPECT_EQ(outcome.exit_code, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
}

TEST_F(ExitCodeTest, TheLibrarysOwnFailureIsOneAndHasItsText)
{
    const Outcome missing = RunKessilctl("ls", "vorn_fs", {"missing"});
    EXPECT_EQ(missing.exit_code, 1);
    EXPECT_EQ(missing.out, "");
    // The system's text for a name that doesn't exist, and its code 2.
    EXPECT_TRUE(Contains(missing.err, "(code 65538)")) << missing.err;

    SetVariable("VORN_FS_ROOT", (base / "nowhere").string());
    const Outcome rootless = RunKessilctl("ls", "vorn_fs", {"--json"});
    EXPECT_EQ(rootless.exit_code, 1);
    EXPECT_TRUE(Contains(rootless.err, "VORN_FS_ROOT does not name a directory that can be opened (code 10)"))
        << rootless.err;
    EXPECT_EQ(nlohmann::json::parse(rootless.out)["exit_code"], 1);
}

TEST_F(ExitCodeTest, ARefusalIsThree)
{
    const Outcome missing = RunKessilctl("ls", "no such library", {});
    EXPECT_EQ(missing.exit_code, 3);
    EXPECT_TRUE(Contains(missing.err, "no such library")) << missing.err;
    EXPECT_EQ(RunKessilctl("ls", "first_answer", {}).exit_code, 3);
    EXPECT_EQ(RunKessilctl("ls", "plain", {}).exit_code, 3);
}

TEST_F(ExitCodeTest, ADeadHelperIsFour)
{
    for (const char *library : {"null_write", "throws_own", "throws_foreign", "divides_by_zero", "aborts", "exits"}) {
        const Outcome outcome = RunKessilctl("ls", library, {"--json"});
        EXPECT_EQ(outcome.exit_code, 4) << library;
        EXPECT_TRUE(Contains(outcome.err, "GetLibApiVersion")) << outcome.err;
        EXPECT_TRUE(Contains(outcome.err, library)) << outcome.err;
        const auto result = nlohmann::json::parse(outcome.out);
        EXPECT_EQ(result["exit_code"], 4);
        EXPECT_TRUE(Contains(result["end"].get<std::string>(), "GetLibApiVersion"));
    }
}

TEST_F(ExitCodeTest, ATimeLimitIsFive)
{
    const Outcome outcome = RunKessilctl("ls", "hangs", {"--time-limit", "0.5"});
    EXPECT_EQ(outcome.exit_code, 5);
    EXPECT_TRUE(Contains(outcome.err, "still waiting for GetLibApiVersion")) << outcome.err;
}

TEST_F(ExitCodeTest, NotStartedIsSix)
{
    const Outcome missing =
        RunKessilctlPlain({"ls", "--helper", (base / "no helper").string(), "--library", LibraryPath("vorn_fs")});
    EXPECT_EQ(missing.exit_code, 6);
    EXPECT_TRUE(Contains(missing.err, "no helper")) << missing.err;

    // A program that ends at once: to kessilctl the arguments of a helper are wrong usage.
    EXPECT_EQ(
        RunKessilctlPlain({"ls", "--helper", KESSIL_TEST_KESSILCTL, "--library", LibraryPath("vorn_fs")}).exit_code, 6);
}

TEST_F(ExitCodeTest, TheProgramEndsWithThem)
{
    const std::vector<std::pair<std::vector<std::string>, std::uint32_t>> runs = {
        {{"--version"}, 0},
        {{"ls", "--library", LibraryPath("vorn_fs")}, 0},
        {{"ls", "--library", LibraryPath("vorn_fs"), "missing"}, 1},
        {{"ls"}, 2},
        {{"ls", "--library", LibraryPath("no such library")}, 3},
        {{"ls", "--library", LibraryPath("null_write")}, 4},
    };
    for (const auto &[arguments, exit_code] : runs) {
        std::vector<WideString> wide;
        for (const std::string &argument : arguments)
            wide.push_back(platform::FromUtf8(argument));
        platform::Process *process = platform::StartProcess(platform::FromUtf8(KESSIL_TEST_KESSILCTL), wide, u"");
        ASSERT_NE(process, nullptr);
        std::uint32_t ended_with = 99;
        EXPECT_TRUE(platform::WaitForProcess(*process, std::chrono::steady_clock::now() + std::chrono::seconds(60),
                                             ended_with));
        EXPECT_EQ(ended_with, exit_code) << testing::PrintToString(arguments);
        platform::ReleaseProcess(process);
    }
}

} // namespace
} // namespace kessil::test
