#include "parent/scripted.h"

#include <gmock/gmock.h>

#include <array>
#include <cstring>

namespace kessil::parent {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<int> Numbers(std::span<const std::byte> bytes)
{
    std::vector<int> numbers;
    for (const std::byte byte : bytes)
        numbers.push_back(static_cast<int>(byte));
    return numbers;
}

constexpr std::array<std::byte, 3> three_bytes{std::byte{0xA1}, std::byte{0xA2}, std::byte{0xA3}};

/// One call whose arguments and results are written down byte by byte.
class ListTest : public ScriptedTest
{
protected:
    void Expecting(const std::string &arguments)
    {
        StartWithSection(call_f + "arguments " + arguments + '\n' + success + stop);
    }

    void Answering(const std::string &results)
    {
        StartWithSection(call_f + "results 0 " + results + '\n' + success + stop);
        const Result result = CallF();
        ASSERT_TRUE(result) << result.message << Log();
    }

    void ExpectSent()
    {
        const Result result = CallF();
        EXPECT_TRUE(result) << result.message << Log();
        ExpectGoodEnd();
    }
};

TEST_F(ListTest, NumbersAreBigEndianAndUnaligned)
{
    Expecting("01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F");
    InList &in = helper->Begin().U8(0x01).U16(0x0203).U32(0x04050607).U64(0x08090A0B0C0D0E0F);
    EXPECT_EQ(in.Size(), 15U);
    ExpectSent();
    EXPECT_EQ(helper->Figures().argument_bytes, 15U);
}

TEST_F(ListTest, NarrowTextEndsInAZero)
{
    Expecting("61 62 00 00 FF 00");
    EXPECT_EQ(helper->Begin().Str("ab").Str("").Str("\xFF").Size(), 6U);
    ExpectSent();
}

TEST_F(ListTest, WideTextAtAnEvenPlace)
{
    Expecting("61 00 AC 20 00 00 00 00 07");
    EXPECT_EQ(helper->Begin().WStr(u"a\u20AC").WStr(u"").U8(7).Size(), 9U);
    ExpectSent();
}

TEST_F(ListTest, WideTextAtAnOddPlaceSharesItsEndWithWhatFollows)
{
    // Padding at 1, the text at 2, its zero unit at 4, and there the number.
    Expecting("07 .. 61 00 00 00 00 09");
    EXPECT_EQ(helper->Begin().U8(7).WStr(u"a").U32(9).Size(), 8U);
    ExpectSent();
}

TEST_F(ListTest, WideTextAtAnOddPlaceAsTheLastElement)
{
    Expecting("07 .. 61 00 00 00");
    helper->Begin().U8(7).WStr(u"a");
    ExpectSent();
}

TEST_F(ListTest, ANumberThatWouldOverwriteAWideTextsEndIsNotSent)
{
    StartWithSection(stop);
    for (const std::uint32_t number : {0x00010000U, 0x01000000U}) {
        helper->Begin().U8(7).WStr(u"a").U32(number);
        const Result result = CallF();
        EXPECT_EQ(result.outcome, Outcome::NotSent);
        EXPECT_THAT(result.message, HasSubstr("wide string at an odd place"));
    }
    EXPECT_EQ(helper->Figures().calls, 0U);
    ExpectGoodEnd();
}

TEST_F(ListTest, ABufferStartsAtAMultipleOfEight)
{
    // At 3: the length at 3 to 6, one byte of padding, the data at 8.
    Expecting("00 00 00 00 00 00 03 .. A1 A2 A3 05");
    EXPECT_EQ(helper->Begin().U8(0).U16(0).Bytes(three_bytes).U8(5).Size(), 12U);
    ExpectSent();
}

TEST_F(ListTest, AnEmptyBufferAtTheStartTakesEightBytes)
{
    Expecting("00 00 00 00 .. .. .. .. 05");
    EXPECT_EQ(helper->Begin().Bytes({}).U8(5).Size(), 9U);
    ExpectSent();
}

TEST_F(ListTest, AnEmptyBufferAtFourTakesFourBytes)
{
    Expecting("00 00 00 01 00 00 00 00 05");
    EXPECT_EQ(helper->Begin().U32(1).Room(0).U8(5).Size(), 9U);
    ExpectSent();
}

TEST_F(ListTest, AWideTextBehindABufferOfOddLength)
{
    // The data ends at 11; padding, the text at 12, its zero unit at 14, and there the next length (two zero bytes
    // first) with its data at 24.
    Expecting("00 00 00 03 .. .. .. .. A1 A2 A3 .. 7A 00 00 00 00 01 .. .. .. .. .. .. A1");
    helper->Begin().Bytes(three_bytes).WStr(u"z").Bytes(std::span(three_bytes).first(1));
    ExpectSent();
}

TEST_F(ListTest, ABlockIsFilledInPlace)
{
    Expecting("00 00 00 00 00 00 00 09 00 00 00 02 .. .. .. .. 5A 5B 00 00 00 02");
    InList &in = helper->Begin().U64(9);
    const std::span<std::byte> block = in.Block(2);
    ASSERT_EQ(block.size(), 2U);
    in.U32(2);
    block[0] = std::byte{0x5A};
    block[1] = std::byte{0x5B};
    ExpectSent();
}

TEST_F(ListTest, RoomForTheReadOfAFile)
{
    Expecting("00 00 00 00 00 00 00 01 00 00 00 00 00 00 00 02 00 00 00 10 .. .. .. .. "
              ".. .. .. .. .. .. .. .. .. .. .. .. .. .. .. .. 00 00 00 10");
    EXPECT_EQ(helper->Begin().U64(1).U64(2).Room(16).U32(16).Size(), 44U);
    ExpectSent();
}

TEST_F(ListTest, ATextWithAZeroIsNotSent)
{
    StartWithSection(stop);
    helper->Begin().Str({"a\0b", 3});
    EXPECT_EQ(CallF().outcome, Outcome::NotSent);
    helper->Begin().WStr({u"\0", 1}).U32(1);
    EXPECT_EQ(CallF().outcome, Outcome::NotSent);
    ExpectGoodEnd();
}

TEST_F(ListTest, TheSectionGrowsWhileArgumentsAreLaidOut)
{
    options.section_size = 10;
    Start("attach\nsection\nsize 10\nsection\nsize 20\nsection\nsize 65552\nsection\nsize 131104\nlog_names\n" +
          call_f + "arguments 00 00 00 00 00 00 00 01 00 00 00 02 00 01 00 00 5A\n" + success + stop);
    InList &in = helper->Begin().U64(1).U32(2);
    const std::span<std::byte> block = in.Block(65536);
    ASSERT_EQ(block.size(), 65536U);
    block[0] = std::byte{0x5A};
    EXPECT_EQ(in.Size(), 65552U);
    in.U32(1).U64(1);
    EXPECT_EQ(in.Size(), 65564U);
    ExpectSent();
    EXPECT_EQ(helper->Figures().sections_announced, 4U);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(ListTest, TheTotalSizeRulesOutGrowth)
{
    options.section_size = 10;
    Start("attach\nsection\nsize 100000\nlog_names\n" + call_f + success + stop);
    EXPECT_EQ(helper->Begin(100000).Block(99992).size(), 99992U);
    ExpectSent();
    EXPECT_EQ(helper->Figures().sections_announced, 1U);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(ListTest, MoreThanASectionCanHoldIsNotSent)
{
    StartWithSection(stop);
    EXPECT_TRUE(helper->Begin().Block(0xFFFFFFFF).empty());
    const Result result = CallF();
    EXPECT_EQ(result.outcome, Outcome::NotSent);
    EXPECT_THAT(result.message, HasSubstr("more than a section can hold"));
    ExpectGoodEnd();
}

TEST_F(ListTest, ResultsOfEveryKind)
{
    // A wide text at an odd place, 23: padding, the text at 24, its zero unit at 28, shared with the buffer's length.
    Answering("01 0203 04050607 08090A0B0C0D0E0F 616200 01 01 01 01 01 AA 4100 4200 00000002 A1A2 05");
    std::uint8_t u8 = 0;
    std::uint16_t u16 = 0;
    std::uint32_t u32 = 0;
    std::uint64_t u64 = 0;
    std::string text;
    OutList &out = helper->Results().U8(u8).U16(u16).U32(u32).U64(u64).Str(text);
    EXPECT_EQ(u8, 0x01);
    EXPECT_EQ(u16, 0x0203);
    EXPECT_EQ(u32, 0x04050607U);
    EXPECT_EQ(u64, 0x08090A0B0C0D0E0FU);
    EXPECT_EQ(text, "ab");
    // 18 bytes so far.
    out.U8(u8).U8(u8).U8(u8).U8(u8).U8(u8);
    WideString wide;
    std::span<const std::byte> data;
    EXPECT_TRUE(out.WStr(wide).Buffer(data).U8(u8).Complete());
    EXPECT_EQ(wide, u"AB");
    EXPECT_THAT(Numbers(data), ElementsAre(0xA1, 0xA2));
    EXPECT_EQ(u8, 5);
    ExpectGoodEnd();
}

TEST_F(ListTest, ResultsAreReadFromTheirBeginningEachTime)
{
    Answering("00000001 00000002");
    std::uint32_t first = 0;
    EXPECT_TRUE(helper->Results().U32(first).Complete());
    EXPECT_EQ(first, 1U);
    std::uint32_t second = 0;
    EXPECT_TRUE(helper->Results().U32(first).U32(second).Complete());
    EXPECT_EQ(first, 1U);
    EXPECT_EQ(second, 2U);
    ExpectGoodEnd();
}

TEST_F(ListTest, ABufferThatPassesTheSectionBreaksTheProtocol)
{
    Answering("FFFFFFFF");
    std::span<const std::byte> data;
    const Result result = helper->Results().Buffer(data).Complete();
    EXPECT_EQ(result.outcome, Outcome::BrokenProtocol);
    EXPECT_THAT(result.message, HasSubstr("result 1 doesn't lie within the section"));
    EXPECT_TRUE(data.empty());
    EXPECT_FALSE(helper->Running());
}

class FullSectionTest : public ListTest
{
protected:
    // The whole section is these bytes.
    void Holding(std::uint32_t size, const std::string &results)
    {
        options.section_size = size;
        Answering(results);
    }
};

TEST_F(FullSectionTest, EachElementMayEndWithTheSection)
{
    Holding(4, "00610000");
    std::uint8_t number = 1;
    std::string text;
    EXPECT_TRUE(helper->Results().U8(number).Str(text).Str(text).Complete());
    EXPECT_EQ(text, "");
    WideString wide;
    EXPECT_TRUE(helper->Results().WStr(wide).Complete());
    EXPECT_EQ(wide, u"\u6100");
    std::uint32_t value = 0;
    EXPECT_TRUE(helper->Results().U32(value).Complete());
    EXPECT_EQ(value, 0x00610000U);
    EXPECT_EQ(helper->Results().U32(value).U8(number).Complete().outcome, Outcome::BrokenProtocol);
    EXPECT_EQ(number, 0);
}

TEST_F(FullSectionTest, ANarrowTextWithoutAnEnd)
{
    Holding(3, "616263");
    std::string text = "before";
    EXPECT_EQ(helper->Results().Str(text).Complete().outcome, Outcome::BrokenProtocol);
    EXPECT_EQ(text, "before");
}

TEST_F(FullSectionTest, AWideTextWithoutAnEnd)
{
    Holding(5, "6100620000");
    WideString text = u"before";
    EXPECT_EQ(helper->Results().WStr(text).Complete().outcome, Outcome::BrokenProtocol);
    EXPECT_EQ(text, u"before");
}

TEST_F(FullSectionTest, ABufferOneByteTooLong)
{
    Holding(16, "00000000 00000000 00000000 00000001");
    std::uint64_t number = 0;
    std::uint32_t word = 0;
    std::span<const std::byte> data;
    const Result result = helper->Results().U64(number).U32(word).Buffer(data).Complete();
    EXPECT_EQ(result.outcome, Outcome::BrokenProtocol);
    EXPECT_THAT(result.message, HasSubstr("result 3 "));
}

} // namespace
} // namespace kessil::parent
