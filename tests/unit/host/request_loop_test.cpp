#include "host/request_loop.h"

#include "callers/library_caller.h"
#include "fakes/fake_last_error.h"
#include "marshal/replies.h"
#include "support/heap_probe.h"
#include "unit/channel_fixture.h"

#include <array>
#include <new>

namespace kessil::test {
namespace {

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

void NoHook(CIPCCommunication & /*channel*/, const WideString & /*name*/, platform::ModuleHandle /*module*/) {}

constexpr std::array rows = {SignatureRow{"SIG", Answer, nullptr}, SignatureRow{"THROWS", Throw, nullptr}};

class LoopTest : public ChannelTest
{
protected:
    // Runs the loop to its end; what it printed, the log's lines left out, is in `printed`.
    int Run()
    {
        RequestLoop loop(channel, caller, error);
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

    CLibraryCaller caller{rows, NoHook};
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
    const Bytes load = Frame('L', Wide(u"abcdef"));
    for (std::size_t size = 6; size < load.size(); ++size) {
        CIPCCommunication fresh;
        fake_pipe = FakePipe();
        ASSERT_TRUE(fresh.Attach(u"pipe", error));
        fake_pipe.Deliver(Bytes(load.begin(), load.begin() + static_cast<std::ptrdiff_t>(size)));
        fake_pipe.DeliverNothing();
        RequestLoop loop(fresh, caller, error);
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
    fake_pipe.Deliver(Hex("66 00 66 02 66 FF"));
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
    fake_pipe.Deliver(Frame('L', Wide(u"a.dll")));
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_THAT(Logged(), ElementsAre("debug kessil: Working with LoadLib:  load_lib_cmd==a.dll",
                                      "debug kessil: Exiting on account of command 1"));
}

TEST_F(LoopTest, LoadThatFailsLeavesTheLoopAtWork)
{
    fake_pipe.Deliver(Frame('L', Wide(u"none")) + Frame('L', Wide(u"none")));
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

// Calling.

TEST_F(LoopTest, CallsAreServedUntilTheStop)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_pipe.DeliverInChunks(Frame('L', Wide(u"a")) + CallFrame(u"a", "one", "SIG") + CallFrame(u"", "one", "SIG") +
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
    fake_pipe.Deliver(Frame('L', Wide(u"b")) + call + call + Frame('L', Wide(u"a")) + call + call);
    Stop();
    EXPECT_EQ(Run(), 0);
    const Bytes missing = ErrorFrame(0, 0, u"Failed to get function address...");
    EXPECT_EQ(fake_pipe.written, SuccessFrame() + SuccessFrame() + SuccessFrame() + SuccessFrame() + missing + missing);
}

TEST_F(LoopTest, RefusedRequestIsRefusedAgainAndServedOnceItCanBe)
{
    fake_module.Add(u"a", {{"one", &printed}});
    const Bytes call = CallFrame(u"a", "one", "SIG");
    fake_pipe.Deliver(call + call + Frame('L', Wide(u"a")) + call);
    Stop();
    EXPECT_EQ(Run(), 0);
    const Bytes missing = ErrorFrame(0, 0, u"Failed to find library...");
    EXPECT_EQ(fake_pipe.written, missing + missing + SuccessFrame() + SuccessFrame());
}

TEST_F(LoopTest, RequestThatOnlyBeginsLikeTheLastOneIsItsOwn)
{
    fake_module.Add(u"a", {{"one", &printed}});
    const Bytes call = CallFrame(u"a", "one", "SIG");
    fake_pipe.Deliver(Frame('L', Wide(u"a")) + call + CallFrame(u"a", "one", "SIGN") + call +
                      CallFrame(u"a", "on", "SIG") +
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
        fake_pipe.Deliver(Frame('F', Bytes(payload.begin(), payload.begin() + static_cast<std::ptrdiff_t>(size))));
        EXPECT_EQ(Run(), 1) << size;
        EXPECT_EQ(printed, "ERROR: 'Failed to serialise data'\n") << size;
    }
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

TEST_F(LoopTest, AnswerThatCantBeWrittenLeavesTheLoopAtWork)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_pipe.Deliver(Frame('L', Wide(u"a")) + CallFrame(u"a", "one", "SIG"));
    fake_pipe.FailWrite(232);
    Stop();
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(printed, "");
}

TEST_F(LoopTest, ExceptionsPassThroughWithoutAReplyOrAPrint)
{
    fake_module.Add(u"a", {{"one", &printed}});
    fake_pipe.Deliver(Frame('L', Wide(u"a")));
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
    RequestLoop loop(channel, caller, error);
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
