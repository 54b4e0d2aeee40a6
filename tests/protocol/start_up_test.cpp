#include "protocol/conversation.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kessil::test {
namespace {

namespace fs = std::filesystem;

constexpr const char *usage = "Usage: kessil.exe <pipe_name> [<option>...>\n"
                              "  Where <option> can be\n"
                              "    --log_level <log level>\n"
                              "    --out_file <file name>\n"
                              "  And <log level> can be debug or error\n";

// What the program says on its standard output when it is called like this, with nothing left in its directory.
std::string OutputOf(const std::vector<WideString> &arguments)
{
    HelperRun run(1);
    const TestDirectory elsewhere;
    const fs::path output = elsewhere.Path() / "output";
    {
        const RedirectedOutput redirected(output);
        run.Start(arguments);
    }
    run.End();
    EXPECT_TRUE(fs::is_empty(run.Directory()));
    return ReadText(output);
}

TEST(CommandLine, PrintsItsUsageAndLeavesNoLog)
{
    const std::vector<std::vector<WideString>> unusable = {
        {},
        {u"pipe", u"--verbose", u"1"},
        {u"pipe", u"--LOG_LEVEL", u"debug"},
        {u"pipe", u"--log_level", u"debug", u"out", u"file"},
        {u"pipe", u"--out_file", u"a", u"--log_level=debug", u"--out_file"},
    };
    for (const std::vector<WideString> &arguments : unusable)
        EXPECT_EQ(OutputOf(arguments), usage) << arguments.size();
}

TEST(CommandLine, TakesItsDefaults)
{
    Conversation talk(0, {});
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_TRUE(fs::exists(talk.Helper().Directory() / "kessil_log.out"));
    EXPECT_EQ(talk.Helper().Log(), "");
}

TEST(CommandLine, IgnoresALastWordThatHasNoValue)
{
    for (const char16_t *word : {u"--log_level", u"--out_file", u"--verbose", u""}) {
        Conversation talk(0, {word});
        talk.Send(OrderlyStop());
        talk.End();
        EXPECT_EQ(talk.Helper().Log(), "");
    }
}

TEST(CommandLine, TakesAnyWordButDebugForTheErrorLevel)
{
    for (const char16_t *level : {u"ERROR", u"trace", u"Debug", u"debug ", u"2", u""}) {
        Conversation talk(0, {u"--log_level", level});
        talk.Send(OrderlyStop());
        talk.End();
        EXPECT_EQ(talk.Helper().Log(), "") << platform::ToUtf8(level);
    }
}

TEST(CommandLine, LetsTheLastOfTwoOptionsWin)
{
    Conversation talk(0, {u"--log_level", u"debug", u"--out_file", u"first", u"--log_level", u"error", u"--out_file",
                          u"second", u"--log_level", u"debug"});
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_FALSE(fs::exists(talk.Helper().Directory() / "first"));
    EXPECT_FALSE(fs::exists(talk.Helper().Directory() / "kessil_log.out"));
    EXPECT_EQ(talk.Helper().PlainLog("second"), "kessil debug: Ready for logging:  log_file==second, log_level==2\n"
                                                "kessil debug: Attached to comm\n"
                                                "kessil debug: Exiting on account of command 1\n"
                                                "commfunc debug: Closing handle m_hNamedPipe #\n");
}

TEST(CommandLine, TakesAnEmptyFileNameForTheDefault)
{
    Conversation talk(0, {u"--out_file", u"", u"--log_level", u"debug"});
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_NE(talk.Helper().Log().find("log_file==kessil_log.out, log_level==2"), std::string::npos);
}

TEST(CommandLine, CutsTheFileNameToBytes)
{
    // U+1F42 is cut to the letter B.
    Conversation talk(0, {u"--out_file", u"a\u1F42c"});
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_TRUE(fs::exists(talk.Helper().Directory() / "aBc"));
}

TEST(Log, IsAppendedTo)
{
    HelperRun run(1);
    std::ofstream(run.Directory() / "kessil_log.out") << "from an earlier run\n";
    run.Start({u""});
    run.End();
    EXPECT_EQ(run.Log().find("from an earlier run\nERROR: '"), 0u) << run.Log();
}

TEST(Log, HasOneLineForEachRecord)
{
    Conversation talk(0);
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), "kessil debug: Ready for logging:  log_file==kessil_log.out, log_level==2\n"
                                        "kessil debug: Attached to comm\n"
                                        "kessil debug: Exiting on account of command 1\n"
                                        "commfunc debug: Closing handle m_hNamedPipe #\n");
}

TEST(Log, IsNotNeeded)
{
    const WideString nowhere = NativePath("/no such directory/log");
    for (const char16_t *level : {u"debug", u"error"}) {
        Conversation talk(0, {u"--out_file", nowhere, u"--log_level", level});
        const Section section = Announce(talk, 64);
        talk.Load(TargetLibrary("plain"));
        talk.Call("GetBackupType");
        section.Expect(0, Hex("00000007"));
        talk.Send(OrderlyStop());
        talk.End();
        EXPECT_FALSE(fs::exists(talk.Helper().Directory() / "kessil_log.out"));
    }
}

WideString PipePath(const HelperRun &run)
{
    if (on_windows)
        return uR"(\\.\pipe\)" + run.Directory().filename().u16string();
    return platform::FromUtf8((run.Directory() / "pipe").string());
}

std::string Refusal(const WideString &reason, const WideString &pipe)
{
    return Printed(reason + u" (" + pipe + u")");
}

// All three at once, because each takes half a minute. On Windows only the last of them is waited for.
TEST(Attach, WaitsHalfAMinuteForThePipe)
{
    const auto before = std::chrono::steady_clock::now();
    HelperRun absent(1);
    HelperRun refused(1);
    HelperRun busy(1);
    PipeEnd pipe(PipePath(busy));
    pipe.Occupy();
    if (!on_windows)
        std::ofstream(refused.Directory() / "pipe") << "no socket";
    absent.Start({PipePath(absent)});
    refused.Start({PipePath(refused)});
    busy.Start({PipePath(busy)});
    busy.End();
    const auto taken = std::chrono::steady_clock::now() - before;
    absent.End();
    refused.End();

    EXPECT_GE(taken, std::chrono::milliseconds(29900));
    EXPECT_LE(taken, std::chrono::seconds(50));
    const WideString not_there = SystemText(u"No such file or directory", 2);
    EXPECT_EQ(absent.PlainLog(), Refusal(not_there, PipePath(absent)));
    EXPECT_EQ(refused.PlainLog(), Refusal(on_windows ? not_there : u"Connection refused", PipePath(refused)));
    EXPECT_EQ(busy.PlainLog(), Refusal(SystemText(u"Resource temporarily unavailable", 121), PipePath(busy)));
}

TEST(Attach, FindsAPipeThatIsFreeLater)
{
    HelperRun run(0);
    PipeEnd pipe(PipePath(run));
    pipe.Occupy();
    run.Start({PipePath(run), u"--log_level", u"debug"});
    run.AwaitLog("Ready for logging");
    pipe.Vacate();
    pipe.Accept();
    EXPECT_TRUE(pipe.Write(OrderlyStop()));
    EXPECT_EQ(pipe.Read(1), Bytes());
}

TEST(Attach, FailsAtOnceForANameThatCanBeNoPipe)
{
    HelperRun run(1);
    const std::string name = on_windows ? "no pipe at all" : "/tmp/" + std::string(103, 'x');
    run.Start({platform::FromUtf8(name), u"--log_level", u"debug"});
    run.End();
    const std::string ready = "kessil debug: Ready for logging:  log_file==kessil_log.out, log_level==2\n";
    if (on_windows) // the code is the system's
        EXPECT_TRUE(run.PlainLog().starts_with(ready + "ERROR: '") && run.PlainLog().ends_with(" (" + name + ")'\n"));
    else
        EXPECT_EQ(run.PlainLog(), ready + "ERROR: 'File name too long (" + name + ")'\n");
}

} // namespace
} // namespace kessil::test
