#include "protocol/family_rows.h"
#include "rows/ese_rows.h"

namespace kessil::test {
namespace {

constexpr auto library = "ese_recorder";

class Ese : public FamilyTest
{};

TEST_P(Ese, Answers)
{
    ExpectAnswer(GetParam(), library);
}

TEST_P(Ese, RefusesACutInList)
{
    ExpectRefusedInput(GetParam(), library);
}

INSTANTIATE_TEST_SUITE_P(Rows, Ese, testing::ValuesIn(EseRows()), NameOfRow);

// Every call has its own last error, and none that an earlier call left.
TEST(EseLastError, IsTheCallsOwn)
{
    const Recorder recorder("HrESEBackupEnd result=1 error=0x57\n"
                            "HrESEBackupEnd result=0 error=0x58\n"
                            "HrESEBackupEnd result=2 error=0\n"
                            "HrESEBackupEnd result=3 error=0x80070005\n");
    Conversation talk(0);
    Section section = Announce(talk, 64);
    talk.Load(TargetLibrary(library));
    section.Put(0, Hex("00000009"));
    for (const char *const out : {"00000001 00000057", "00000000 00000000", "00000002 00000000", "00000003 80070005"}) {
        talk.Send(CallFrame(u"", "HrESEBackupEnd", "SIG_HR_ESE_BACKUP_END"));
        talk.Expect(SuccessFrame());
        section.Expect(0, Hex("00000009") + Hex(out));
    }
    talk.Send(OrderlyStop());
    talk.End();
}

// The in-list fits exactly, and the results take what the library returned besides.
TEST(EseSection, GrowsForInstances)
{
    const Recorder recorder("HrESEBackupPrepare context=9 instances=2 result=1 error=2\n");
    Conversation talk(0);
    const Bytes in_list = Hex("7300 0000 0000");
    Section section = Announce(talk, static_cast<std::uint32_t>(in_list.size()));
    section.Put(0, in_list);
    talk.Load(TargetLibrary(library));
    talk.Send(CallFrame(u"", "HrESEBackupPrepare", "SIG_HR_ESE_BACKUP_PREPARE"));
    // Strings 6 + 4, context and result 8, count 4; the first instance 8 + 10 + 4 + 4 + 72 + 62 + 4 = 164, the second
    // 8 + 4 + 4 + 4 + 4 + 15 + 12 = 51; error 4.
    constexpr std::uint32_t bound = 6 + 4 + 8 + 4 + (8 + 10 + 4 + 4 + (12 + 24 + 28 + 8) + (10 + 16 + 28 + 8) + 4) +
                                    (8 + 4 + 4 + 4 + 4 + 15 + 12) + 4;
    talk.Expect(ResizeFrame(talk.SectionName(u'0'), bound));
    const Section grown = Section::Open(talk.SectionName(u'0'), bound);
    talk.Send(SuccessFrame());
    talk.Expect(SuccessFrame());
    grown.Expect(0, Hex("7300 0000 0000 00000009 00000001 00000002"
                        "0102030405060708 6F00 6E00 6500 0000 00000007 00000002"
                        "6D00 6100 6900 6C00 0000"));
    talk.Send(OrderlyStop());
    talk.End();
}

TEST(EseSection, RefusedGrowthIsAnOutputFailure)
{
    const Recorder recorder("HrESEBackupPrepare instances=1\n");
    Conversation talk(0);
    const Bytes in_list = Hex("7300 0000 0000");
    Section section = Announce(talk, static_cast<std::uint32_t>(in_list.size()));
    section.Put(0, in_list);
    talk.Load(TargetLibrary(library));
    talk.Send(CallFrame(u"", "HrESEBackupPrepare", "SIG_HR_ESE_BACKUP_PREPARE"));
    constexpr std::uint32_t bound = 6 + 4 + 8 + 4 + (8 + 10 + 4 + 4 + (12 + 24 + 28 + 8) + (10 + 16 + 28 + 8) + 4) + 4;
    talk.Expect(ResizeFrame(talk.SectionName(u'0'), bound));
    talk.Send(ErrorFrame(0, 0, u"no"));
    talk.Expect(FailureFrame(u"Failed to serialise output (Process_HrESEBackupPrepare)"));
    EXPECT_EQ(recorder.Lines(), "HrESEBackupPrepare server=\"s\" annotation=\"\" count=0 instances=null\n");
    talk.Send(OrderlyStop());
    talk.End();
}

} // namespace
} // namespace kessil::test
