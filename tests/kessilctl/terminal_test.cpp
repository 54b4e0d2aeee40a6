#include "tests/kessilctl/pseudo_terminal.h"
#include "tests/kessilctl/scripted_run.h"
#include "tests/support/set_variable.h"

#include <csignal>

namespace kessil::test {
namespace {

/// kessilctl on a terminal.
class TerminalTest : public ScriptedRun
{
protected:
    /// A kessilctl that asks for a password, with a helper that expects `pw`.
    std::vector<std::string> AskingKessilctl()
    {
        WriteFile(base / "script", "attach\n"
                                   "expect 41 00000014 7500 0000 6400 0000 7000 7700 0000 0000 00000001\n"
                                   "send 53 00000000\n"
                                   "expect 58 00000008 00000005 6D00 0000\n"
                                   "send 45 00000010 FFFFFFFF 00000005 7400 6F00 6F00 0000\n"
                                   "expect 66 01\n");
        return {KESSIL_TEST_KESSILCTL, "errtext", "m", "5", "--logon", "d\\u", "--helper", KESSIL_TEST_SCRIPTED_HELPER};
    }
};

constexpr const char *prompt = "Password for d\\u: ";

TEST_F(TerminalTest, APasswordIsAskedForAndNotShown)
{
    PseudoTerminal terminal(AskingKessilctl());
    terminal.Await(prompt);
    EXPECT_FALSE(terminal.Echoes());
    terminal.Type("pX\x7Fw\n");
    EXPECT_EQ(terminal.AwaitEnd(), 0);
    EXPECT_EQ(terminal.Shown(), std::string(prompt) + "\r\ntoo\r\n");
    EXPECT_TRUE(terminal.Echoes());
}

TEST_F(TerminalTest, CtrlCAtThePasswordEndsTheRunAndRestoresTheEcho)
{
    PseudoTerminal terminal(AskingKessilctl());
    terminal.Await(prompt);
    terminal.Type("p\x03");
    EXPECT_EQ(terminal.AwaitEnd(), 130);
    EXPECT_EQ(terminal.Shown(), std::string(prompt) + "\r\nkessilctl: interrupted\r\n");
    EXPECT_TRUE(terminal.Echoes());
}

TEST_F(TerminalTest, SignalsAtThePasswordEndTheRunAndRestoreTheEcho)
{
    for (const int signal : {SIGTERM, SIGHUP, SIGQUIT}) {
        PseudoTerminal terminal(AskingKessilctl());
        terminal.Await(prompt);
        terminal.Send(signal);
        EXPECT_EQ(terminal.AwaitEnd(), 130) << signal;
        EXPECT_TRUE(terminal.Echoes());
    }
}

TEST_F(TerminalTest, CtrlZAtThePasswordStopsNothing)
{
    PseudoTerminal terminal(AskingKessilctl());
    terminal.Await(prompt);
    terminal.Type("\x1A\x15pw\n");
    EXPECT_EQ(terminal.AwaitEnd(), 0);
    EXPECT_TRUE(terminal.Echoes());
}

TEST_F(TerminalTest, TheEndOfTheInputIsNoPassword)
{
    PseudoTerminal terminal(AskingKessilctl());
    terminal.Await(prompt);
    terminal.Type("\x04");
    EXPECT_EQ(terminal.AwaitEnd(), 7);
    EXPECT_TRUE(terminal.Echoes());
}

// The terminal interrupts kessilctl and not the helper: the call is answered, and the helper stops in order.
TEST_F(TerminalTest, CtrlCReachesKessilctlAlone)
{
    SetVariable("KESSIL_DELAY", "4000");
    PseudoTerminal terminal({KESSIL_TEST_KESSILCTL, "ls", "--helper", KESSIL_TEST_HELPER, "--library",
                             LibraryPath("slow"), "--time-limit", "6", "--log", (base / "log").string(), "--debug"});
    terminal.Await("still waiting");
    terminal.Type("\x03");
    EXPECT_EQ(terminal.AwaitEnd(), 130);
    EXPECT_NE(terminal.Shown().find("kessilctl: interrupted\r\n"), std::string::npos) << terminal.Shown();
    EXPECT_NE(ReadFile(base / "log").find("Exiting on account of command 1"), std::string::npos);
}

} // namespace
} // namespace kessil::test
