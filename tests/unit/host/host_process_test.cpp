#include "host/host_process.h"

#include "fakes/fake_guard.h"
#include "fakes/fake_system_version.h"
#include "host/logon.h"
#include "marshal/replies.h"
#include "unit/channel_fixture.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

void Answer(CIPCCommunication &channel, void * /*function*/)
{
    SendSuccessReply(channel);
}

void ThrowOwn(CIPCCommunication & /*channel*/, void * /*function*/)
{
    throw 7;
}

void ThrowBadAlloc(CIPCCommunication & /*channel*/, void * /*function*/)
{
    throw std::bad_alloc();
}

void Fault(CIPCCommunication & /*channel*/, void * /*function*/)
{
    RaiseFakeFault();
}

void NoHook(CIPCCommunication & /*channel*/, const WideString & /*name*/, platform::ModuleHandle /*module*/) {}

constexpr std::array rows = {SignatureRow{"ANSWERS", Answer, Answer}, SignatureRow{"THROWS", ThrowOwn, ThrowOwn},
                             SignatureRow{"ALLOCATES", ThrowBadAlloc, ThrowBadAlloc},
                             SignatureRow{"FAULTS", Fault, Fault}};

constexpr std::array commands = {CommandRow{3, "ANSWERS", "one"}, CommandRow{4, "THROWS", "one"},
                                 CommandRow{5, "ALLOCATES", "one"}, CommandRow{6, "FAULTS", "one"}};

class HostTest : public FakesTest
{
protected:
    HostTest()
    {
        os_major_version = 0;
        std::filesystem::remove(LogPath());
        options.exe_path = u"kessil";
        options.pipe_name = u"the pipe";
        options.out_file = LogPath().string();
        options.log_level = 2;
        fake_module.Add(u"a", {{"one", this}});
        fake_module.Add(u"b", {{"one", this}});
        fake_module.Add(u"c", {{"one", this}});
    }
    ~HostTest() override { std::filesystem::remove(LogPath()); }

    static std::filesystem::path LogPath()
    {
        std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        std::replace(name.begin(), name.end(), '/', '_');
        return std::filesystem::temp_directory_path() / ("kessil_host_" + name + ".log");
    }

    // The whole run. Standard output and error are the log file until it ends, and then what they were before.
    int Run(AfterLoadHook hook = NoHook)
    {
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const int exit_code = RunHost(options, {rows, commands, hook});
        std::fflush(stdout);
        static_cast<void>(::testing::internal::GetCapturedStdout());
        static_cast<void>(::testing::internal::GetCapturedStderr());
        std::ifstream file(LogPath());
        output.assign(std::istreambuf_iterator<char>(file), {});
        return exit_code;
    }

    void DeliverLoads(std::initializer_list<const char16_t *> names)
    {
        for (const char16_t *name : names)
            fake_pipe.Deliver(LoadFrame(name));
    }

    void DeliverAltLoads(std::initializer_list<std::string_view> names)
    {
        for (const std::string_view name : names)
            fake_pipe.Deliver(LoadAltFrame(name));
    }

    // The calls from the release of the first library on.
    static std::vector<std::string> CallsOfTheEnd()
    {
        const auto first = std::find_if(call_log.calls.begin(), call_log.calls.end(),
                                        [](const std::string &call) { return call.rfind("FreeModule", 0) == 0; });
        return {first, call_log.calls.end()};
    }

    CHostOptions options;
    std::string output;
};

TEST_F(HostTest, OrderlyRunFromStartToStop)
{
    DeliverLoads({u"b", u"a"});
    fake_pipe.Deliver(CallFrame(u"b", "one", "ANSWERS"));
    fake_pipe.Deliver(Hex("66 01"));
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(call_log.calls, ElementsAre("ConnectPipe the pipe 30000", "PrepareGuard", "LoadModule b", "WritePipe 5",
                                            "LoadModule a", "WritePipe 5", "FindExport one", "WritePipe 5",
                                            "FreeModule a", "FreeModule b", "ClosePipe"));
    EXPECT_THAT(Logged(),
                ElementsAre("debug kessil: Ready for logging:  log_file==" + options.out_file + ", log_level==2",
                            "debug kessil: Attached to comm", "debug kessil: Working with LoadLib:  load_lib_cmd==b",
                            "debug kessil: Working with LoadLib:  load_lib_cmd==a",
                            "debug kessil: Exiting on account of command 1",
                            "debug commfunc: Closing handle m_hNamedPipe 0x71"));
}

TEST_F(HostTest, LogGoesToTheFile)
{
    fake_pipe.Deliver(Hex("66 01"));
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(output, HasSubstr("T00000a2c 2019-06-19T12:16:44.120 kessil:"));
    EXPECT_THAT(output, HasSubstr(" debug: Attached to comm\n"));
}

TEST_F(HostTest, LogFileIsAppendedTo)
{
    std::ofstream(LogPath()) << "an earlier run\n";
    fake_pipe.Deliver(Hex("66 01"));
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(output.rfind("an earlier run\n", 0), 0u);
    EXPECT_THAT(output, HasSubstr("Attached to comm"));
}

TEST_F(HostTest, LevelOneIsSilentAboutTheStory)
{
    options.log_level = 1;
    fake_pipe.Deliver(Hex("66 01"));
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Logged(), IsEmpty());
    EXPECT_EQ(output, "");
}

// In a process of its own, because the process has no standard output afterwards.
TEST_F(HostTest, LogFileThatCantBeOpenedStopsNothing)
{
    options.out_file = (LogPath() / "no" / "such" / "directory").string();
    fake_pipe.Deliver(LoadFrame(u"a") + Hex("66 01"));
    const auto run = [this] {
        const int exit_code = RunHost(options, {rows, commands, NoHook});
        std::_Exit(exit_code == 0 && fake_pipe.written == SuccessFrame() ? 42 : 1);
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(42), "");
}

TEST_F(HostTest, PipeThatCantBeOpenedIsExitCodeOneAndAPrintInTheLogFile)
{
    fake_pipe.connect_code = 121;
    options.log_level = 1;
    EXPECT_EQ(Run(), 1);
    EXPECT_THAT(output, MatchesRegex("ERROR: 'text of 121\r?\n \\(the pipe\\)'\r?\n"));
    EXPECT_THAT(call_log.calls, ElementsAre("ConnectPipe the pipe 30000"));
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(HostTest, SystemVersionIsReadBeforeTheAttach)
{
    fake_system_version.major = 6;
    fake_pipe.connect_code = 121;
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(os_major_version, 6u);
}

TEST_F(HostTest, SystemWithoutAVersionLeavesZero)
{
    fake_system_version.fails = true;
    fake_pipe.Deliver(Hex("66 01"));
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(os_major_version, 0u);
}

TEST_F(HostTest, ReportedFailureIsExitCodeOneAndReleasesInOrder)
{
    DeliverLoads({u"b", u"a"});
    fake_pipe.Deliver(Frame('Z', {}));
    EXPECT_EQ(Run(), 1);
    EXPECT_THAT(output, HasSubstr("ERROR: Invalid request type - 'Z'\n"));
    ASSERT_GE(call_log.calls.size(), 3u);
    EXPECT_EQ(std::vector<std::string>(call_log.calls.end() - 3, call_log.calls.end()),
              (std::vector<std::string>{"FreeModule a", "FreeModule b", "ClosePipe"}));
}

class ExceptionTest : public HostTest, public ::testing::WithParamInterface<const char *>
{};

INSTANTIATE_TEST_SUITE_P(Kinds, ExceptionTest, ::testing::Values("THROWS", "ALLOCATES"),
                         [](const auto &kind) { return std::string(kind.param); });

TEST_P(ExceptionTest, EndsSilentlyWithExitCodeZero)
{
    DeliverLoads({u"b", u"a"});
    fake_pipe.Deliver(CallFrame(u"a", "one", GetParam()));
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame() + SuccessFrame());
    EXPECT_THAT(call_log.calls,
                ElementsAre("ConnectPipe the pipe 30000", "PrepareGuard", "LoadModule b", "WritePipe 5", "LoadModule a",
                            "WritePipe 5", "FindExport one", "FreeModule a", "FreeModule b", "ClosePipe"));
    EXPECT_THAT(output, HasSubstr("Attached to comm"));
    EXPECT_THAT(output, Not(HasSubstr("ERROR")));
    EXPECT_EQ(Logged().back(), "debug commfunc: Closing handle m_hNamedPipe 0x71");
}

TEST_F(HostTest, FaultEndsSilentlyWithExitCodeZeroAndALimit)
{
    DeliverLoads({u"b", u"a"});
    fake_pipe.Deliver(CallFrame(u"a", "one", "FAULTS"));
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_guard.faults, 1u);
    EXPECT_EQ(fake_pipe.written, SuccessFrame() + SuccessFrame());
    EXPECT_THAT(call_log.calls, ElementsAre("ConnectPipe the pipe 30000", "PrepareGuard", "LoadModule b", "WritePipe 5",
                                            "LoadModule a", "WritePipe 5", "FindExport one", "EndWithin 2000 0",
                                            "FreeModule a", "FreeModule b", "ClosePipe"));
}

TEST_F(HostTest, ExceptionOfALibrarysEndLeavesTheOthersToBeReleased)
{
    DeliverLoads({u"a", u"b"});
    fake_pipe.Deliver(Frame('Z', {}));
    fake_module.on_free = [](const WideString &name) {
        if (name == u"a")
            throw 7;
    };
    EXPECT_EQ(Run(), 0);
    ASSERT_GE(call_log.calls.size(), 3u);
    EXPECT_EQ(std::vector<std::string>(call_log.calls.end() - 3, call_log.calls.end()),
              (std::vector<std::string>{"FreeModule a", "FreeModule b", "ClosePipe"}));
}

// The libraries' destructors run inside the guard, so that the rest is released all the same.
TEST_F(HostTest, FaultInALibrarysEndLeavesTheOthersToBeReleased)
{
    DeliverLoads({u"a", u"b", u"c"});
    fake_pipe.Deliver(Frame('Z', {}));
    fake_module.on_free = [](const WideString &name) {
        if (name != u"c")
            RaiseFakeFault();
    };
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_guard.faults, 2u);
    EXPECT_EQ(fake_module.loaded, 0u);
    ASSERT_GE(call_log.calls.size(), 6u);
    EXPECT_EQ(std::vector<std::string>(call_log.calls.end() - 6, call_log.calls.end()),
              (std::vector<std::string>{"FreeModule a", "EndWithin 2000 0", "FreeModule b", "EndWithin 2000 0",
                                        "FreeModule c", "ClosePipe"}));
}

TEST_F(HostTest, SecondGenerationIsReleasedBeforeTheFirst)
{
    DeliverLoads({u"b", u"a"});
    DeliverAltLoads({"c", "b"});
    fake_pipe.Deliver(Hex("66 03 66 01"));
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame() + SuccessFrame() + Be32(1) + Be32(1) + SuccessFrame());
    EXPECT_THAT(CallsOfTheEnd(),
                ElementsAre("FreeModule b", "FreeModule c", "FreeModule a", "FreeModule b", "ClosePipe"));
    EXPECT_EQ(fake_module.loaded, 0u);
}

TEST_F(HostTest, HookRunsAfterTheLoadsOfBothGenerations)
{
    static std::vector<std::string> hooked;
    hooked.clear();
    const AfterLoadHook hook = [](CIPCCommunication & /*channel*/, const WideString &name,
                                  platform::ModuleHandle /*module*/) { hooked.push_back(platform::ToUtf8(name)); };
    DeliverLoads({u"a", u"none"});
    DeliverAltLoads({"b", "none"});
    fake_pipe.Deliver(Hex("66 01"));
    EXPECT_EQ(Run(hook), 0);
    EXPECT_THAT(hooked, ElementsAre("a", "b"));
}

struct Misconduct
{
    const char *name;
    const char *command;
    std::size_t faults;
};

// What goes wrong in a call of the second generation ends the run just as in the first.
class CommandMisconductTest : public HostTest, public ::testing::WithParamInterface<Misconduct>
{};

INSTANTIATE_TEST_SUITE_P(Kinds, CommandMisconductTest,
                         ::testing::Values(Misconduct{"Throws", "66 04", 0}, Misconduct{"Allocates", "66 05", 0},
                                           Misconduct{"Faults", "66 06", 1}),
                         [](const auto &kind) { return std::string(kind.param.name); });

TEST_P(CommandMisconductTest, EndsSilentlyWithExitCodeZero)
{
    DeliverLoads({u"a"});
    DeliverAltLoads({"c", "b"});
    fake_pipe.Deliver(Hex(GetParam().command));
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_guard.faults, GetParam().faults);
    EXPECT_EQ(fake_pipe.written, SuccessFrame() + Be32(1) + Be32(1));
    EXPECT_THAT(CallsOfTheEnd(), ElementsAre("FreeModule b", "FreeModule c", "FreeModule a", "ClosePipe"));
    EXPECT_THAT(output, Not(HasSubstr("ERROR")));
}

// A fault in a destructor of a second-generation library leaves the rest of both to be released.
TEST_F(HostTest, FaultInAnEndOfTheSecondGenerationLeavesTheOthersToBeReleased)
{
    DeliverLoads({u"a"});
    DeliverAltLoads({"c", "b"});
    fake_pipe.Deliver(Frame('Z', {}));
    fake_module.on_free = [](const WideString &name) {
        if (name == u"b")
            RaiseFakeFault();
    };
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_guard.faults, 1u);
    EXPECT_THAT(CallsOfTheEnd(),
                ElementsAre("FreeModule b", "EndWithin 2000 0", "FreeModule c", "FreeModule a", "ClosePipe"));
}

TEST_F(HostTest, EndWithoutAFaultHasNoLimit)
{
    fake_pipe.Deliver(Hex("66 01"));
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(call_log.calls, ElementsAre("ConnectPipe the pipe 30000", "PrepareGuard", "ClosePipe"));
}

TEST_F(HostTest, GuardThatCantBePreparedStopsNothing)
{
    fake_guard.can_prepare = false;
    fake_pipe.Deliver(LoadFrame(u"a") + Hex("66 01"));
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

} // namespace
} // namespace kessil::test
