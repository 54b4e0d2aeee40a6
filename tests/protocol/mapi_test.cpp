#include "protocol/family_rows.h"
#include "rows/mapi_rows.h"

namespace kessil::test {
namespace {

constexpr auto library = "mapi_recorder";

class Mapi : public FamilyTest
{};

TEST_P(Mapi, Answers)
{
    ExpectAnswer(GetParam(), library);
}

INSTANTIATE_TEST_SUITE_P(Rows, Mapi, testing::ValuesIn(MapiRows()), NameOfRow);

class MapiInList : public FamilyTest
{};

TEST_P(MapiInList, RefusesACutInList)
{
    ExpectRefusedInput(GetParam(), library);
}

INSTANTIATE_TEST_SUITE_P(Rows, MapiInList, testing::ValuesIn(RowsWithInList(MapiRows())), NameOfRow);

// One helper with the library loaded, and the section that its call fits into exactly. The call's results don't.
class MapiGrowth
{
public:
    MapiGrowth(const std::string &function, const std::string &script, const Bytes &in_list, std::uint32_t needed)
        : m_recorder(function + " " + script + "\n"), m_needed(needed), m_talk(0),
          m_section(Announce(m_talk, static_cast<std::uint32_t>(in_list.size()), u'7'))
    {
        m_section.Put(0, in_list);
        m_talk.Load(TargetLibrary(library));
        m_talk.Send(CallFrame(u"", function, "SIGNATURE_" + function));
        m_talk.Expect(ResizeFrame(m_talk.SectionName(u'0'), needed));
    }

    void ExpectAnswer(const Bytes &out)
    {
        const Section grown = Section::Open(m_talk.SectionName(u'0'), m_needed);
        m_talk.Send(SuccessFrame());
        m_talk.Expect(SuccessFrame());
        grown.Expect(0, out);
        m_talk.Send(OrderlyStop());
        m_talk.End();
    }

    void ExpectRefusal(std::u16string_view text)
    {
        m_talk.Send(ErrorFrame(0, 0, u"no"));
        m_talk.Expect(FailureFrame(text));
        m_talk.Send(OrderlyStop());
        m_talk.End();
    }

    std::string Record() const { return m_recorder.Lines(); }

private:
    Recorder m_recorder;
    std::uint32_t m_needed;
    Conversation m_talk;
    Section m_section;
};

// 4 for the handle, 12 more than its 4 bytes for the block, 4 each for the count and the result.
TEST(MapiSection, GrowsAndKeepsWhatTheLibraryRead)
{
    MapiGrowth mail("MapiReadMail", "block=A1A2A3A4 count=4 result=1", Hex("89ABCDEF 00000004 01020304"), 28);
    mail.ExpectAnswer(Hex("89ABCDEF 00000004 A1A2A3A4 00000004 00000001"));
    EXPECT_EQ(mail.Record(), "MapiReadMail mapi=0x89abcdef block=01020304 length=4\n");
}

TEST(MapiSection, GrowsAndHoldsTheEchoOfWhatWasWritten)
{
    MapiGrowth mail("MapiWriteMail", "count=3 result=2", Hex("89ABCDEF 00000004 01020304"), 28);
    mail.ExpectAnswer(Hex("89ABCDEF 00000004 01020304 00000003 00000002"));
}

// The library has run when the parent refuses.
TEST(MapiSection, RefusedGrowthIsAnOutputFailure)
{
    MapiGrowth mails("MapiGetNextMails", "count1=1 count2=2", Hex("89ABCDEF 00000000"), 28);
    mails.ExpectRefusal(u"Failed to serialise output (Process_MapiGetNextMails)");
    EXPECT_EQ(mails.Record(), "MapiGetNextMails mapi=0x89abcdef block= length=0\n");
}

// Nothing comes in, so a section that is too small for the results is all that the call needs.
TEST(MapiSection, GrowsForTheVersion)
{
    MapiGrowth version("MapiBackupDLLVersion", "result=0x00020001", Hex("EEEEEEEE"), 8);
    version.ExpectAnswer(Hex("00020001 00000000"));
}

TEST(MapiSection, VersionRefusedIsSpelledWithAZ)
{
    MapiGrowth version("MapiBackupDLLVersion", "", Hex("EEEEEEEE"), 8);
    version.ExpectRefusal(u"Failed to serialize output (Process_MapiBackupDLLVersion)");
    EXPECT_EQ(version.Record(), "MapiBackupDLLVersion\n");
}

TEST(MapiSection, GrowsForTheTextsOfOneMail)
{
    // 4 for the handle, 2 more than its units for each text, the numbers.
    MapiGrowth mail("MapiGetNextMail", "text1=410042000000 text2=43000000 value4=5 result=1", Hex("89ABCDEF"), 50);
    mail.ExpectAnswer(Hex("89ABCDEF 410042000000 43000000 0000000000000000 0000000000000000 0000000000000000 "
                          "00000005 00000001"));
}

TEST(MapiSection, AMegabyteOfMail)
{
    constexpr std::uint32_t length = 1 << 20;
    const Recorder recorder("MapiReadMail block=A1A2 count=1048576\n");
    Conversation talk(0);
    Section section = Announce(talk, length + 64);
    section.Put(0, Hex("89ABCDEF 00100000") + CountUp(length) + Repeat(0xEE, 56));
    talk.Load(TargetLibrary(library));
    talk.Send(CallFrame(u"", "MapiReadMail", "SIGNATURE_MapiReadMail"));
    talk.Expect(SuccessFrame());
    EXPECT_TRUE(section.Get(8, length) == Hex("A1A2") + Behind(2, CountUp(length)));
    section.Expect(8 + length, Hex("00100000 00000000 EE"));
    talk.Send(OrderlyStop());
    talk.End();
}

} // namespace
} // namespace kessil::test
