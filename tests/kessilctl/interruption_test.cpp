#include "kessilctl/console/interruption.h"

#include "kessilctl/console/exit_code.h"
#include "platform/text.h"
#include "tests/kessilctl/kessilctl_run.h"
#include "tests/support/set_variable.h"

#include <csignal>

namespace kessil::test {
namespace {

using namespace std::chrono_literals;
using Tree = std::map<std::string, std::string>;
using kessilctl::Interruption;

/// The helper's log line for the orderly stop.
constexpr const char *ordered_stop = "Exiting on account of command 1";

class InterruptionTest : public KessilctlTest
{
protected:
    /// Interrupts a restore in the middle of its one file, and expects that nothing of that is left.
    void ExpectOrderlyEndOfARestore(int signal)
    {
        WriteFile(source / "file", std::string(3000000, 'x'));
        BackUp();
        WriteFile(target / "file", "there before");
        Serve(target);
        const std::filesystem::path log = base / "log";
        const Outcome outcome = RunKessilctlInterrupted(
            "restore 34%", "restore", "vorn_fs", {"--from", backup.string(), "--log", log.string(), "--debug"}, signal);
        EXPECT_EQ(outcome.exit_code, 130);
        EXPECT_NE(outcome.err.find("kessilctl: interrupted\n"), std::string::npos) << outcome.err;
        EXPECT_EQ(ReadTree(target), (Tree{{"file", "there before"}}));
        EXPECT_NE(ReadFile(log).find(ordered_stop), std::string::npos) << ReadFile(log);
    }
};

/// A helper with one of the hosted libraries, to be interrupted in calls of GetLibApiVersion.
class InterruptedHelper
{
public:
    explicit InterruptedHelper(const std::string &library) : m_library(platform::FromUtf8(LibraryPath(library)))
    {
        EXPECT_TRUE(helper.Start());
        EXPECT_TRUE(helper.Load(m_library));
    }

    parent::Outcome Call(const parent::TimeLimit &limit = {})
    {
        helper.Begin();
        return helper.Call(m_library, "GetLibApiVersion", "SIGNATURE_GetLibApiVersion", limit).outcome;
    }

    std::function<void()> on_slow;
    parent::Helper helper{Options()};

private:
    parent::Options Options()
    {
        parent::Options options;
        options.program = KESSIL_TEST_HELPER;
        options.on_slow = [this](const parent::SlowRequest &) { on_slow(); };
        return options;
    }

    WideString m_library;
};

void Raise(int signal)
{
    EXPECT_EQ(std::raise(signal), 0);
}

TEST_F(InterruptionTest, EndsABackupWithoutLeavingAHalf)
{
    for (const char *name : {"a", "b", "c", "d"})
        WriteFile(source / name, std::string(3000000, *name));
    const Outcome outcome = RunKessilctlInterrupted("backup 8%", "backup", "vorn_fs", {"--to", backup.string()});
    EXPECT_EQ(outcome.exit_code, 130);
    EXPECT_NE(outcome.err.find("kessilctl: interrupted\n"), std::string::npos) << outcome.err;
    EXPECT_EQ(ReadTree(backup), (Tree{{"files", "/"}}));
    EXPECT_EQ(RunKessilctl("restore", "vorn_fs", {"--from", backup.string()}).exit_code, 7);
}

TEST_F(InterruptionTest, EndsARestoreInOrder)
{
    ExpectOrderlyEndOfARestore(SIGINT);
}

TEST_F(InterruptionTest, IsARequestToTerminateAsWell)
{
    ExpectOrderlyEndOfARestore(SIGTERM);
}

TEST_F(InterruptionTest, EndsACallThatHangs)
{
    const Outcome outcome = RunKessilctlInterrupted("still waiting", "ls", "hangs", {"--time-limit", "2"});
    EXPECT_EQ(outcome.exit_code, 130);
    EXPECT_NE(outcome.err.find("kessilctl: interrupted\n"), std::string::npos) << outcome.err;
}

TEST_F(InterruptionTest, LetsTheCallUnderWayComeToItsEnd)
{
    SetVariable("KESSIL_DELAY", "300");
    InterruptedHelper hosted("slow");
    const Interruption interruption(hosted.helper, 1h);
    hosted.on_slow = [] { Raise(SIGINT); };
    interruption.Check();
    EXPECT_EQ(hosted.Call({.warn_after = 50ms}), parent::Outcome::Answered);
    EXPECT_TRUE(interruption.Requested());
    EXPECT_THROW(interruption.Check(), kessilctl::Failure);
    EXPECT_TRUE(hosted.helper.Stop());
}

TEST_F(InterruptionTest, CancelsACallThatDoesNotComeBackInTime)
{
    InterruptedHelper hosted("hangs");
    const Interruption interruption(hosted.helper, 50ms);
    Raise(SIGTERM);
    EXPECT_EQ(hosted.Call(), parent::Outcome::Cancelled);
}

TEST_F(InterruptionTest, CancelsAtOnceTheSecondTime)
{
    InterruptedHelper hosted("hangs");
    const Interruption interruption(hosted.helper, 1h);
    hosted.on_slow = [] {
        Raise(SIGTERM);
        Raise(SIGINT);
    };
    EXPECT_EQ(hosted.Call({.warn_after = 50ms}), parent::Outcome::Cancelled);
    // A third one, whichever it is, ends the process.
    for (const int signal : {SIGTERM, SIGINT}) {
        const auto on_third = std::signal(signal, SIG_DFL);
        EXPECT_EXIT(on_third(signal), testing::ExitedWithCode(130), "");
    }
}

TEST_F(InterruptionTest, CancelsNothingWhenItIsOver)
{
    InterruptedHelper hosted("plain");
    {
        const Interruption interruption(hosted.helper, 1h);
        Raise(SIGINT);
    }
    EXPECT_EQ(hosted.Call(), parent::Outcome::Answered);
}

TEST_F(InterruptionTest, LeavesIgnoredWhatWasIgnored)
{
    const auto before = std::signal(SIGTERM, SIG_IGN);
    {
        InterruptedHelper hosted("plain");
        const Interruption interruption(hosted.helper, 1h);
        Raise(SIGTERM);
        EXPECT_FALSE(interruption.Requested());
        EXPECT_EQ(hosted.Call(), parent::Outcome::Answered);
    }
    EXPECT_EQ(std::signal(SIGTERM, before), SIG_IGN);
}

#ifdef SIGHUP
TEST_F(InterruptionTest, IsTheLossOfTheTerminalAsWell)
{
    ExpectOrderlyEndOfARestore(SIGHUP);
}

TEST_F(InterruptionTest, IsNotInsistedOnByATerminalThatIsLostTwice)
{
    InterruptedHelper hosted("plain");
    const Interruption interruption(hosted.helper, 1h);
    Raise(SIGHUP);
    Raise(SIGHUP);
    EXPECT_TRUE(interruption.Requested());
    EXPECT_EQ(hosted.Call(), parent::Outcome::Answered);
}
#endif

} // namespace
} // namespace kessil::test
