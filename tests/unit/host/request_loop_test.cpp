#include "host/request_loop.h"

#include "callers/library_caller.h"
#include "callers/library_caller_alt.h"
#include "channel/pipe_primitives.h"
#include "fakes/fake_environment.h"
#include "fakes/fake_last_error.h"
#include "fakes/fake_logon.h"
#include "fakes/fake_message_table.h"
#include "marshal/replies.h"
#include "support/heap_probe.h"
#include "unit/channel_fixture.h"

#include <algorithm>
#include <array>
#include <new>

namespace kessil::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

void Answer(CIPCCommunication &channel, void * /*function*/)
{
    SendSuccessReply(channel);
}

void Throw(CIPCCommunication & /*channel*/, void * /*function*/)
{
    throw std::bad_alloc();
}

// Reads a bare number and answers with the next one.
void Count(CIPCCommunication &channel, void * /*function*/)
{
    std::uint32_t number = 0;
    EXPECT_TRUE(ReadUInt32FromPipe(channel, number));
    EXPECT_TRUE(WriteUInt32ToPipe(channel, number + 1));
}

void NoHook(CIPCCommunication & /*channel*/, const WideString & /*name*/, platform::ModuleHandle /*module*/) {}

constexpr std::array rows = {SignatureRow{"SIG", Answer, nullptr}, SignatureRow{"THROWS", Throw, Throw},
                             SignatureRow{"COUNTS", nullptr, Count}, SignatureRow{"FRAMED", Answer, Answer}};

// The last two are lacking in the signatures and among the library's exports.
constexpr std::array commands = {CommandRow{2, "COUNTS", "one"}, CommandRow{3, "FRAMED", "one"},
                                 CommandRow{4, "THROWS", "one"}, CommandRow{254, "SIG", "one"},
                                 CommandRow{255, "COUNTS", "none"}};

class LoopTest : public ChannelTest
{
protected:
    // Runs the loop to its end; what it printed, the log's lines left out, is in `printed`.
    int Run()
    {
        RequestLoop loop(channel, caller, caller_alt, commands, error);
        ::testing::internal::CaptureStdout();
        int exit_code = -1;
        try {
            exit_code = loop.Run();
        } catch (...) {
            printed = ::testing::internal::GetCapturedStdout();
            throw;
        }
        printed = OwnLines(::testing::internal::GetCapturedStdout());
        return exit_code;
    }

    static std::string OwnLines(const std::string &output)
    {
        std::string own;
        for (std::size_t begin = 0; begin < output.size();) {
            const std::size_t end = std::min(output.find('\n', begin), output.size() - 1) + 1;
            if (output.compare(begin, 5, "T0000") != 0)
                own += output.substr(begin, end - begin);
            begin = end;
        }
        return own;
    }

    void Stop() { fake_pipe.Deliver(Hex("66 01")); }

    // Where the channel keeps its payloads, all of which fit into its first block.
    const unsigned char *PlaceOfPayloads()
    {
        fake_pipe.Deliver(Frame('z', Repeat(1, 12000)));
        char type = 0;
        unsigned char *data = nullptr;
        std::uint32_t size = 0;
        bool eof = false;
        EXPECT_TRUE(channel.GetNextRequest(type, data, size, eof, error));
        return data;
    }

    // Whether the channel has these bytes, in its payloads or in itself.
    bool ChannelHolds(const unsigned char *payload, const Bytes &bytes) const
    {
        const auto holds = [&bytes](const unsigned char *begin, const unsigned char *end) {
            return std::search(begin, end, bytes.begin(), bytes.end()) != end;
        };
        const auto *const object = reinterpret_cast<const unsigned char *>(&channel);
        return holds(payload, payload + 12000) || holds(object, object + sizeof channel);
    }

    CLibraryCaller caller{rows, NoHook};
    CLibraryCallerAlt caller_alt{rows, NoHook};
    std::string printed;
};

TEST_F(LoopTest, EndOfTheStreamBetweenRequestsIsExitCodeZero)
{
    fake_pipe.DeliverNothing();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(printed, "");
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Eof"));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

TEST_F(LoopTest, EndBehindATypeByteOrALengthIsTheSameEof)
{
    fake_pipe.Deliver(Hex("46"));
    fake_pipe.DeliverNothing();
    EXPECT_EQ(Run(), 0);
    fake_pipe.Deliver(Hex("46 00 00 00 01"));
    fake_pipe.DeliverNothing();
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Eof", "debug kessil: Eof"));
    EXPECT_EQ(printed, "");
}

TEST_F(LoopTest, ParentThatClosesThePipeIsExitCodeOne)
{
    fake_pipe.FailRead(109);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: 'text of 109\r\n'\n");
    EXPECT_THAT(Logged(), ElementsAre("error commfunc: ReadFile() returns with error",
                                      "debug commfunc: Closing handle m_hNamedPipe 0x71",
                                      "error commfunc: Back (error) from ReadDataFromPipe() mini",
                                      "error kessil: Next request failed."));
}

TEST_F(LoopTest, FrameThatBreaksOffWithinTheLengthIsExitCodeOne)
{
    fake_pipe.Deliver(Hex("4C 00 00"));
    fake_pipe.DeliverNothing();
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: 'text of 6\r\n'\n");
    EXPECT_EQ(Logged().back(), "error kessil: Next request failed.");
}

// No text that broke off passes for a whole one.
TEST_F(LoopTest, PayloadThatBreaksOffIsExitCodeOne)
{
    const Bytes load = LoadFrame(u"abcdef");
    for (std::size_t size = 6; size < load.size(); ++size) {
        CIPCCommunication fresh;
        fake_pipe = FakePipe();
        ASSERT_TRUE(fresh.Attach(u"pipe", error));
        fake_pipe.Deliver(First(size, load));
        fake_pipe.DeliverNothing();
        RequestLoop loop(fresh, caller, caller_alt, commands, error);
        ::testing::internal::CaptureStdout();
        const int exit_code = loop.Run();
        EXPECT_EQ(OwnLines(::testing::internal::GetCapturedStdout()), "ERROR: 'Failed to serialise data'\n") << size;
        EXPECT_EQ(exit_code, 1) << size;
    }
}

TEST_F(LoopTest, FrameThatIsTooLargeIsExitCodeOne)
{
    fake_pipe.Deliver(Hex("46 FF FF FF FF"));
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: 'Failed to allocate memory'\n");
    EXPECT_THAT(Logged(), ElementsAre("error kessil: Next request failed."));
}

TEST_F(LoopTest, RefusedSectionIsExitCodeOneAfterItsAnswer)
{
    fake_pipe.Deliver(Frame('R', Wide(u"s")));
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: 'Failed to serialise data'\n");
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise data"));
    EXPECT_THAT(Logged(), ElementsAre("error kessil: Next request failed."));
}

TEST_F(LoopTest, SectionIsNotSeenByTheLoop)
{
    fake_section.Add(u"s", 8);
    fake_pipe.Deliver(ResizeFrame(u"s", 8));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, OrderlyStopIsExitCodeZeroWithoutAReply)
{
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(printed, "");
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Exiting on account of command 1"));
    EXPECT_TRUE(fake_pipe.is_open);
}

TEST_F(LoopTest, CommandThatNamesNoCallGetsNoReplyAndNoLog)
{
    fake_pipe.Deliver(Hex("66 00 66 05 66 FC"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, CommandThatDoesNotComeIsExitCodeOne)
{
    fake_pipe.Deliver(Hex("66"));
    fake_pipe.FailRead(109);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "");
    EXPECT_THAT(Logged(), ElementsAre("error commfunc: ReadFile() returns with error",
                                      "debug commfunc: Closing handle m_hNamedPipe 0x71",
                                      "error kessil: Failure to read command.",
                                      "debug kessil: Exiting on account of command read failure."));
}

TEST_F(LoopTest, EndOfTheStreamBeforeTheCommandIsAFailureToo)
{
    fake_pipe.Deliver(Hex("66"));
    fake_pipe.DeliverNothing();
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "");
    EXPECT_THAT(Logged(), ElementsAre("error kessil: Failure to read command.",
                                      "debug kessil: Exiting on account of command read failure."));
}

// Unknown types.

class UnknownTypeTest : public LoopTest, public ::testing::WithParamInterface<char>
{};

INSTANTIATE_TEST_SUITE_P(Letters, UnknownTypeTest, ::testing::Values('Z', 'S', 'E', 'M', 'r', 'a'));

TEST_P(UnknownTypeTest, WholeFrameIsReadAndTheProcessEnds)
{
    fake_pipe.Deliver(Frame(GetParam(), Hex("01 02 03")));
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, std::string("ERROR: Invalid request type - '") + GetParam() + "'\n");
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Working with fallback"));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_TRUE(fake_pipe.IsReadOut());
}

TEST_F(LoopTest, ZeroByteIsAnUnknownType)
{
    fake_pipe.Deliver(Hex("00"));
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, std::string("ERROR: Invalid request type - '\0'\n", 34));
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Working with fallback"));
}

TEST_F(LoopTest, ByteAboveSevenBitsIsPrintedAsItCame)
{
    fake_pipe.Deliver(Hex("E6 00 00 00 00"));
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: Invalid request type - '\xE6'\n");
}

TEST_F(LoopTest, UnknownTypeWhosePayloadDoesNotComeIsAFailedRead)
{
    fake_pipe.Deliver(Hex("5A 00 00 00 02 01"));
    fake_pipe.FailRead(109);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: 'text of 109\r\n'\n");
    EXPECT_THAT(Logged(),
                ElementsAre("error commfunc: ReadFile() returns with error",
                            "debug commfunc: Closing handle m_hNamedPipe 0x71", "error kessil: Next request failed."));
}

// Loading.

TEST_F(LoopTest, LoadIsLoggedAfterItsParseAndAnsweredByTheCaller)
{
    fake_module.Add(u"a.dll", {});
    fake_pipe.Deliver(LoadFrame(u"a.dll"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Working with LoadLib:  load_lib_cmd==a.dll",
                                      "debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, LoadThatFailsLeavesTheLoopAtWork)
{
    fake_pipe.Deliver(LoadFrame(u"none") + LoadFrame(u"none"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written,
              ErrorFrame(0, 126, u"no such library\r\n") + ErrorFrame(0, 126, u"no such library\r\n"));
}

TEST_F(LoopTest, LoadWithoutATerminatorIsExitCodeOne)
{
    fake_pipe.Deliver(Frame('L', Hex("61 00 62")));
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: 'Failed to serialise data'\n");
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(Logged(), IsEmpty());
    EXPECT_THAT(call_log.calls, IsEmpty());
}

TEST_F(LoopTest, LoadWithoutAPayloadIsExitCodeOne)
{
    fake_pipe.Deliver(Hex("4C 00 00 00 00"));
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: 'Failed to serialise data'\n");
}

TEST_F(LoopTest, LoadIgnoresBytesBehindTheName)
{
    fake_module.Add(u"a", {});
    fake_pipe.Deliver(Frame('L', Wide(u"a") + Hex("01 02 03")));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

// Loading for the second generation.

const Bytes loaded = Hex("00 00 00 01");
const Bytes refused = Hex("FF FF FF FF");

TEST_F(LoopTest, LoadAltTakesTheWholePayloadForTheName)
{
    fake_module.Add(u"a.dll", {});
    fake_pipe.Deliver(LoadAltFrame("a.dll"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, loaded);
    EXPECT_EQ(call_log.calls.front(), "LoadModule a.dll");
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Working Alt with LoadLib:  load_lib_cmd==a.dll",
                                      "debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, LoadAltMakesAUnitOfEachByte)
{
    WideString name;
    Bytes payload;
    for (unsigned byte = 1; byte <= 255; ++byte) {
        name.push_back(static_cast<char16_t>(byte));
        payload.push_back(static_cast<unsigned char>(byte));
    }
    fake_module.Add(name, {});
    fake_pipe.Deliver(Frame('l', payload));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, loaded);
    EXPECT_EQ(Logged().front(),
              "debug kessil: Working Alt with LoadLib:  load_lib_cmd==" + std::string(payload.begin(), payload.end()));
}

TEST_F(LoopTest, LoadAltWithoutAPayloadAsksForTheEmptyName)
{
    fake_pipe.Deliver(Hex("6C 00 00 00 00"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, refused);
    EXPECT_EQ(call_log.calls.front(), "LoadModule ");
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Working Alt with LoadLib:  load_lib_cmd==",
                                      "error LibraryCaller: Load library failure:  no such library\r\n",
                                      "debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, LoadAltEndsTheNameAtAZeroByte)
{
    fake_module.Add(u"a", {});
    fake_pipe.Deliver(Frame('l', Hex("61 00 62")) + Frame('l', Hex("00 61")));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, loaded + refused);
    EXPECT_EQ(Logged().front(), "debug kessil: Working Alt with LoadLib:  load_lib_cmd==a");
}

TEST_F(LoopTest, LoadAltThatFailsLeavesTheLoopAtWork)
{
    fake_module.Add(u"a", {});
    fake_pipe.Deliver(LoadAltFrame("none") + LoadAltFrame("none") + LoadAltFrame("a"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, refused + refused + loaded);
}

TEST_F(LoopTest, LoadAltWhoseAnswerCantBeWrittenLeavesTheLoopAtWork)
{
    fake_module.Add(u"a", {});
    fake_pipe.Deliver(LoadAltFrame("a") + LoadAltFrame("none"));
    fake_pipe.FailWrite(232);
    fake_pipe.FailWrite(232);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

// Commands.

TEST_F(LoopTest, CommandCallsTheFirstLibraryOfTheSecondGeneration)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_pipe.DeliverInChunks(LoadAltFrame("a") + Hex("66 02 00 00 00 06") + Hex("66 02 FF FF FF FE"), 1);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, loaded + Be32(7) + Be32(0xFFFFFFFF));
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Working Alt with LoadLib:  load_lib_cmd==a",
                                      "debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, CommandOfAFirstGenerationHandlerIsAnsweredWithAFrame)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_pipe.Deliver(LoadAltFrame("a") + Hex("66 03"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, loaded + SuccessFrame());
}

TEST_F(LoopTest, CommandThatTheTableLacksLeavesNoTrace)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_pipe.Deliver(LoadAltFrame("a") + Hex("66 00 66 05 66 32 66 FD") + Hex("66 02 00 00 00 06"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, loaded + Be32(7));
    EXPECT_EQ(std::count(call_log.calls.begin(), call_log.calls.end(), "FindExport one"), 1);
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Working Alt with LoadLib:  load_lib_cmd==a",
                                      "debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, CommandThatCantBeCalledIsRefusedWithTheReasonInTheLog)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_pipe.Deliver(Hex("66 02") + LoadAltFrame("a") + Hex("66 FF") + Hex("66 FE"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, refused + loaded + refused + refused);
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Failed to find library...",
                                      "debug kessil: Working Alt with LoadLib:  load_lib_cmd==a",
                                      "error LibraryCaller: func_ptr==NULL", "error LibraryCaller: Invalid signature",
                                      "debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, RefusalOfACommandThatCantBeWrittenLeavesTheLoopAtWork)
{
    fake_pipe.Deliver(Hex("66 02 66 02"));
    fake_pipe.FailWrite(232);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, refused);
}

TEST_F(LoopTest, GenerationsDontSeeEachOthersLibraries)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_module.Add(u"b", {{"one", &printed}});
    fake_pipe.Deliver(LoadFrame(u"a") + Hex("66 03") + LoadAltFrame("b") + CallFrame(u"b", "one", "SIG") +
                      Hex("66 03") + CallFrame(u"", "one", "SIG"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame() + refused + loaded + ErrorFrame(0, 0, u"Failed to find library...") +
                                     SuccessFrame() + SuccessFrame());
}

// What is remembered of the last call is the first generation's own.
TEST_F(LoopTest, CommandsBetweenTwoEqualCallsChangeNothing)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_module.Add(u"b", {{"one", &printed}});
    const Bytes call = CallFrame(u"", "one", "SIG");
    fake_pipe.Deliver(LoadFrame(u"b") + call + LoadAltFrame("a") + Hex("66 03") + call);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame() + SuccessFrame() + loaded + SuccessFrame() + SuccessFrame());
    // Of the two calls only the first looks anything up.
    EXPECT_EQ(std::count(call_log.calls.begin(), call_log.calls.end(), "FindExport one"), 2);
}

TEST_F(LoopTest, ExceptionInACommandPassesThrough)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_pipe.Deliver(LoadAltFrame("a") + Hex("66 04"));
    EXPECT_THROW(Run(), std::bad_alloc);
    EXPECT_THAT(printed, Not(HasSubstr("ERROR")));
    EXPECT_EQ(fake_pipe.written, loaded);
}

// Logging on, the search path, message texts.

const Bytes logon = Frame('A', Wide(u"ada") + Wide(u"corp") + Wide(u"open sesame") + Wide(u"host") + Be32(1));

TEST_F(LoopTest, LogonIsAnsweredWithSuccess)
{
    fake_pipe.Deliver(logon);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_THAT(call_log.calls, Contains(HasSubstr("LogOnUser ada corp open sesame")));
    EXPECT_THAT(call_log.calls, Contains("LookUpPrivilege 'host' SeBackupPrivilege"));
    EXPECT_EQ(Logged().front(), "debug kessil: Working with Auth");
    EXPECT_THAT(Logged(), Not(Contains(HasSubstr("sesame"))));
}

TEST_F(LoopTest, LogonThatIsRefusedLeavesTheLoopAtWork)
{
    fake_logon.logon_code = 1326;
    fake_pipe.Deliver(logon + logon);
    Stop();
    EXPECT_EQ(Run(), 0);
    const Bytes refusal = FailureFrame(u"text of 1326\r\n (LogonUser)");
    EXPECT_EQ(fake_pipe.written, refusal + refusal);
    EXPECT_EQ(printed, "");
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Working with Auth", "debug kessil: Working with Auth",
                                      "debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, ImpersonationThatIsRefusedLeavesTheLoopAtWork)
{
    fake_logon.impersonate_code = 1314;
    fake_pipe.Deliver(logon);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"text of 1314\r\n (ImpersonateLoggedOnUser)"));
}

TEST_F(LoopTest, PrivilegeThatIsUnknownIsASuccess)
{
    fake_logon.privileges.clear();
    fake_pipe.Deliver(logon);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

const Bytes password = Plain({"s\0e\0s\0a\0m\0e\0", 12});

// The record has it while it is needed; the channel's block and what it read ahead have it no more.
TEST_F(LoopTest, PasswordIsGoneFromTheChannelBeforeItIsUsed)
{
    const unsigned char *const payload = PlaceOfPayloads();
    bool seen = false;
    fake_logon.on_log_on = [&] {
        EXPECT_FALSE(ChannelHolds(payload, password));
        seen = true;
    };
    fake_pipe.Deliver(logon);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_TRUE(seen);
}

TEST_F(LoopTest, PasswordOfARecordThatCanNotBeParsedIsGoneToo)
{
    const unsigned char *const payload = PlaceOfPayloads();
    fake_pipe.Deliver(Frame('A', Wide(u"") + Wide(u"") + Wide(u"sesame")));
    EXPECT_EQ(Run(), 1);
    EXPECT_FALSE(ChannelHolds(payload, password));
}

TEST_F(LoopTest, PathIsExtended)
{
    fake_environment.variables[u"PATH"] = u"old";
    fake_pipe.Deliver(PathFrame(u"new"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(fake_environment.variables[u"PATH"].substr(0, 3), u"new");
    EXPECT_THAT(Logged(),
                ElementsAre("debug kessil: Working with AddPath", "debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, PathThatIsMissingLeavesTheLoopAtWork)
{
    fake_environment.unset_code = 203;
    fake_pipe.Deliver(PathFrame(u"new"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"text of 203\r\n (getenv)"));
    EXPECT_EQ(printed, "");
}

TEST_F(LoopTest, MessageIsAlwaysAnError)
{
    fake_message_table.files[u"m"][5] = u"five";
    fake_pipe.Deliver(ErrorTextFrame(5, u"m") + ErrorTextFrame(5, u"n"));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written,
              ErrorFrame(0xFFFFFFFF, 5, u"five") + ErrorFrame(0xFFFFFFFF, 5, u"text of 126\r\n (n)"));
    EXPECT_EQ(printed, "");
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Working with ReadErrDLL", "debug kessil: Working with ReadErrDLL",
                                      "debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, MessageThatCanNotBeSentLeavesTheLoopAtWork)
{
    fake_pipe.Deliver(ErrorTextFrame(5, u"n"));
    fake_pipe.FailWrite(232);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

struct ServiceRequest
{
    const char *name;
    char type;
    Bytes payload;
    const char *logged;
};

// What the loop answers itself, and refuses to answer.
class ServiceTest : public LoopTest, public ::testing::WithParamInterface<ServiceRequest>
{};

INSTANTIATE_TEST_SUITE_P(All, ServiceTest,
                         ::testing::Values(ServiceRequest{"Logon", 'A', Behind(5, logon), "Working with Auth"},
                                           ServiceRequest{"Path", 'P', Wide(u"new"), "Working with AddPath"},
                                           ServiceRequest{"Message", 'X', Be32(5) + Wide(u"m"),
                                                          "Working with ReadErrDLL"}),
                         [](const auto &request) { return request.param.name; });

TEST_P(ServiceTest, PayloadCutAtAnyByteIsExitCodeOneWithoutAReply)
{
    const Bytes &payload = GetParam().payload;
    for (std::size_t size = 0; size < payload.size(); ++size) {
        Forget();
        fake_pipe.Deliver(Frame(GetParam().type, First(size, payload)));
        EXPECT_EQ(Run(), 1) << size;
        EXPECT_EQ(printed, "ERROR: 'Failed to serialise data'\n") << size;
        EXPECT_THAT(fake_pipe.written, IsEmpty()) << size;
        EXPECT_THAT(call_log.calls, IsEmpty()) << size;
        EXPECT_THAT(Logged(), ElementsAre(std::string("debug kessil: ") + GetParam().logged)) << size;
    }
}

// Unlike the answer to a message, which the look-up itself sends.
TEST_F(LoopTest, AnswerOfTheLoopThatCanNotBeWrittenIsExitCodeOneWithoutAPrint)
{
    fake_environment.variables[u"PATH"] = u"old";
    for (const Bytes &request : {logon, PathFrame(u"new"), PathFrame(u"")}) {
        fake_pipe.Deliver(request);
        fake_pipe.FailWrite(232);
        EXPECT_EQ(Run(), 1);
        EXPECT_EQ(printed, "");
        fake_environment.variables.clear();
    }
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

// Calling.

TEST_F(LoopTest, CallsAreServedUntilTheStop)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_pipe.DeliverInChunks(LoadFrame(u"a") + CallFrame(u"a", "one", "SIG") + CallFrame(u"", "one", "SIG") +
                                  CallFrame(u"b", "one", "SIG"),
                              3);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written,
              SuccessFrame() + SuccessFrame() + SuccessFrame() + ErrorFrame(0, 0, u"Failed to find library..."));
    EXPECT_EQ(printed, "");
}

// The same bytes again are the same call, as long as they still mean the same.
TEST_F(LoopTest, SameRequestIsLookedUpAgainOnceALibraryWasLoaded)
{
    fake_module.Add(u"b", {{"one", &printed}});
    fake_module.Add(u"a", {});
    const Bytes call = CallFrame(u"", "one", "SIG");
    fake_pipe.Deliver(LoadFrame(u"b") + call + call + LoadFrame(u"a") + call + call);
    Stop();
    EXPECT_EQ(Run(), 0);
    const Bytes missing = ErrorFrame(0, 0, u"Failed to get function address...");
    EXPECT_EQ(fake_pipe.written, SuccessFrame() + SuccessFrame() + SuccessFrame() + SuccessFrame() + missing + missing);
}

TEST_F(LoopTest, RefusedRequestIsRefusedAgainAndServedOnceItCanBe)
{
    fake_module.Add(u"a", {{"one", &printed}});
    const Bytes call = CallFrame(u"a", "one", "SIG");
    fake_pipe.Deliver(call + call + LoadFrame(u"a") + call);
    Stop();
    EXPECT_EQ(Run(), 0);
    const Bytes missing = ErrorFrame(0, 0, u"Failed to find library...");
    EXPECT_EQ(fake_pipe.written, missing + missing + SuccessFrame() + SuccessFrame());
}

TEST_F(LoopTest, RequestThatOnlyBeginsLikeTheLastOneIsItsOwn)
{
    fake_module.Add(u"a", {{"one", &printed}});
    const Bytes call = CallFrame(u"a", "one", "SIG");
    fake_pipe.Deliver(LoadFrame(u"a") + call + CallFrame(u"a", "one", "SIGN") + call + CallFrame(u"a", "on", "SIG") +
                      Frame('F', Wide(u"a") + Narrow("one") + Narrow("SIG") + Hex("00")));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame() + SuccessFrame() + FailureFrame(u"Invalid signature") + SuccessFrame() +
                                     ErrorFrame(0, 0, u"Failed to get function address...") + SuccessFrame());
}

TEST_F(LoopTest, EmptyCallFirstOfAllIsExitCodeOne)
{
    fake_pipe.Deliver(Hex("46 00 00 00 00"));
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: 'Failed to serialise data'\n");
}

TEST_F(LoopTest, CallWhoseRecordLacksItsLastTerminatorIsExitCodeOne)
{
    fake_pipe.Deliver(Frame('F', Wide(u"a") + Narrow("one") + Plain("SIG")));
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: 'Failed to serialise data'\n");
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(LoopTest, CallCutAtAnyByteIsExitCodeOne)
{
    const Bytes payload = Wide(u"a") + Narrow("one") + Narrow("SIG");
    for (std::size_t size = 0; size < payload.size(); ++size) {
        fake_pipe.Deliver(Frame('F', First(size, payload)));
        EXPECT_EQ(Run(), 1) << size;
        EXPECT_EQ(printed, "ERROR: 'Failed to serialise data'\n") << size;
    }
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

TEST_F(LoopTest, AnswerThatCantBeWrittenLeavesTheLoopAtWork)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_pipe.Deliver(LoadFrame(u"a") + CallFrame(u"a", "one", "SIG"));
    fake_pipe.FailWrite(232);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(printed, "");
}

TEST_F(LoopTest, ExceptionsPassThroughWithoutAReplyOrAPrint)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_pipe.Deliver(LoadFrame(u"a"));
    fake_pipe.Deliver(CallFrame(u"a", "one", "THROWS"));
    Logged().clear();
    EXPECT_THROW(Run(), std::bad_alloc);
    EXPECT_THAT(printed, Not(HasSubstr("ERROR")));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Working with LoadLib:  load_lib_cmd==a"));
}

// The frame fits into the channel's first block; the name that is taken out of it doesn't fit into memory.
TEST_F(LoopTest, RecordWithoutMemoryRaises)
{
    fake_pipe.Deliver(Frame('F', Wide(WideString(5000, u'x')) + Narrow("f") + Narrow("s")));
    RequestLoop loop(channel, caller, caller_alt, commands, error);
    const NoMemoryFrom limit(4096);
    EXPECT_THROW(loop.Run(), std::bad_alloc);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

// The text of one failure doesn't outlive the next.
TEST_F(LoopTest, ErrorIsTheLastOne)
{
    error = u"stale";
    fake_pipe.Deliver(Hex("46 FF FF FF FF"));
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: 'Failed to allocate memory'\n");
}

TEST_F(LoopTest, ErrorTextIsPrintedAsUtf8)
{
    fake_pipe.FailRead(109);
    fake_last_error.texts[109] = u"f\u00FCr \u20AC";
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printed, "ERROR: 'f\xC3\xBCr \xE2\x82\xAC'\n");
}

} // namespace
} // namespace kessil::test
