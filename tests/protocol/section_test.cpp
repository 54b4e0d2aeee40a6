#include "platform/last_error.h"
#include "protocol/conversation.h"
#include "protocol/recorder.h"

#include <gtest/gtest.h>

namespace kessil::test {
namespace {

const std::string next_request_failed = "kessil error: Next request failed.\n";

// A call of 44 bytes of in-list whose out-list may need 56, and what it leaves behind in a section that is as large.
Bytes ReadFileInList()
{
    return Hex("0000000000000001 0000000000000002"
               "00000010 00000000"
               "A0A1A2A3A4A5A6A7A8A9AAABACADAEAF"
               "00000010");
}

const Bytes read_file = CallFrame(u"", "VornReadFile", "SIGNATURE_VornReadFile");
const std::u16string read_file_failure = u"Failed to serialise output (Process_VornReadFile)";

// A conversation in which the helper's own growth comes next: the library is loaded, and the section of 44 bytes, one
// that ends in the digit, holds the in-list.
struct Growing
{
    explicit Growing(std::uint32_t exit_code, char16_t digit = u'7', Place place = Place::Here())
        : talk(exit_code, {u"--log_level", u"error"}, place), section(Announce(talk, 44, digit, place))
    {
        talk.Load(TargetLibrary("vorn_recorder"), place);
        section.Put(0, ReadFileInList());
        talk.Send(read_file, place);
        talk.Expect(ResizeFrame(talk.SectionName(digit == u'0' ? u'1' : u'0'), 56), place);
    }

    Conversation talk;
    Section section;
};

// What the call leaves in a section: the in-list, a count and a result of 0.
Bytes ReadFileOutList()
{
    return ReadFileInList() + Hex("00000000 00000000");
}

TEST(ParentsSection, IsOpenedAndAnswered)
{
    Conversation talk(0);
    Section section = Section::Create(talk.SectionName(u'7'), 16);
    talk.Send(ResizeFrame(section.Name(), 16));
    talk.Expect(Hex("53 00000000"));
    talk.Load(TargetLibrary("plain"));
    talk.Call("GetBackupType");
    section.Expect(0, Hex("00000007 00000000 00000000 00000000"));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_TRUE(talk.Helper().PlainLog().ends_with("kessil debug: Exiting on account of command 1\n"
                                                   "commfunc debug: Closing handle m_hSharedMemory #\n"
                                                   "commfunc debug: Closing handle m_hNamedPipe #\n"));
}

TEST(ParentsSection, IsReplacedByTheNext)
{
    Conversation talk(0);
    const Section first = Announce(talk, 16, u'3');
    const Section second = Announce(talk, 16, u'4');
    talk.Load(TargetLibrary("plain"));
    talk.Call("GetBackupType");
    first.Expect(0, Hex("00000000"));
    second.Expect(0, Hex("00000007"));
    talk.Send(ResizeFrame(first.Name(), 16));
    talk.Expect(SuccessFrame());
    talk.Send(CallFrame(u"", "Answer", "SIGNATURE_GetBackupType"));
    talk.Expect(SuccessFrame());
    first.Expect(0, Hex("0000002A"));
    second.Expect(0, Hex("00000007"));
    talk.Send(OrderlyStop());
}

TEST(ParentsSection, MayBeSmallerThanTheObject)
{
    Conversation talk(0);
    Section section = Section::Create(talk.SectionName(u'7'), 64);
    section.Put(0, Repeat(0x55, 64));
    talk.Send(ResizeFrame(section.Name(), 7));
    talk.Expect(SuccessFrame());
    talk.Load(TargetLibrary("plain"));
    talk.Call("GetBackupType");
    section.Expect(0, Hex("00000007 55555555"));
    talk.Send(OrderlyStop());
}

TEST(ParentsSection, HasItsSizeTakenModulo32Bits)
{
    Conversation talk(0);
    Section section = Section::Create(talk.SectionName(u'7'), 64);
    talk.Send(Frame('R', Wide(section.Name()) + Hex("00000001 0000002C")));
    talk.Expect(SuccessFrame());
    talk.Load(TargetLibrary("vorn_recorder"));
    section.Put(0, ReadFileInList());
    // 44 bytes hold the in-list but not the 56 that the out-list may need.
    talk.Send(read_file);
    talk.Expect(ResizeFrame(talk.SectionName(u'0'), 56));
    const Section grown = Section::Open(talk.SectionName(u'0'), 56);
    talk.Send(SuccessFrame());
    talk.Expect(SuccessFrame());
    grown.Expect(0, ReadFileOutList());
    talk.Send(OrderlyStop());
}

TEST(ParentsSection, OfNoBytesHoldsNothing)
{
    for (const char *size : {"0000000000000000", "0000000100000000", "FFFFFFFF00000000"}) {
        Conversation talk(0);
        Section section = Section::Create(talk.SectionName(u'7'), 64);
        section.Put(0, ReadFileInList());
        talk.Send(Frame('R', Wide(section.Name()) + Hex(size)));
        talk.Expect(SuccessFrame());
        talk.Load(TargetLibrary("vorn_recorder"));
        talk.Send(read_file);
        talk.Expect(FailureFrame(u"Failed to serialise input (Process_VornReadFile)"));
        talk.Send(OrderlyStop());
    }
}

TEST(ParentsSection, ThatDoesNotExistIsRefusedAndEndsTheRun)
{
    Conversation talk(1, {});
    const Section section = Announce(talk, 16, u'3');
    talk.Send(ResizeFrame(talk.SectionName(u'7'), 16));
    const WideString reason = SystemText(u"No such file or directory", 2);
    talk.Expect(FailureFrame(reason));
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), Printed(reason) + next_request_failed);
}

TEST(ParentsSection, SmallerThanAnnouncedIsRefusedAndEndsTheRun)
{
    Conversation talk(1, {});
    const Section section = Section::Create(talk.SectionName(u'7'), 4096);
    talk.Send(ResizeFrame(section.Name(), 65536));
    const WideString reason = SystemText(u"Invalid argument", 5);
    talk.Expect(FailureFrame(reason));
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), Printed(reason) + next_request_failed);
}

TEST(ParentsSection, AnnouncedBadlyIsRefusedAndEndsTheRun)
{
    const std::vector<Bytes> payloads = {
        Hex(""),                                    // no name
        Hex("61"),                                  // half a unit
        Hex("6100 6200 0100"),                      // no terminator
        Hex("6100 0000"),                           // no size
        Hex("6100 0000 00000000 000000"),           // a byte too few
        First(5, Hex("6100 0000 0000000000000010")) // one byte of a size
    };
    for (const Bytes &payload : payloads) {
        Conversation talk(1, {});
        talk.Send(Frame('R', payload));
        talk.Expect(Hex("45 0000003A FFFFFFFF FFFFFFFF"
                        "4600 6100 6900 6C00 6500 6400 2000 7400 6F00 2000"
                        "7300 6500 7200 6900 6100 6C00 6900 7300 6500 2000 6400 6100 7400 6100 0000"));
        talk.ExpectClosed();
        talk.End();
        EXPECT_EQ(talk.Helper().PlainLog(), Printed(u"Failed to serialise data") + next_request_failed)
            << Show(payload);
    }
}

TEST(Growth, IsAnnouncedAndCarriesTheContentOver)
{
    Growing run(0);
    const Section grown = Section::Open(run.talk.SectionName(u'0'), 56);
    run.talk.Send(SuccessFrame());
    run.talk.Expect(SuccessFrame());
    grown.Expect(0, ReadFileOutList());
    run.section.Expect(0, ReadFileInList());
    run.talk.Send(OrderlyStop());
}

TEST(Growth, AlternatesBetweenTwoNames)
{
    Conversation talk(0, {});
    Section first = Announce(talk, 32, u'7');
    talk.Load(TargetLibrary("vorn_recorder"));
    // An in-list that just fits; the out-list may need 12 bytes more than its buffer, and the result.
    const auto grow = [&talk](Section &old, std::uint32_t item, std::uint32_t needed, char16_t digit) {
        old.Put(0, Be64(1) + Be64(2) + Be32(item));
        talk.Send(CallFrame(u"", "VornGetNextDirItem", "SIGNATURE_VornGetNextDirItem"));
        talk.Expect(ResizeFrame(talk.SectionName(digit), needed));
        Section grown = Section::Open(talk.SectionName(digit), needed);
        talk.Send(SuccessFrame());
        talk.Expect(SuccessFrame());
        grown.Expect(0, Be64(1) + Be64(2) + Be32(item));
        grown.Expect(24 + item, Be32(0));
        return grown;
    };
    Section second = grow(first, 8, 40, u'0');
    Section third = grow(second, 16, 48, u'1');
    Section fourth = grow(third, 24, 56, u'0');
    Section fifth = grow(fourth, 32, 64, u'1');
    talk.Send(OrderlyStop());
}

// Calls a function that reads nothing and writes `out`, in a helper that has no section.
void ExpectFirstSection(Conversation &talk, const std::string &function, const std::string &signature, const Bytes &out)
{
    const auto size = static_cast<std::uint32_t>(out.size());
    talk.Send(CallFrame(u"", function, signature));
    talk.Expect(Hex("52 0000000E 2E00 3100 0000") + Be64(size));
    const Section section = Section::Open(u".1", size);
    talk.Send(SuccessFrame());
    talk.Expect(SuccessFrame());
    section.Expect(0, out);
}

TEST(Growth, StartsAtNameDotOneWhereThereWasNoSection)
{
    // All helpers of a machine use that one name, so a single test covers all of it.
    {
        Conversation talk(0, {});
        talk.Load(TargetLibrary("vorn_recorder"));
        talk.Send(CallFrame(u"", "VornCloseSession", "SIGNATURE_VornCloseSession"));
        talk.Expect(FailureFrame(u"Failed to serialise input (Process_VornCloseSession)"));
        ExpectFirstSection(talk, "GetLibApiVersion", "SIGNATURE_GetLibApiVersion", Hex("00000002"));
        talk.Call("GetBackupType");
        talk.Send(OrderlyStop());
        talk.End();
        EXPECT_EQ(platform::OpenSection(u".1", 0), nullptr);
    }
    {
        const Recorder recorder("cwbSV_CreateErrHandle errors=0xE1E2E3E4 result=7\n");
        Conversation talk(0, {});
        talk.Load(TargetLibrary("cwb_recorder"));
        ExpectFirstSection(talk, "cwbSV_CreateErrHandle", "SIGNATURE_CWBSV_CREATEERRHANDLE", Hex("E1E2E3E4 00000007"));
        talk.Send(OrderlyStop());
        talk.End();
        EXPECT_EQ(recorder.Lines(), "cwbSV_CreateErrHandle\n");
    }
}

TEST(Growth, DoesNotHappenWhereTheBoundJustFits)
{
    Conversation talk(0, {});
    Section section = Announce(talk, 56);
    talk.Load(TargetLibrary("vorn_recorder"));
    section.Put(0, ReadFileInList());
    talk.Send(read_file);
    talk.Expect(SuccessFrame());
    section.Expect(0, ReadFileOutList());
    talk.Send(OrderlyStop());
}

TEST(Growth, HappensWhereTheBoundIsOneByteLarger)
{
    Conversation talk(0, {});
    Section section = Announce(talk, 55);
    talk.Load(TargetLibrary("vorn_recorder"));
    section.Put(0, ReadFileInList());
    talk.Send(read_file);
    talk.Expect(ResizeFrame(talk.SectionName(u'0'), 56));
    const Section grown = Section::Open(talk.SectionName(u'0'), 56);
    talk.Send(SuccessFrame());
    talk.Expect(SuccessFrame());
    grown.Expect(0, ReadFileOutList());
    talk.Send(OrderlyStop());
}

TEST(Growth, TakesTheNameOutOfTheSystemOnceItIsAnswered)
{
    Growing run(0);
    const Section grown = Section::Open(run.talk.SectionName(u'0'), 56);
    run.talk.Send(SuccessFrame());
    run.talk.Expect(SuccessFrame());
    const platform::SectionHandle again = platform::OpenSection(run.talk.SectionName(u'0'), 56);
    // On Windows a name stands for as long as anybody holds the section.
    EXPECT_EQ(again != nullptr, on_windows);
    if (again != nullptr)
        platform::CloseSection(again);
    run.talk.Send(OrderlyStop());
}

TEST(Growth, IsAgreedToByAnyFrameButAFailure)
{
    for (const char *answer :
         {"53 00000000", "53 00000002 0102", "4D 00000000", "5A 00000001 00", "4C 00000000", "66 00000000"}) {
        Growing run(0);
        const Section grown = Section::Open(run.talk.SectionName(u'0'), 56);
        run.talk.Send(Hex(answer));
        run.talk.Expect(SuccessFrame());
        grown.Expect(0, ReadFileOutList());
        run.talk.Send(OrderlyStop());
    }
}

TEST(Growth, RefusedByTheParentFailsTheCallAndKeepsTheSection)
{
    for (const Bytes &refusal : {ErrorFrame(1, 2, u"no room"), Hex("45 00000000"), Hex("45 00000008 0000000000000000"),
                                 Hex("45 0000000B 0000000000000000 610062")}) {
        Growing run(0);
        const Section grown = Section::Open(run.talk.SectionName(u'0'), 56);
        run.talk.Send(refusal);
        run.talk.Expect(FailureFrame(read_file_failure));
        grown.Expect(0, ReadFileInList() + Repeat(0, 12));
        // The helper is on the new section and goes on with it.
        run.talk.Send(read_file);
        run.talk.Expect(SuccessFrame());
        grown.Expect(0, ReadFileOutList());
        run.talk.Send(OrderlyStop());
    }
}

TEST(Growth, AnsweredByASectionOfTheParentsOwn)
{
    Growing run(0);
    Section own = Section::Create(run.talk.SectionName(u'5'), 100);
    own.Put(0, Repeat(0x55, 100));
    run.talk.Send(ResizeFrame(own.Name(), 100));
    run.talk.Expect(SuccessFrame());
    Section another = Section::Create(run.talk.SectionName(u'6'), 64);
    run.talk.Send(ResizeFrame(another.Name(), 64));
    run.talk.Expect(SuccessFrame());
    run.talk.Send(SuccessFrame());
    run.talk.Expect(SuccessFrame());
    // The out-list lies in the section that stood last. The buffer's data, which weren't copied, do not.
    another.Expect(0, Hex("0000000000000001 0000000000000002 00000010 00000000"
                          "00000000000000000000000000000000 00000010 00000000 00000000"));
    own.Expect(0, Repeat(0x55, 100));
    run.talk.Send(OrderlyStop());
}

TEST(Growth, AnsweredByASectionThatIsTooSmallFailsTheCall)
{
    Growing run(0);
    const Section small = Section::Create(run.talk.SectionName(u'5'), 47);
    run.talk.Send(ResizeFrame(small.Name(), 47));
    run.talk.Expect(SuccessFrame());
    run.talk.Send(SuccessFrame());
    run.talk.Expect(FailureFrame(read_file_failure));
    small.Expect(0, Hex("0000000000000001 0000000000000002 00000010 00000000"));
    run.talk.Send(OrderlyStop());
}

// The announcement is refused, which fails the call, and the reason isn't printed. The run goes on without a
// section, until a call that works on one.
TEST(Growth, AnsweredByASectionThatDoesNotExist)
{
    for (const char *function : {"VornReadFile", "GetBackupType"}) {
        Growing run(0);
        run.talk.Send(ResizeFrame(run.talk.SectionName(u'5'), 100));
        run.talk.Expect(FailureFrame(SystemText(u"No such file or directory", 2)));
        run.talk.Expect(FailureFrame(read_file_failure));
        run.talk.Load(TargetLibrary("plain"));
        run.talk.Send(CallFrame(TargetLibrary("vorn_recorder"), function, std::string("SIGNATURE_") + function));
        run.talk.ExpectClosed();
        run.talk.End();
        EXPECT_EQ(run.talk.Helper().PlainLog(), "");
    }
}

TEST(Growth, AnsweredByASectionThatDoesNotExistAndThenByOneThatDoes)
{
    Growing run(0);
    run.talk.Send(ResizeFrame(run.talk.SectionName(u'5'), 100));
    run.talk.Expect(FailureFrame(SystemText(u"No such file or directory", 2)));
    run.talk.Expect(FailureFrame(read_file_failure));
    const Section next = Announce(run.talk, 16, u'6');
    run.talk.Call("GetBackupType");
    run.talk.Send(OrderlyStop());
}

TEST(Growth, AnsweredByABadAnnouncement)
{
    Growing run(0);
    run.talk.Send(Hex("52 00000004 6100 0000"));
    run.talk.Expect(FailureFrame(u"Failed to serialise data"));
    run.talk.Expect(FailureFrame(read_file_failure));
    run.talk.Send(OrderlyStop());
}

TEST(Growth, AnsweredByTheEndOfTheStream)
{
    Growing run(0);
    run.talk.EndStream();
    run.talk.Expect(FailureFrame(read_file_failure));
    if (on_windows) // where an end of stream is over once it was read
        run.talk.Send(OrderlyStop());
    run.talk.ExpectClosed();
    run.talk.End();
    EXPECT_EQ(run.talk.Helper().PlainLog(), "");
}

// Missing bytes of the length count as FF: half an answer is no agreement.
TEST(Growth, AnsweredByTheEndOfTheStreamInsideAnAnswer)
{
    Growing run(1);
    run.talk.Send(Hex("53 0000"));
    run.talk.EndStream();
    run.talk.ExpectClosed();
    run.talk.End();
    EXPECT_EQ(run.talk.Helper().PlainLog(), "commfunc error: ReadFile() returns with error\n"
                                            "commfunc error: Back (error) from ReadDataFromPipe() 1\n"
                                            "commfunc error: Failed on write\n"
                                            "commfunc error: ReadFile() returns with error\n"
                                            "commfunc error: Back (error) from ReadDataFromPipe() mini\n" +
                                                Printed(SystemText(u"Bad file descriptor", 6)) + next_request_failed);
}

// The payload's rest is no refusal's text, but the refusal stands; and with the pipe the section was given up too.
TEST(Growth, AnsweredByTheEndOfTheStreamInsideARefusal)
{
    Growing run(1);
    run.talk.Send(Hex("45 0000000A FFFFFFFF"));
    run.talk.EndStream();
    run.talk.ExpectClosed();
    run.talk.End();
    EXPECT_EQ(run.talk.Helper().PlainLog(), "commfunc error: Failed on write\n"
                                            "commfunc error: ReadFile() returns with error\n"
                                            "commfunc error: Back (error) from ReadDataFromPipe() mini\n" +
                                                Printed(SystemText(u"Bad file descriptor", 6)) + next_request_failed);
}

// An agreement with half a payload is one; but with the pipe the section was given up, and the results have no place.
TEST(Growth, AnsweredByTheEndOfTheStreamInsideAnAgreement)
{
    Growing run(0);
    run.talk.Send(Hex("53 00000004 0000"));
    run.talk.EndStream();
    run.talk.ExpectClosed();
    run.talk.End();
    EXPECT_EQ(run.talk.Helper().PlainLog(), "");
}

TEST(Growth, CutAtEveryByteOfItsAnswer)
{
    const std::string log = "commfunc error: ReadFile() returns with error\n"
                            "commfunc error: Back (error) from ReadDataFromPipe() 0\n"
                            "commfunc error: Failed on write\n"
                            "commfunc error: ReadFile() returns with error\n"
                            "commfunc error: Back (error) from ReadDataFromPipe() mini\n" +
                            Printed(SystemText(u"Bad file descriptor", 6)) + next_request_failed;
    for (std::size_t cut = 0; cut < SuccessFrame().size(); ++cut) {
        Growing run(1);
        run.talk.Send(First(cut, SuccessFrame()));
        run.talk.Close();
        run.talk.End();
        EXPECT_EQ(run.talk.Helper().PlainLog(), log);
    }
}

TEST(Growth, CutInsideThePayloadOfItsAnswer)
{
    Growing run(1);
    run.talk.Send(Hex("45 00000010 FFFFFFFF"));
    run.talk.Close();
    run.talk.End();
    EXPECT_NE(run.talk.Helper().PlainLog().find("commfunc error: Back (error) from ReadDataFromPipe() 1\n"),
              std::string::npos);
}

TEST(Growth, CutAtEveryByteOfItsAnnouncement)
{
    for (std::size_t taken = 0; taken < 40; taken += 3) {
        Conversation talk(1, {});
        Section section = Announce(talk, 44);
        talk.Load(TargetLibrary("vorn_recorder"));
        section.Put(0, ReadFileInList());
        talk.Send(read_file);
        talk.Expect(First(taken, ResizeFrame(talk.SectionName(u'0'), 56)));
        talk.Close();
        talk.End();
        EXPECT_TRUE(talk.Helper().PlainLog().ends_with(next_request_failed)) << talk.Helper().PlainLog();
    }
}

TEST(Growth, ThatCanTBeMadeTakesTheChannelDown)
{
    Conversation talk(1, {});
    Section section = Announce(talk, 44);
    const TakenName taken(talk.SectionName(u'0'));
    talk.Load(TargetLibrary("vorn_recorder"));
    section.Put(0, ReadFileInList());
    talk.Send(read_file);
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), "commfunc error: Failed on write\n"
                                        "commfunc error: ReadFile() returns with error\n"
                                        "commfunc error: Back (error) from ReadDataFromPipe() mini\n" +
                                            Printed(SystemText(u"Bad file descriptor", 6)) + next_request_failed);
}

TEST(Growth, OnANameThatASectionHas)
{
    // On Windows the new section is the one that is there; elsewhere a name that is taken can't be used.
    Conversation talk(on_windows ? 0 : 1, {});
    Section section = Announce(talk, 44);
    const Section there = Section::Create(talk.SectionName(u'0'), 64);
    talk.Load(TargetLibrary("vorn_recorder"));
    section.Put(0, ReadFileInList());
    talk.Send(read_file);
    if (on_windows) {
        talk.Expect(ResizeFrame(talk.SectionName(u'0'), 56));
        talk.Send(SuccessFrame());
        talk.Expect(SuccessFrame());
        there.Expect(0, ReadFileOutList());
        talk.Send(OrderlyStop());
    } else {
        talk.ExpectClosed();
    }
}

// The parent takes the memory of the new section away while the helper waits for its answer: the write of the out-list
// faults, and the run ends as after a fault in a library.
TEST(Growth, IntoASectionThatTheParentShrinks)
{
    Growing run(0);
    if (ShrinkSection(run.talk.SectionName(u'0'))) {
        run.talk.Send(SuccessFrame());
        run.talk.ExpectClosed();
    } else { // no section loses its memory here
        run.talk.Send(SuccessFrame());
        run.talk.Expect(SuccessFrame());
        run.talk.Send(OrderlyStop());
    }
    run.talk.End();
    EXPECT_EQ(run.talk.Helper().PlainLog(), "");
}

TEST(ParentsSection, ShrunkBetweenTwoCalls)
{
    Conversation talk(0, {});
    const Section section = Announce(talk, 44);
    talk.Load(TargetLibrary("plain"));
    talk.Call("GetBackupType");
    const bool shrunk = ShrinkSection(section.Name());
    talk.Send(CallFrame(u"", "GetBackupType", "SIGNATURE_GetBackupType"));
    if (shrunk) {
        talk.ExpectClosed();
    } else {
        talk.Expect(SuccessFrame());
        talk.Send(OrderlyStop());
    }
}

// A grown section is never made smaller, and what doesn't fit into one page doesn't change anything.
TEST(Growth, ToMegabytes)
{
    Conversation talk(0, {});
    constexpr std::uint32_t item = 3 << 20;
    Section section = Announce(talk, 24 + item);
    talk.Load(TargetLibrary("vorn_recorder"));
    section.Put(0, Be64(1) + Be64(2) + Be32(item));
    section.Put(24, CountUp(item));
    talk.Send(CallFrame(u"", "VornGetNextDirItem", "SIGNATURE_VornGetNextDirItem"));
    talk.Expect(ResizeFrame(talk.SectionName(u'0'), 32 + item));
    const Section grown = Section::Open(talk.SectionName(u'0'), 32 + item);
    talk.Send(SuccessFrame());
    talk.Expect(SuccessFrame());
    EXPECT_TRUE(grown.Get(24, item) == CountUp(item));
    grown.Expect(24 + item, Be32(0));
    talk.Call("GetBackupType");
    talk.Send(OrderlyStop());
}

} // namespace
} // namespace kessil::test
