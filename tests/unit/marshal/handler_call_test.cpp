#include "marshal/handler_call.h"

#include "unit/channel_fixture.h"

#include <stdexcept>

namespace kessil::test {
namespace {

using ::testing::IsEmpty;

// An element with the sizes and the results that a test gives it.
class Stub final : public CDataElement
{
public:
    Stub(std::uint32_t says, std::uint32_t takes) : m_says(says), m_takes(takes) {}

    std::uint32_t ReadFromBuffer(unsigned char * /*buffer*/, std::uint32_t size) override
    {
        left = size;
        return m_takes;
    }
    std::uint32_t WriteToBuffer(unsigned char * /*buffer*/, std::uint32_t size) override
    {
        left = size;
        return m_takes;
    }
    std::uint32_t GetBufferSize() override
    {
        ++asked;
        return m_says;
    }

    std::uint32_t left = 0;
    int asked = 0;

private:
    std::uint32_t m_says;
    std::uint32_t m_takes;
};

class HandlerCallTest : public ChannelTest
{
protected:
    HandlerCall call{channel, "Process_Thing"};
};

TEST_F(HandlerCallTest, InListIsReadInOrderFromOffsetZero)
{
    GiveSection(u"s0", Hex("01 02 03 04 61 62 00 FF"));
    U32 number;
    STR text;
    U8 last;
    EXPECT_TRUE(call.Read(number, text, last));
    EXPECT_EQ(number.value, 0x01020304u);
    EXPECT_EQ(text.text, "ab");
    EXPECT_EQ(last.value, 0xFF);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

TEST_F(HandlerCallTest, BytesLeftShrinkWithEveryElement)
{
    GiveSection(u"s0", Repeat(0, 16));
    Stub first(1, 5);
    Stub second(1, 3);
    EXPECT_TRUE(call.Read(first, second));
    EXPECT_EQ(first.left, 16u);
    EXPECT_EQ(second.left, 11u);
}

TEST_F(HandlerCallTest, InListThatDoesNotFitIsTheInputFailure)
{
    GiveSection(u"s0", Repeat(0, 7));
    U32 first;
    U32 second;
    EXPECT_FALSE(call.Read(first, second));
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise input (Process_Thing)"));
}

TEST_F(HandlerCallTest, ElementsBehindTheMissingOneAreNotRead)
{
    GiveSection(u"s0", Repeat(0, 4));
    U64 missing;
    Stub second(1, 1);
    EXPECT_FALSE(call.Read(missing, second));
    EXPECT_EQ(second.left, 0u);
}

TEST_F(HandlerCallTest, StringWithoutATerminatorIsTheInputFailure)
{
    GiveSection(u"s0", Hex("61 62 63"));
    STR text;
    EXPECT_FALSE(call.Read(text));
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise input (Process_Thing)"));
}

TEST_F(HandlerCallTest, WithoutASectionTheFirstElementFails)
{
    U8 value;
    EXPECT_FALSE(call.Read(value));
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise input (Process_Thing)"));
}

TEST_F(HandlerCallTest, EmptyInListNeedsNoSection)
{
    EXPECT_TRUE(call.Read());
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

TEST_F(HandlerCallTest, OutListWithoutASectionMakesOne)
{
    fake_pipe.Deliver(SuccessFrame());
    call.Reply(U32(7), U8(9));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u".1", 5) + SuccessFrame());
    EXPECT_EQ(Section(5), Hex("00 00 00 07 09"));
}

TEST_F(HandlerCallTest, SumThatFitsExactlyLeavesTheSectionAsItIs)
{
    GiveSection(u"s0", Repeat(0xAA, 12));
    call.Reply(U64(1), U32(2));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(12), Hex("00 00 00 00 00 00 00 01 00 00 00 02"));
}

TEST_F(HandlerCallTest, SumOneAboveTheSectionGrowsItToExactlyTheSum)
{
    GiveSection(u"s0", Repeat(0xAA, 11));
    fake_pipe.Deliver(SuccessFrame());
    call.Reply(U64(1), U32(2));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 12) + SuccessFrame());
    EXPECT_EQ(Section(12), Hex("00 00 00 00 00 00 00 01 00 00 00 02"));
}

// The spare byte of a string's bound counts, although nothing is written to it.
TEST_F(HandlerCallTest, BoundDecidesAndNotWhatIsWritten)
{
    GiveSection(u"s0", Repeat(0xAA, 4));
    fake_pipe.Deliver(SuccessFrame());
    call.Reply(STR("abc"));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 5) + SuccessFrame());
    EXPECT_EQ(Section(5), Hex("61 62 63 00 00"));
}

TEST_F(HandlerCallTest, LargerSectionStaysAsItIs)
{
    GiveSection(u"s0", Repeat(0xAA, 4096));
    call.Reply(U8(1));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(channel.SharedSize(), 4096u);
    EXPECT_EQ(Section(3), Hex("01 AA AA"));
}

TEST_F(HandlerCallTest, WriteSendsNothingByItself)
{
    GiveSection(u"s0", Repeat(0xAA, 16));
    EXPECT_TRUE(call.Write(U8(1)));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    call.Succeed();
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(HandlerCallTest, BoundOfZeroIsTheOutputFailure)
{
    GiveSection(u"s0", Repeat(0xAA, 16));
    Stub zero(0, 1);
    Stub behind(1, 1);
    EXPECT_FALSE(call.Write(U8(1), zero, behind));
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise output (Process_Thing)"));
    EXPECT_EQ(behind.asked, 0);
    EXPECT_EQ(Section(1), Hex("AA"));
}

TEST_F(HandlerCallTest, ElementThatCantBeWrittenLeavesAPartOfTheOutList)
{
    GiveSection(u"s0", Repeat(0xAA, 16));
    call.Reply(U8(1), Stub(1, 0), U8(2));
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise output (Process_Thing)"));
    EXPECT_EQ(Section(2), Hex("01 AA"));
}

TEST_F(HandlerCallTest, RefusedGrowthIsTheOutputFailure)
{
    GiveSection(u"s0", Repeat(0xAA, 2));
    fake_pipe.Deliver(ErrorFrame(1, 2, u"the parent's text"));
    call.Reply(U32(1));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 4) + FailureFrame(u"Failed to serialise output (Process_Thing)"));
    EXPECT_EQ(Section(4), Hex("AA AA 00 00"));
}

TEST_F(HandlerCallTest, GrowthThatClosesTheChannelGetsNoReply)
{
    GiveSection(u"s0", Repeat(0xAA, 2));
    fake_section.create_code = 8;
    call.Reply(U32(1));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_FALSE(fake_pipe.is_open);
}

TEST_F(HandlerCallTest, SumIsTakenAs32Bits)
{
    GiveSection(u"s0", Repeat(0xAA, 16));
    // 0xFFFFFFF0 and 0x18 make 8.
    Stub large(0xFFFFFFF0, 1);
    Stub small(0x18, 1);
    EXPECT_TRUE(call.Write(large, small));
    EXPECT_EQ(channel.SharedSize(), 16u);
    EXPECT_EQ(small.left, 15u);
}

// A wide string without room at an odd address steps back by one, and that counts as success.
TEST_F(HandlerCallTest, WideStringWithoutRoomAtAnOddAddressIsASuccess)
{
    GiveSection(u"s0", Repeat(0xAA, 16));
    Stub takes_more_than_it_says(1, 13);
    Stub behind(1, 1);
    WSTR text(u"abc");
    call.Reply(takes_more_than_it_says, text, behind);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(behind.left, 4u);
    EXPECT_EQ(Section(16), Repeat(0xAA, 16));
}

TEST_F(HandlerCallTest, DataOfABufferSurvivesGrowth)
{
    GiveSection(u"s0", Hex("00 00 00 05 00 00 00 00 61 62 63 64 65 00 00 00"));
    BUF block;
    ASSERT_TRUE(call.Read(block));
    block.data[4] = 'E';
    fake_pipe.Deliver(SuccessFrame());
    call.Reply(block, U32(7));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 21) + SuccessFrame());
    EXPECT_EQ(Section(21), Hex("00 00 00 05 00 00 00 00 61 62 63 64 45 00 00 00 07 00 00 00 00"));
    EXPECT_EQ(block.data, channel.SharedView() + 8);
}

TEST_F(HandlerCallTest, ResultsGoToTheSectionThatTheParentPutInTheWay)
{
    GiveSection(u"s0", Repeat(0xAA, 2));
    fake_section.Add(u"other", 32);
    fake_pipe.Deliver(ResizeFrame(u"other", 32));
    fake_pipe.Deliver(SuccessFrame());
    call.Reply(U32(0x01020304));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 4) + SuccessFrame() + SuccessFrame());
    EXPECT_EQ(channel.SharedSize(), 32u);
    EXPECT_EQ(Section(5), Hex("01 02 03 04 00"));
}

// An answer whose payload breaks off closes the channel and agrees all the same: there is no section any more.
TEST_F(HandlerCallTest, SectionThatIsLostInTheMiddleOfACallRaises)
{
    GiveSection(u"s0", Repeat(0xAA, 2));
    fake_pipe.Deliver(Hex("53 00 00 00 02 01"));
    fake_pipe.DeliverNothing();
    EXPECT_THROW(call.Reply(U32(1)), std::logic_error);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 4));
    EXPECT_EQ(channel.SharedView(), nullptr);
}

TEST_F(HandlerCallTest, AnswerThatBreaksOffInItsHeaderIsNoAgreement)
{
    GiveSection(u"s0", Repeat(0xAA, 2));
    fake_pipe.Deliver(Hex("53 00 00 00"));
    fake_pipe.DeliverNothing();
    call.Reply(U32(1));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 4));
    EXPECT_FALSE(fake_pipe.is_open);
}

TEST_F(HandlerCallTest, SmallerSectionThatTheParentPutInTheWayIsTheOutputFailure)
{
    GiveSection(u"s0", Repeat(0xAA, 2));
    fake_section.Add(u"other", 3);
    fake_pipe.Deliver(ResizeFrame(u"other", 3));
    fake_pipe.Deliver(SuccessFrame());
    call.Reply(U32(0x01020304));
    EXPECT_EQ(fake_pipe.written,
              ResizeFrame(u"s1", 4) + SuccessFrame() + FailureFrame(u"Failed to serialise output (Process_Thing)"));
}

} // namespace
} // namespace kessil::test
