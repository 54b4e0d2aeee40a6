#include "marshal/row.h"

#include "platform/last_error.h"
#include "support/heap_probe.h"
#include "unit/channel_fixture.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <type_traits>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What the targets below were called with. They spell their own types.
std::vector<std::string> seen;

template <class... Values>
void See(const Values &...values)
{
    std::ostringstream line;
    line << std::hex << std::uppercase;
    ((line << values << ' '), ...);
    seen.push_back(line.str());
}

std::string Units(const char16_t *text)
{
    return text != nullptr ? platform::ToUtf8(text) : "null";
}

class RowTest : public ChannelTest
{
protected:
    RowTest()
    {
        seen.clear();
        platform::SetLastError(0);
    }

    template <class Prototype, class Target>
    void Call(Target *target, OutList out_list)
    {
        Row<Prototype>::Run(channel, "Process_Thing", reinterpret_cast<void *>(target), out_list);
    }
};

constexpr auto results = OutList::Results;
constexpr auto echo = OutList::EchoAndResults;

// Rows whose prototypes are equal share their code.
static_assert(std::is_same_v<Row<U32(U64 session, Out<U64> dir)>, Row<U32(U64 session, Out<U64> file)>>);

std::uint32_t TakesNumbers(std::uint8_t a, std::uint16_t b, std::uint32_t c, std::uint64_t d)
{
    See(static_cast<unsigned>(a), b, c, d);
    return 0x0A0B0C0D;
}

const Bytes numbers = Hex("81 8283 84858687 88898A8B8C8D8E8F");

TEST_F(RowTest, NumbersArePassedAsTheirValues)
{
    GiveSection(u"s0", numbers + Repeat(0xEE, 8));
    Call<U32(U8 a, U16 b, U32 c, U64 d)>(TakesNumbers, results);
    EXPECT_THAT(seen, ElementsAre("81 8283 84858687 88898A8B8C8D8E8F "));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(6), Hex("0A0B0C0D 8586"));
}

TEST_F(RowTest, EchoIsTheInListAgainInFrontOfTheResults)
{
    GiveSection(u"s0", numbers + Repeat(0xEE, 8));
    Call<U32(U8 a, U16 b, U32 c, U64 d)>(TakesNumbers, echo);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(23), numbers + Hex("0A0B0C0D EEEEEEEE"));
}

std::uint32_t MakesHandle(std::uint64_t context, std::uint64_t *made)
{
    See(context, *made);
    *made = 0x1122334455667788;
    return 0;
}

TEST_F(RowTest, HandleIsWidenedOnTheWayInAndCutOnTheWayOut)
{
    GiveSection(u"s0", Hex("FFFFFFFE") + Repeat(0xEE, 12));
    Call<U32(Handle context, Out<Handle> file)>(MakesHandle, echo);
    EXPECT_THAT(seen, ElementsAre("FFFFFFFE 0 "));
    EXPECT_EQ(Section(16), Hex("FFFFFFFE 55667788 00000000 EEEEEEEE"));
}

std::uint32_t TakesTexts(const char *narrow, const char16_t *wide)
{
    See(narrow, Units(wide));
    return 1;
}

TEST_F(RowTest, StringsArePassedAsTheirCharacters)
{
    GiveSection(u"s0", Narrow("abc") + Wide(u"de") + Repeat(0xEE, 8));
    Call<U32(STR narrow, WSTR wide)>(TakesTexts, results);
    EXPECT_THAT(seen, ElementsAre("abc de "));
    EXPECT_EQ(Section(4), Hex("00000001"));
}

std::uint32_t TakesWideTexts(const char16_t *first, const char16_t *second)
{
    See(Units(first), Units(second));
    return 1;
}

TEST_F(RowTest, OrNullMakesNullOfAnEmptyStringAlone)
{
    GiveSection(u"s0", Wide(u"") + Wide(u"") + Repeat(0xEE, 12));
    Call<U32(WSTR first, OrNull<WSTR> second)>(TakesWideTexts, echo);
    EXPECT_THAT(seen, ElementsAre(" null "));
    EXPECT_EQ(Section(8), Wide(u"") + Wide(u"") + Hex("00000001"));

    seen.clear();
    Forget();
    GiveSection(u"s1", Wide(u"a") + Wide(u"b") + Repeat(0xEE, 16));
    Call<U32(WSTR first, OrNull<WSTR> second)>(TakesWideTexts, echo);
    EXPECT_THAT(seen, ElementsAre("a b "));
    EXPECT_EQ(Section(12), Wide(u"a") + Wide(u"b") + Hex("00000001"));
}

void *passed_data = nullptr;

std::uint32_t FillsBlock(std::uint32_t file, void *data, std::uint32_t size, std::uint32_t *count)
{
    See(file, size, *count);
    passed_data = data;
    std::memset(data, 'x', size);
    *count = size - 1;
    return 9;
}

TEST_F(RowTest, BufIsPassedWhereItLiesWithItsLength)
{
    const Bytes head = Hex("00000007 00000003");
    GiveSection(u"s0", head + Hex("616263 EE") + Repeat(0xEE, 20));
    Call<U32(U32 file, BUF block, Length size, Out<U32> count)>(FillsBlock, echo);
    EXPECT_THAT(seen, ElementsAre("7 3 0 "));
    EXPECT_EQ(passed_data, channel.SharedView() + 8);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(20), head + Hex("787878 00000002 00000009 EE"));
}

TEST_F(RowTest, InIsPassedAsACopyWithItsLength)
{
    GiveSection(u"s0", Hex("00000007 00000003 616263 EE") + Repeat(0xEE, 20));
    Call<U32(U32 file, IN block, Length size, Out<U32> count)>(FillsBlock, results);
    EXPECT_THAT(seen, ElementsAre("7 3 0 "));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(12), Hex("00000002 00000009 616263 EE"));
}

std::uint32_t TakesDataAlone(void *data)
{
    return static_cast<unsigned char *>(data)[0];
}

TEST_F(RowTest, BlockIsPassedWithoutItsLengthWhereNoWordAsksForIt)
{
    GiveSection(u"s0", Hex("00000002 00000000 6162") + Repeat(0xEE, 14));
    Call<U32(BUF block)>(TakesDataAlone, echo);
    EXPECT_EQ(Section(14), Hex("00000002 00000000 6162 00000061"));
}

std::uint32_t TakesFour(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    See(a, b, c, d);
    return 2;
}

TEST_F(RowTest, ConstantsStandInNeitherList)
{
    GiveSection(u"s0", Hex("00000005 00000006") + Repeat(0xEE, 8));
    Call<U32(Const<1> first, U32 second, Const<0xFFFFFFFF> third, U32 fourth)>(TakesFour, echo);
    EXPECT_THAT(seen, ElementsAre("1 5 FFFFFFFF 6 "));
    EXPECT_EQ(Section(16), Hex("00000005 00000006 00000002 EEEEEEEE"));
}

std::uint32_t Changes(std::uint32_t first, std::uint32_t *both, std::uint32_t last)
{
    See(first, *both, last);
    *both += 0x10;
    return 3;
}

TEST_F(RowTest, InOutGoesBackInTheEchoAsTheTargetLeftIt)
{
    GiveSection(u"s0", Hex("00000001 00000002 00000003") + Repeat(0xEE, 8));
    Call<U32(U32 first, InOut<U32> both, U32 last)>(Changes, echo);
    EXPECT_THAT(seen, ElementsAre("1 2 3 "));
    EXPECT_EQ(Section(20), Hex("00000001 00000012 00000003 00000003 EEEEEEEE"));
}

TEST_F(RowTest, InOutIsNoResult)
{
    GiveSection(u"s0", Hex("00000001 00000002 00000003") + Repeat(0xEE, 8));
    Call<U32(U32 first, InOut<U32> both, U32 last)>(Changes, results);
    EXPECT_EQ(Section(8), Hex("00000003 00000002"));
}

std::uint32_t Fills(std::uint16_t *a, std::uint32_t in, std::uint32_t *b, std::uint64_t *c, std::uint8_t *untouched)
{
    See(*a, in, *b, *c, static_cast<unsigned>(*untouched));
    *a = 0x0102;
    *b = 0x03040506;
    *c = 0x0708090A0B0C0D0E;
    return 0x0F101112;
}

TEST_F(RowTest, OutValuesStartAtZeroAndStandInTheOrderOfTheWords)
{
    GiveSection(u"s0", Hex("00000005") + Repeat(0xEE, 20));
    Call<U32(Out<U16> a, U32 in, Out<U32> b, Out<U64> c, Out<U8> untouched)>(Fills, results);
    EXPECT_THAT(seen, ElementsAre("0 5 0 0 0 "));
    EXPECT_EQ(Section(20), Hex("0102 03040506 0708090A0B0C0D0E 00 0F101112 EE"));
}

constexpr std::size_t room_units = 5;
const char16_t *text_to_give = nullptr;
std::size_t units_to_give = 0;

std::uint32_t GivesText(std::uint64_t mapi, char16_t *room)
{
    See(mapi, std::all_of(room, room + room_units, [](char16_t unit) { return unit == 0; }));
    std::copy_n(text_to_give, units_to_give, room);
    return 4;
}

TEST_F(RowTest, OutTextIsWhatStandsInFrontOfTheFirstZeroUnit)
{
    GiveSection(u"s0", Hex("00000001") + Repeat(0xEE, 20));
    text_to_give = u"ab\0c";
    units_to_give = 4;
    Call<U32(Handle mapi, OutText<room_units> text)>(GivesText, results);
    EXPECT_THAT(seen, ElementsAre("1 1 "));
    EXPECT_EQ(Section(11), Wide(u"ab") + Hex("00000004 EE"));
}

TEST_F(RowTest, OutTextThatIsLeftAloneIsEmpty)
{
    GiveSection(u"s0", Hex("00000001") + Repeat(0xEE, 20));
    units_to_give = 0;
    Call<U32(Handle mapi, OutText<room_units> text)>(GivesText, results);
    EXPECT_EQ(Section(7), Wide(u"") + Hex("00000004 EE"));
}

TEST_F(RowTest, OutTextMayFillTheWholeRoom)
{
    GiveSection(u"s0", Hex("00000001") + Repeat(0xEE, 20));
    text_to_give = u"abcde";
    units_to_give = room_units;
    Call<U32(Handle mapi, OutText<room_units> text)>(GivesText, results);
    EXPECT_EQ(Section(17), Wide(u"abcde") + Hex("00000004 EE"));
}

// The bound of a text counts its own units and not those of the room.
TEST_F(RowTest, OutTextAsksForNoMoreThanItHolds)
{
    GiveSection(u"s0", Hex("00000001") + Repeat(0xEE, 6));
    text_to_give = u"a";
    units_to_give = 1;
    Call<U32(Handle mapi, OutText<room_units> text)>(GivesText, results);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());

    Forget();
    GiveSection(u"t0", Hex("00000001") + Repeat(0xEE, 5));
    fake_pipe.Deliver(SuccessFrame());
    Call<U32(Handle mapi, OutText<room_units> text)>(GivesText, results);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"t1", 10) + SuccessFrame());
}

std::uint32_t Closes(std::uint64_t session)
{
    See(session);
    return 5;
}

TEST_F(RowTest, IgnoredResultIsNotSent)
{
    GiveSection(u"s0", Hex("0000000000000001") + Repeat(0xEE, 8));
    Call<Ignored<U32>(U64 session)>(Closes, results);
    EXPECT_THAT(seen, ElementsAre("1 "));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(16), Hex("0000000000000001") + Repeat(0xEE, 8));
}

std::uint32_t result_to_give = 0;

std::uint32_t Creates(std::uint64_t *session)
{
    *session = 6;
    platform::SetLastError(0x55);
    return result_to_give;
}

TEST_F(RowTest, IgnoredResultLeavesWhatTheTargetFilled)
{
    GiveSection(u"s0", Repeat(0xEE, 12));
    Call<Ignored<U32>(Out<U64> session)>(Creates, results);
    EXPECT_EQ(Section(12), Hex("0000000000000006 EEEEEEEE"));
}

TEST_F(RowTest, LastErrorStandsBehindTheResult)
{
    GiveSection(u"s0", Repeat(0xEE, 20));
    result_to_give = 7;
    Call<WithLastError<U32>(Out<U64> session)>(Creates, results);
    EXPECT_EQ(Section(17), Hex("0000000000000006 00000007 00000055 EE"));
}

TEST_F(RowTest, LastErrorOfASuccessIsZero)
{
    GiveSection(u"s0", Repeat(0xEE, 20));
    result_to_give = 0;
    Call<WithLastError<U32>(Out<U64> session)>(Creates, results);
    EXPECT_EQ(Section(17), Hex("0000000000000006 00000000 00000000 EE"));
}

std::uint32_t Answers()
{
    See("called");
    return 8;
}

TEST_F(RowTest, RowThatReadsNothingNeedsNoSection)
{
    fake_pipe.Deliver(SuccessFrame());
    Call<U32()>(Answers, results);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u".1", 4) + SuccessFrame());
    EXPECT_EQ(Section(4), Hex("00000008"));
}

TEST_F(RowTest, InListThatDoesNotFitIsTheInputFailure)
{
    GiveSection(u"s0", Repeat(0, 14));
    Call<U32(U8 a, U16 b, U32 c, U64 d)>(TakesNumbers, echo);
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise input (Process_Thing)"));
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(RowTest, SectionGrowsToTheSumOfTheBounds)
{
    GiveSection(u"s0", numbers);
    fake_pipe.Deliver(SuccessFrame());
    Call<U32(U8 a, U16 b, U32 c, U64 d)>(TakesNumbers, echo);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 19) + SuccessFrame());
    EXPECT_EQ(Section(19), numbers + Hex("0A0B0C0D"));
}

TEST_F(RowTest, RefusedGrowthIsTheOutputFailureOfACallThatWasMade)
{
    GiveSection(u"s0", numbers);
    fake_pipe.Deliver(ErrorFrame(1, 2, u"the parent's text"));
    Call<U32(U8 a, U16 b, U32 c, U64 d)>(TakesNumbers, echo);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 19) + FailureFrame(u"Failed to serialise output (Process_Thing)"));
    EXPECT_THAT(seen, ElementsAre("81 8283 84858687 88898A8B8C8D8E8F "));
}

TEST_F(RowTest, FailureTextsMayBeOthers)
{
    constexpr FailureTexts texts = {u"another input text", u"another output text"};
    auto *const target = reinterpret_cast<void *>(Closes);
    GiveSection(u"s0", Repeat(0, 7));
    Row<U32(U64 session)>::Run(channel, "Process_Thing", target, echo, texts);
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"another input text"));

    Forget();
    GiveSection(u"t0", Repeat(0, 8));
    fake_pipe.Deliver(ErrorFrame(1, 2, u""));
    Row<U32(U64 session)>::Run(channel, "Process_Thing", target, echo, texts);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"t1", 12) + FailureFrame(u"another output text"));
}

std::uint32_t Throws(void *, std::uint32_t, const char *, std::uint32_t *)
{
    throw std::runtime_error("the target's");
}

TEST_F(RowTest, ExceptionOfTheTargetPassesThrough)
{
    const Bytes section = Hex("00000001 00000000 61") + Narrow("a string that is too long to lie in the element");
    GiveSection(u"s0", section);
    EXPECT_THROW((Call<U32(IN block, Length size, STR text, Out<U32> count)>(Throws, echo)), std::runtime_error);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_EQ(Section(section.size()), section);
}

std::uint32_t Reads(std::uint64_t session, std::uint64_t file, void *data, std::uint32_t size, std::uint32_t *count,
                    std::uint64_t *position)
{
    std::memset(data, static_cast<int>(session + file), size);
    *count = size;
    *position = size;
    return 0;
}

// The words of a plain row: all but the strings and IN.
TEST_F(RowTest, SteadyCallOfAPlainRowAllocatesNothing)
{
    GiveSection(u"s0", Hex("0000000000000001 00000002 00000008") + Repeat(0xEE, 64));
    call_log.recording = false;
    fake_pipe.written.reserve(4096);
    fake_pipe.writes.reserve(128);
    const auto call = [this] {
        Call<WithLastError<U32>(U64 session, Handle file, BUF block, Length size, Out<U32> count,
                                Out<Handle> position)>(Reads, echo);
    };
    call();
    const std::size_t before = HeapProbe::Requests();
    for (int i = 0; i < 100; ++i)
        call();
    EXPECT_EQ(HeapProbe::Requests(), before);
    EXPECT_EQ(fake_pipe.writes.size(), 101u);
    EXPECT_EQ(Section(40),
              Hex("0000000000000001 00000002 00000008 0303030303030303 00000008 00000008 00000000 00000000"));
}

} // namespace
} // namespace kessil::test
