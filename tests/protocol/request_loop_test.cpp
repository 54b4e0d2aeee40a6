#include "protocol/conversation.h"

#include <gtest/gtest.h>

#include <memory>

namespace kessil::test {
namespace {

// What a run at the debug level logs before its first request and behind its last.
const std::string begun = "kessil debug: Ready for logging:  log_file==kessil_log.out, log_level==2\n"
                          "kessil debug: Attached to comm\n";
const std::string pipe_closing = "commfunc debug: Closing handle m_hNamedPipe #\n";
const std::string section_closing = "commfunc debug: Closing handle m_hSharedMemory #\n";

// A pipe whose other end is gone, as the system puts it, and one that was closed on this side.
std::string GonePrinted()
{
    return Printed(SystemText(u"Broken pipe", 109));
}

std::string ClosedPrinted()
{
    return Printed(SystemText(u"Bad file descriptor", 6));
}

TEST(OrderlyStop, EndsWithoutAnAnswer)
{
    Conversation talk(0);
    talk.Send(Hex("66 01"));
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun + "kessil debug: Exiting on account of command 1\n" + pipe_closing);
}

TEST(OrderlyStop, LeavesWhatComesBehindItUnread)
{
    Conversation talk(0);
    talk.Send(Hex("66 01 5A 00000000"));
    talk.ExpectClosed();
}

TEST(Command, ThatNamesNoCallGetsNoAnswerAndNoLine)
{
    Conversation talk(0);
    talk.Send(Hex("66 00 66 02 66 32 66 33 66 34 66 44 66 7E 66 80 66 FE 66 FF"));
    talk.Send(Hex("66 01"));
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun + "kessil debug: Exiting on account of command 1\n" + pipe_closing);
}

TEST(Command, MissingBecauseTheParentHungUp)
{
    Conversation talk(1);
    talk.Send(Hex("66"));
    talk.Close();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun + "commfunc error: ReadFile() returns with error\n" + pipe_closing +
                                            "kessil error: Failure to read command.\n"
                                            "kessil debug: Exiting on account of command read failure.\n");
}

TEST(Command, MissingBecauseTheStreamEnded)
{
    Conversation talk(1);
    talk.Send(Hex("66"));
    talk.EndStream();
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun +
                                            "kessil error: Failure to read command.\n"
                                            "kessil debug: Exiting on account of command read failure.\n" +
                                            pipe_closing);
}

TEST(HangUp, BetweenTwoRequests)
{
    Conversation talk(1);
    talk.Close();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun + "commfunc error: ReadFile() returns with error\n" + pipe_closing +
                                            "commfunc error: Back (error) from ReadDataFromPipe() mini\n" +
                                            GonePrinted() + "kessil error: Next request failed.\n");
}

TEST(HangUp, ShowsAtTheErrorLevelToo)
{
    Conversation talk(1, {});
    talk.Close();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), "commfunc error: ReadFile() returns with error\n"
                                        "commfunc error: Back (error) from ReadDataFromPipe() mini\n" +
                                            GonePrinted() + "kessil error: Next request failed.\n");
}

TEST(HangUp, InsideALength)
{
    Conversation talk(1);
    talk.Send(Hex("4C 0000"));
    talk.Close();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun + "commfunc error: ReadFile() returns with error\n" + pipe_closing +
                                            "commfunc error: Back (error) from ReadDataFromPipe() 0\n" + GonePrinted() +
                                            "kessil error: Next request failed.\n");
}

TEST(HangUp, InsideAPayloadAddsNoLineOfTheReaders)
{
    Conversation talk(1);
    talk.Send(Hex("4C 00000004 6100"));
    talk.Close();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun + "commfunc error: ReadFile() returns with error\n" + pipe_closing +
                                            GonePrinted() + "kessil error: Next request failed.\n");
}

TEST(EndOfStream, BetweenTwoRequests)
{
    Conversation talk(0);
    talk.EndStream();
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun + "kessil debug: Eof\n" + pipe_closing);
}

TEST(EndOfStream, BehindTheTypeByte)
{
    Conversation talk(0);
    talk.Send(Hex("4C"));
    talk.EndStream();
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun + "kessil debug: Eof\n" + pipe_closing);
}

TEST(EndOfStream, BehindTheLength)
{
    Conversation talk(0);
    talk.Send(Hex("4C 00000004"));
    talk.EndStream();
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun + "kessil debug: Eof\n" + pipe_closing);
}

// Missing bytes of a length count as FF, so a header that is cut never announces an empty payload.
TEST(EndOfStream, InsideALength)
{
    const std::string log = begun + pipe_closing + "commfunc error: ReadFile() returns with error\n" + ClosedPrinted() +
                            "kessil error: Next request failed.\n";
    for (const char *const begin : {"4C 00", "4C 0000", "4C 000000", "4C 000001", "52 000000", "53 0000"}) {
        Conversation talk(1);
        talk.Send(Hex(begin));
        talk.EndStream();
        talk.ExpectClosed();
        talk.End();
        EXPECT_EQ(talk.Helper().PlainLog(), log) << begin;
    }
}

// Half a payload is parsed, and its string has no end.
TEST(EndOfStream, InsideAString)
{
    for (const char *const request : {"4C 00000006 6100", "4C 00000006 6100 620000", "46 0000000A 0000 6600 73"}) {
        Conversation talk(1);
        talk.Send(Hex(request));
        talk.EndStream();
        talk.ExpectClosed();
        talk.End();
        EXPECT_TRUE(talk.Helper().PlainLog().ends_with(pipe_closing + Printed(u"Failed to serialise data")))
            << talk.Helper().PlainLog();
    }
}

TEST(EndOfStream, InsideAPayload)
{
    Conversation talk(1);
    talk.Send(Hex("5A 00000004 6100"));
    talk.EndStream();
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(),
              begun + pipe_closing + "kessil debug: Working with fallback\nERROR: Invalid request type - 'Z'\n");
}

TEST(UnknownType, IsReadWholeAndEndsTheRun)
{
    Conversation talk(1);
    talk.Send(Hex("5A 00000003 010203"));
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun +
                                            "kessil debug: Working with fallback\n"
                                            "ERROR: Invalid request type - 'Z'\n" +
                                            pipe_closing);
}

TEST(UnknownType, WaitsForTheRestOfItsFrame)
{
    Conversation talk(1);
    talk.Send(Hex("5A 00000003 0102"));
    talk.Close();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), begun + "commfunc error: ReadFile() returns with error\n" + pipe_closing +
                                            GonePrinted() + "kessil error: Next request failed.\n");
}

TEST(UnknownType, IsWhatAnswersAreOutsideOfAResize)
{
    for (const char type : {'S', 'E', 'M', 'B', '\x7F'}) {
        Conversation talk(1, {});
        talk.Send(Frame(type, {}));
        talk.ExpectClosed();
        talk.End();
        EXPECT_EQ(talk.Helper().PlainLog(), std::string("ERROR: Invalid request type - '") + type + "'\n");
    }
}

TEST(UnknownType, IsAZeroByteAlone)
{
    Conversation talk(1, {});
    talk.Send(Hex("00"));
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().Log(), std::string("ERROR: Invalid request type - '") + '\0' + "'\n");
}

TEST(MalformedRequest, EndsTheRunWithoutAnAnswer)
{
    const std::vector<Bytes> requests = {
        Hex("4C 00000000"),                // no name
        Hex("4C 00000001 00"),             // half a unit
        Hex("4C 00000003 6100 00"),        // half a terminator
        Hex("4C 00000004 6100 6200"),      // no terminator
        Hex("46 00000000"),                // no library
        Hex("46 00000002 0000"),           // no function
        Hex("46 00000004 0000 6600"),      // no signature
        Hex("46 00000006 0000 6600 7367"), // a signature without its terminator
        Hex("46 00000004 6100 6200"),      // a library without its terminator
        Hex("46 00000005 0000 666768"),    // a function without its terminator
    };
    const std::string log = begun + Printed(u"Failed to serialise data") + pipe_closing;
    for (const Bytes &request : requests) {
        Conversation talk(1);
        talk.Send(request);
        talk.ExpectClosed();
        talk.End();
        EXPECT_EQ(talk.Helper().PlainLog(), log) << Show(request);
    }
}

TEST(ExtraBytes, BehindTheLastFieldAreIgnored)
{
    Conversation talk(0);
    const Section section = Announce(talk, 64);
    talk.Send(Frame('L', Wide(TargetLibrary("plain")) + Hex("FF 00 FF")));
    talk.Expect(Hex("53 00000000"));
    talk.Send(Frame('F', Wide(u"") + Narrow("Answer") + Narrow("SIGNATURE_GetBackupType") + Hex("01 02 03")));
    talk.Expect(Hex("53 00000000"));
    section.Expect(0, Hex("0000002A"));
    talk.Send(Frame('R', Wide(section.Name()) + Be64(64) + Hex("FF")));
    talk.Expect(Hex("53 00000000"));
    talk.Send(OrderlyStop());
}

TEST(Pieces, ByteByByte)
{
    Conversation talk(0);
    const Section section = Section::Create(talk.SectionName(u'0'), 16);
    talk.SendEachByte(ResizeFrame(section.Name(), 16));
    talk.Expect(SuccessFrame());
    talk.SendEachByte(LoadFrame(TargetLibrary("plain")));
    talk.Expect(SuccessFrame());
    talk.SendEachByte(CallFrame(u"", "Answer", "SIGNATURE_GetBackupType"));
    talk.Expect(SuccessFrame());
    section.Expect(0, Hex("0000002A"));
    talk.SendEachByte(OrderlyStop());
}

TEST(Pieces, ManyRequestsInOneWrite)
{
    Conversation talk(0);
    const Section section = Section::Create(talk.SectionName(u'0'), 16);
    talk.Send(ResizeFrame(section.Name(), 16) + LoadFrame(TargetLibrary("plain")) +
              CallFrame(u"", "Answer", "SIGNATURE_GetBackupType") + Hex("66 32") + CallFrame(u"", "Nothing", "x") +
              CallFrame(u"", "Answer", "x") + OrderlyStop());
    talk.Expect(SuccessFrame());
    talk.Expect(SuccessFrame());
    talk.Expect(SuccessFrame());
    talk.Expect(ErrorFrame(0, 0, u"Failed to get function address..."));
    talk.Expect(FailureFrame(u"Invalid signature"));
    section.Expect(0, Hex("0000002A"));
    talk.ExpectClosed();
}

TEST(Pieces, APayloadLargerThanAnyBuffer)
{
    Conversation talk(0);
    const Section section = Announce(talk, 16);
    talk.Load(TargetLibrary("plain"));
    // Three megabytes behind the last field, in one frame, between two calls.
    talk.Call("GetBackupType");
    talk.Send(Frame('F', Wide(u"") + Narrow("Answer") + Narrow("SIGNATURE_GetBackupType") + CountUp(3 << 20)));
    talk.Expect(SuccessFrame());
    section.Expect(0, Hex("0000002A"));
    talk.Call("GetBackupType");
    section.Expect(0, Hex("00000007"));
    talk.Send(OrderlyStop());
}

TEST(HugeFrame, WhoseLengthCanTBeRoundedUpIsRefused)
{
    const std::string log =
        begun + Printed(u"Failed to allocate memory") + "kessil error: Next request failed.\n" + pipe_closing;
    for (const std::uint32_t length : {0xFFFFFC01u, 0xFFFFFFFFu}) {
        Conversation talk(1);
        talk.Send(Bytes{'L'} + Be32(length));
        talk.ExpectClosed();
        talk.End();
        EXPECT_EQ(talk.Helper().PlainLog(), log);
    }
}

// Whether there is memory for such a frame depends on the system. Where there is none the helper ends by itself, and
// where there is it waits for the frame, and ends when the parent closes the pipe.
TEST(HugeFrame, IsRefusedOrWaitedForButNeverHalfDead)
{
    const std::string refused =
        begun + Printed(u"Failed to allocate memory") + "kessil error: Next request failed.\n" + pipe_closing;
    const std::string waited = begun + "commfunc error: ReadFile() returns with error\n" + pipe_closing +
                               GonePrinted() + "kessil error: Next request failed.\n";
    for (const std::uint32_t length : {0x80000000u, 0xFFFFFC00u}) {
        Conversation talk(1);
        talk.Send(Bytes{'L'} + Be32(length));
        talk.Close();
        talk.End();
        const std::string log = talk.Helper().PlainLog();
        EXPECT_TRUE(log == refused || log == waited) << std::hex << length << "\n" << log;
    }
}

// Every way to cut a request off: each cut is a run of its own, and all of them run at once.
void CutEverywhere(const Bytes &request)
{
    std::vector<std::unique_ptr<Conversation>> talks;
    for (std::size_t cut = 0; cut < request.size(); ++cut) {
        talks.push_back(std::make_unique<Conversation>(1));
        talks.back()->Send(First(cut, request));
        talks.back()->Close();
    }
    for (const auto &talk : talks) {
        talk->End();
        const std::string log = talk->Helper().PlainLog();
        EXPECT_TRUE(log.ends_with(GonePrinted() + "kessil error: Next request failed.\n")) << log;
        EXPECT_EQ(log.find("Working"), std::string::npos) << log;
    }
}

TEST(Cut, ALoadAtEveryByte)
{
    CutEverywhere(LoadFrame(u"no_such"));
}

TEST(Cut, ALoadOfTheSecondGenerationAtEveryByte)
{
    CutEverywhere(LoadAltFrame("no_such"));
}

TEST(Cut, ACallAtEveryByte)
{
    CutEverywhere(CallFrame(u"", "Answer", "SIGNATURE_GetBackupType"));
}

TEST(Cut, ASectionAtEveryByte)
{
    CutEverywhere(ResizeFrame(u"kessil", 1));
}

// The parent closes the pipe with that much of the answer read. The system may report what is left unread in a text of
// its own, and a helper that comes late finds the pipe closed while it writes.
void HangUpInsideTheAnswer(const Bytes &request, const Bytes &answer)
{
    for (std::size_t taken = 0; taken <= answer.size(); ++taken) {
        Conversation talk(1);
        const Section section = Announce(talk, 16);
        talk.Load(TargetLibrary("plain"));
        talk.Send(request);
        talk.Expect(First(taken, answer));
        talk.Close();
        talk.End();
        const std::string log = talk.Helper().PlainLog();
        EXPECT_TRUE(log.ends_with("kessil error: Next request failed.\n")) << log;
        EXPECT_NE(log.find("commfunc error: Back (error) from ReadDataFromPipe() mini\nERROR: '"), std::string::npos)
            << log;
    }
}

TEST(Cut, ASuccessAtEveryByte)
{
    HangUpInsideTheAnswer(CallFrame(u"", "Answer", "SIGNATURE_GetBackupType"), SuccessFrame());
}

TEST(Cut, AFailureAtEveryByte)
{
    HangUpInsideTheAnswer(CallFrame(u"x", "y", "z"),
                          Hex("45 0000003C 00000000 00000000"
                              "4600 6100 6900 6C00 6500 6400 2000 7400 6F00 2000 6600 6900 6E00 6400 2000"
                              "6C00 6900 6200 7200 6100 7200 7900 2E00 2E00 2E00 0000"));
}

} // namespace
} // namespace kessil::test
