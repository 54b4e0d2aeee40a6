#include "protocol/family_rows.h"
#include "rows/domino_rows.h"

namespace kessil::test {
namespace {

constexpr auto library = "domino_recorder";

class Domino : public FamilyTest
{};

TEST_P(Domino, Answers)
{
    ExpectAnswer(GetParam(), library);
}

TEST_P(Domino, RefusesACutInList)
{
    ExpectRefusedInput(GetParam(), library);
}

INSTANTIATE_TEST_SUITE_P(Rows, Domino, testing::ValuesIn(DominoRows()), NameOfRow);

// A message that can't be copied ends the process as abort does: no answer, and nothing behind it is read.
struct BadMessage
{
    const char *name;
    const char *script;
    const char *in_list;
};

class DominoBadMessage : public testing::TestWithParam<BadMessage>
{};

TEST_P(DominoBadMessage, EndsTheProcess)
{
    const BadMessage &each = GetParam();
    const Recorder recorder(std::string("DominoGetErrorMessage ") + each.script + "\n");
    Conversation talk(on_windows ? 3 : 128 + 6);
    Section section = Announce(talk, 256);
    section.Put(0, Hex(each.in_list));
    talk.Load(TargetLibrary(library));
    talk.Send(CallFrame(u"", "DominoGetErrorMessage", "SIGNATURE_DominoGetErrorMessage"));
    talk.ExpectClosed();
    EXPECT_EQ(recorder.Lines(), "DominoGetErrorMessage session=0x1 code=2\n");
}

INSTANTIATE_TEST_SUITE_P(
    Messages, DominoBadMessage,
    testing::Values(BadMessage{"NullPointer", "message=null", "00000001 00000002 00000008 EEEEEEEE 0102030405060708"},
                    BadMessage{"AsLongAsTheBuffer", "message=abcd", "00000001 00000002 00000004 EEEEEEEE 01020304"},
                    BadMessage{"LongerThanTheBuffer", "message=abcdefgh",
                               "00000001 00000002 00000004 EEEEEEEE 01020304"},
                    BadMessage{"NoBuffer", "message=", "00000001 00000002 00000000 EEEEEEEE"}),
    [](const auto &each) { return std::string(each.param.name); });

// The section holds the in-list exactly, and the upper bound of the results is 8 bytes more.
TEST(DominoSection, GrowsAndKeepsTheErrorMessage)
{
    const Recorder recorder("DominoGetErrorMessage message=abc\n");
    Conversation talk(0);
    const Bytes in_list = Hex("00000001 00000002 00000004 EEEEEEEE 01020304");
    Section section = Announce(talk, static_cast<std::uint32_t>(in_list.size()), u'7');
    section.Put(0, in_list);
    talk.Load(TargetLibrary(library));
    talk.Send(CallFrame(u"", "DominoGetErrorMessage", "SIGNATURE_DominoGetErrorMessage"));
    talk.Expect(ResizeFrame(talk.SectionName(u'0'), 28));
    const Section grown = Section::Open(talk.SectionName(u'0'), 28);
    talk.Send(SuccessFrame());
    talk.Expect(SuccessFrame());
    grown.Expect(0, Hex("00000001 00000002 00000004 EEEEEEEE 61626300 00000000"));
    talk.Send(OrderlyStop());
    talk.End();
}

// 4 for the session, 2 more than its bytes for the path, 12 more than its bytes for the block, 4 for the result.
TEST(DominoSection, GrowsAndKeepsTheBlockBehindAPath)
{
    const Recorder recorder("DominoFindFirstDatabase block=A1A2 result=2\n");
    Conversation talk(0);
    const Bytes in_list = Hex("89ABCDEF 616200 00000004 EEEEEEEEEE 01020304");
    Section section = Announce(talk, static_cast<std::uint32_t>(in_list.size()), u'7');
    section.Put(0, in_list);
    talk.Load(TargetLibrary(library));
    talk.Send(CallFrame(u"", "DominoFindFirstDatabase", "SIGNATURE_DominoFindFirstDatabase"));
    talk.Expect(ResizeFrame(talk.SectionName(u'0'), 28));
    const Section grown = Section::Open(talk.SectionName(u'0'), 28);
    talk.Send(SuccessFrame());
    talk.Expect(SuccessFrame());
    grown.Expect(0, Hex("89ABCDEF 616200 00000004 EEEEEEEEEE A1A20304 00000002 00000000"));
    EXPECT_EQ(recorder.Lines(), "DominoFindFirstDatabase session=0x89abcdef path=\"ab\" block=01020304 length=4\n");
    talk.Send(OrderlyStop());
    talk.End();
}

// The library has run when the parent refuses.
TEST(DominoSection, RefusedGrowthIsAnOutputFailure)
{
    const Recorder recorder("DominoFindNextDatabase block=A1 result=1\n");
    Conversation talk(0);
    const Bytes in_list = Hex("00000001 00000001 01");
    Section section = Announce(talk, static_cast<std::uint32_t>(in_list.size()), u'7');
    section.Put(0, in_list);
    talk.Load(TargetLibrary(library));
    talk.Send(CallFrame(u"", "DominoFindNextDatabase", "SIGNATURE_DominoFindNextDatabase"));
    talk.Expect(ResizeFrame(talk.SectionName(u'0'), 21));
    talk.Send(ErrorFrame(0, 0, u"no"));
    talk.Expect(FailureFrame(u"Failed to serialise output (Process_DominoFindNextDatabase)"));
    EXPECT_EQ(recorder.Lines(), "DominoFindNextDatabase session=0x1 block=01 length=1\n");
    talk.Send(OrderlyStop());
    talk.End();
}

} // namespace
} // namespace kessil::test
