#include "parent/scripted.h"

#include "platform/pipe_server.h"
#include "platform/process.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <thread>

namespace kessil::parent {
namespace {

using namespace std::chrono_literals;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

using StartTest = ScriptedTest;

TEST_F(StartTest, ConnectsAndStopsInOrder)
{
    Start("attach\nlog_names\n" + stop);
    EXPECT_TRUE(helper->Running());
    EXPECT_NE(helper->ProcessId(), 0U);
    ExpectGoodEnd();
    EXPECT_FALSE(helper->Running());
    EXPECT_TRUE(helper->Stop());
    EXPECT_EQ(helper->Load(u"x").outcome, Outcome::NotSent);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(StartTest, PassesTheCommandLine)
{
    options.log_level = LogLevel::Debug;
    Start("attach\nlog_names\nlog_arguments\n" + stop);
    ExpectGoodEnd();
    const std::string names = directory.ReadFile("names");
    EXPECT_THAT(Log(), HasSubstr("argument " + names.substr(0, names.find('\n')) + '\n'));
    EXPECT_THAT(Log(), HasSubstr("argument --log_level\nargument debug\nargument --out_file\n"));
}

TEST_F(StartTest, AMissingProgramNeverStarted)
{
    options.program = directory.Path() / "no_such_program";
    const Result result = Prepare("").Start();
    EXPECT_EQ(result.outcome, Outcome::NeverStarted);
    EXPECT_THAT(result.message, HasSubstr("no_such_program"));
    EXPECT_THAT(result.message, HasSubstr("--log_level"));
    EXPECT_FALSE(result.exit_code);
    EXPECT_EQ(helper->Load(u"x").outcome, Outcome::NeverStarted);
}

TEST_F(StartTest, AProgramThatEndsExitedAtOnce)
{
    const Result result = Prepare("log_names\nlog no memory left\nexit 7\n").Start();
    EXPECT_EQ(result.outcome, Outcome::ExitedAtOnce);
    EXPECT_EQ(result.exit_code, 7U);
    EXPECT_THAT(result.message, HasSubstr("scripted_helper"));
    EXPECT_THAT(result.message, HasSubstr("\"--out_file\""));
    EXPECT_THAT(result.message, HasSubstr("exit code 7"));
    EXPECT_THAT(result.message, HasSubstr("\n  no memory left"));
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(StartTest, AProgramThatDoesNotConnectNeverAttached)
{
    options.attach_limit = 3s;
    const Result result = Prepare("log_names\nlog still working\nhang\n").Start();
    EXPECT_EQ(result.outcome, Outcome::NeverAttached);
    EXPECT_GE(result.elapsed, 3s);
    EXPECT_THAT(result.message, HasSubstr("scripted_helper"));
    EXPECT_THAT(result.message, HasSubstr("\"--log_level\" \"error\""));
    EXPECT_THAT(result.message, HasSubstr("within 3.0 s"));
    EXPECT_FALSE(result.exit_code);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(StartTest, OnlyTheTailOfThisRunsLogIsShown)
{
    directory.WriteFile("log", "a line of yesterday\n");
    std::string script;
    for (int line = 1; line <= 12; ++line)
        script += "log line " + std::to_string(line) + "\n";
    const Result result = Prepare(script).Start();
    EXPECT_EQ(result.outcome, Outcome::ExitedAtOnce);
    EXPECT_THAT(result.message, Not(HasSubstr("yesterday")));
    EXPECT_THAT(result.message, Not(HasSubstr("line 2\n")));
    EXPECT_THAT(result.message, HasSubstr("log:\n  line 3\n  line 4\n"));
    EXPECT_TRUE(result.message.ends_with("\n  line 12")) << result.message;
}

TEST_F(StartTest, AShortLogIsNotFilledUpWithLinesOfAnEarlierRun)
{
    directory.WriteFile("log", "a line of yesterday\n");
    const Result result = Prepare("log a line of today\n").Start();
    EXPECT_THAT(result.message, EndsWith("log:\n  a line of today"));
}

TEST_F(StartTest, ControlCharactersOfTheLogAreShownAsQuestionMarks)
{
    const Result result = Prepare("log \x1B[31mred\x07\tblue\x7F.\n").Start();
    EXPECT_THAT(result.message, EndsWith("log:\n  ?[31mred?\tblue?."));
}

TEST_F(StartTest, AHelperThatEndsRightAfterConnectingIsFoundDeadByTheFirstRequest)
{
    Start("attach\nlog_names\nexit 3\n");
    const Result result = helper->Load(u"x");
    EXPECT_EQ(result.outcome, Outcome::Died);
    EXPECT_EQ(result.exit_code, 3U);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(StartTest, AnotherProcessIsRejectedAndTheHelperStillConnects)
{
    directory.WriteFile("other", "attach\nexpect_end\n");
    Start("run other\nattach\nlog_names\n" + stop);
    EXPECT_EQ(helper->Figures().rejected_clients, 1U);
    ExpectGoodEnd();
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(StartTest, TheConnectedPipeTakesNoSecondClient)
{
    directory.WriteFile("other", "attach\nexpect_end\n");
    Start("attach\nlog_names\nexpect 4C 00000004 7800 0000\n" + success + stop);
    ASSERT_TRUE(helper->Load(u"x"));
    const std::string name = directory.ReadFile("names");
    EXPECT_EQ(platform::ConnectPipe(platform::FromUtf8(name.substr(0, name.find('\n'))), 1), platform::invalid_pipe);
    ExpectGoodEnd();
}

TEST_F(StartTest, TwoHelpersHaveTwoPipes)
{
    TemporaryDirectory other_directory;
    Start("attach\nlog_names\n" + stop);
    other_directory.WriteFile("script", "attach\nlog_names\n" + stop);
    options.working_directory = other_directory.Path();
    Helper other(options);
    ASSERT_TRUE(other.Start());
    EXPECT_TRUE(other.Stop());
    ExpectGoodEnd();
    EXPECT_NE(directory.ReadFile("names"), other_directory.ReadFile("names"));
    EXPECT_NE(directory.ReadFile("names"), "");
}

#ifndef _WIN32
TEST_F(StartTest, TheHelperHoldsNoHandleButItsPipe)
{
    // A plain stream of the C library: a child inherits its descriptor unless someone prevents it.
    std::FILE *stray = std::fopen("/dev/null", "w");
    ASSERT_NE(stray, nullptr);
    Start("log_handles\nattach\nlog_handles\n" + stop);
    ExpectGoodEnd();
    std::fclose(stray);
    // The script's own file is the one that is open before the pipe.
    EXPECT_EQ(Log(), "open handles: 1\nopen handles: 2\n");
}
#endif

TEST_F(StartTest, ADestroyedHelperIsDead)
{
    platform::PipeServer *witness = nullptr;
    const WideString name = platform::RandomPipeName();
    witness = platform::CreatePipeServer(name);
    ASSERT_NE(witness, nullptr);
    Start("attach\nlog_names\nwitness " + platform::ToUtf8(name) + "\nhang\n");
    const auto limit = std::chrono::steady_clock::now() + 20s;
    EXPECT_EQ(platform::AcceptPipeClient(*witness, helper->ProcessId(), limit), platform::PipeStatus::Done);
    helper.reset();
    unsigned char byte = 0;
    std::uint32_t count = 0;
    EXPECT_EQ(platform::ReadServedPipe(*witness, &byte, 1, count, limit), platform::PipeStatus::Closed);
    platform::DestroyPipeServer(witness);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(StartTest, ALogFileOfItsOwnGoesWithTheHelper)
{
    options.log_file.clear();
    Start("attach\nlog hello\n" + stop);
    ExpectGoodEnd();
    const std::filesystem::path log = helper->LogFile();
    EXPECT_TRUE(std::filesystem::exists(log));
    helper.reset();
    EXPECT_FALSE(std::filesystem::exists(log));
}

TEST_F(StartTest, AStartThatWasCancelledBefore)
{
    Prepare("attach\n");
    helper->Cancel();
    EXPECT_EQ(helper->Start().outcome, Outcome::Cancelled);
}

TEST_F(StartTest, AStartCancelledFromAnotherThread)
{
    const WideString name = platform::RandomPipeName();
    platform::PipeServer *witness = platform::CreatePipeServer(name);
    ASSERT_NE(witness, nullptr);
    Prepare("witness " + platform::ToUtf8(name) + "\nlog_names\nhang\n");
    std::thread canceller([&] {
        // The helper's id isn't known here while Start runs: its coming is enough.
        platform::AcceptPipeClient(*witness, 0, std::chrono::steady_clock::now() + 20s);
        helper->Cancel();
    });
    const Result result = helper->Start();
    canceller.join();
    EXPECT_EQ(result.outcome, Outcome::Cancelled) << result.message;
    platform::DestroyPipeServer(witness);
}

TEST_F(StartTest, AHelperThatIgnoresTheStopIsKilled)
{
    Start("attach\nlog_names\n" + stop + "hang\n");
    const Result result = helper->Stop(100ms);
    EXPECT_EQ(result.outcome, Outcome::Hung);
    EXPECT_GE(result.elapsed, 100ms);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(StartTest, AStopThatEndsWithAnotherCode)
{
    Start("attach\nlog_names\n" + stop + "exit 1\n");
    const Result result = helper->Stop();
    EXPECT_EQ(result.outcome, Outcome::Died);
    EXPECT_EQ(result.exit_code, 1U);
}

TEST_F(StartTest, NoRequestBeforeTheStart)
{
    Prepare("");
    EXPECT_EQ(helper->Load(u"x").outcome, Outcome::NotSent);
    EXPECT_EQ(helper->Stop().outcome, Outcome::NotSent);
    helper->Begin().U32(1);
    EXPECT_EQ(CallF().outcome, Outcome::NotSent);
    EXPECT_EQ(helper->Results().Complete().outcome, Outcome::NotSent);
}

} // namespace
} // namespace kessil::parent
