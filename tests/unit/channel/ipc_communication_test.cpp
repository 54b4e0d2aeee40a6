#include "channel/ipc_communication.h"

#include "support/heap_probe.h"
#include "unit/channel_fixture.h"

#include <new>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Attach and close.

TEST_F(UnattachedTest, AttachWaitsThirtySecondsForThePipeAndSendsNothing)
{
    EXPECT_TRUE(channel.Attach(u"\\\\.\\pipe\\x", error));
    EXPECT_THAT(call_log.calls, ElementsAre("ConnectPipe \\\\.\\pipe\\x 30000"));
    EXPECT_EQ(fake_pipe.reads, 0u);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_EQ(error, u"");
    EXPECT_EQ(channel.SharedView(), nullptr);
    EXPECT_EQ(channel.SharedSize(), 0u);
}

TEST_F(UnattachedTest, AttachThatFailsReportsTheSystemsTextAndThePipesName)
{
    fake_pipe.connect_code = 121;
    EXPECT_FALSE(channel.Attach(u"pipe", error));
    EXPECT_EQ(error, u"text of 121\r\n (pipe)");
    EXPECT_THAT(Logged(), IsEmpty());
    call_log.calls.clear();
    channel.Close();
    EXPECT_THAT(call_log.calls, IsEmpty());
}

TEST_F(UnattachedTest, AttachWorksAfterAnAttachThatFailed)
{
    fake_pipe.connect_code = 121;
    EXPECT_FALSE(channel.Attach(u"pipe", error));
    fake_pipe.connect_code = 0;
    EXPECT_TRUE(channel.Attach(u"pipe", error));
}

TEST_F(UnattachedTest, AttachWithoutMemoryClosesThePipe)
{
    {
        const NoMemoryFrom limit(16384);
        EXPECT_FALSE(channel.Attach(u"pipe", error));
    }
    EXPECT_EQ(error, u"Failed to allocate memory");
    EXPECT_FALSE(fake_pipe.is_open);
    EXPECT_THAT(Logged(), ElementsAre("debug commfunc: Closing handle m_hNamedPipe 0x71"));
}

TEST_F(ChannelTest, SecondAttachIsRefusedAndTheFirstConnectionStays)
{
    EXPECT_FALSE(channel.Attach(u"other", error));
    EXPECT_EQ(error, u"Communication channel already created");
    EXPECT_THAT(call_log.calls, IsEmpty());
    EXPECT_TRUE(channel.WriteDataToPipe("x", 1, error));
    EXPECT_EQ(fake_pipe.written, Hex("78"));
}

TEST_F(UnattachedTest, CloseOfAFreshChannelDoesNothing)
{
    channel.Close();
    EXPECT_THAT(call_log.calls, IsEmpty());
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(ChannelTest, CloseGivesUpViewThenSectionThenPipe)
{
    GiveSection(u"first", Repeat(0, 64));
    channel.Close();
    EXPECT_THAT(call_log.calls, ElementsAre("UnmapSection 64", "CloseSection", "ClosePipe"));
    EXPECT_THAT(Logged(), ElementsAre("debug commfunc: Closing handle m_hSharedMemory 0x5e00",
                                      "debug commfunc: Closing handle m_hNamedPipe 0x71"));
    EXPECT_EQ(channel.SharedView(), nullptr);
}

TEST_F(ChannelTest, SecondCloseDoesNothing)
{
    GiveSection(u"first", Repeat(0, 64));
    channel.Close();
    Forget();
    channel.Close();
    EXPECT_THAT(call_log.calls, IsEmpty());
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(FakesTest, DestructionCloses)
{
    {
        CIPCCommunication channel;
        WideString error;
        ASSERT_TRUE(channel.Attach(u"pipe", error));
    }
    EXPECT_FALSE(fake_pipe.is_open);
}

TEST_F(ChannelTest, EveryOperationAfterCloseFails)
{
    channel.Close();
    Forget();
    bool eof = false;
    char byte = 0;
    EXPECT_FALSE(channel.ReadDataFromPipe(&byte, 1, eof, error));
    EXPECT_EQ(error, u"text of 6\r\n");
    EXPECT_FALSE(eof);
    EXPECT_FALSE(channel.SendSuccess(error));
}

// Bytes handed on by a read-ahead belong to the connection that they came from.
TEST_F(ChannelTest, CloseForgetsBytesThatWereReadAhead)
{
    fake_pipe.Deliver(Hex("01 02 03"));
    bool eof = false;
    char byte = 0;
    ASSERT_TRUE(channel.ReadDataFromPipe(&byte, 1, eof, error));
    channel.Close();
    EXPECT_FALSE(channel.ReadDataFromPipe(&byte, 1, eof, error));
}

// Blocks.

class BlockTest : public ChannelTest
{
protected:
    bool Read(std::uint32_t size)
    {
        block.assign(size, 0xCC);
        return channel.ReadDataFromPipe(block.data(), size, eof, error);
    }

    Bytes block;
    bool eof = false;
};

TEST_F(BlockTest, NoBytesAreReadWithoutThePipe)
{
    EXPECT_TRUE(Read(0));
    EXPECT_FALSE(eof);
    EXPECT_EQ(fake_pipe.reads, 0u);
}

TEST_F(BlockTest, BlockIsPutTogetherFromWhatArrives)
{
    fake_pipe.DeliverInChunks(Hex("01 02 03 04 05 06 07"), 1);
    EXPECT_TRUE(Read(7));
    EXPECT_EQ(block, Hex("01 02 03 04 05 06 07"));
    EXPECT_EQ(fake_pipe.reads, 7u);
}

TEST_F(BlockTest, BlockLargerThanTheReadAheadIsPutTogether)
{
    fake_pipe.Deliver(Hex("01"));
    fake_pipe.DeliverInChunks(Repeat(2, 9999), 3000);
    EXPECT_TRUE(Read(10000));
    EXPECT_EQ(block, Hex("01") + Repeat(2, 9999));
}

TEST_F(BlockTest, EndBeforeTheFirstByteIsEof)
{
    fake_pipe.DeliverNothing();
    EXPECT_TRUE(Read(4));
    EXPECT_TRUE(eof);
    EXPECT_EQ(error, u"");
    EXPECT_THAT(Logged(), IsEmpty());
    EXPECT_TRUE(fake_pipe.is_open);
}

TEST_F(BlockTest, EofIsNeverCleared)
{
    fake_pipe.Deliver(Hex("01"));
    eof = true;
    EXPECT_TRUE(Read(1));
    EXPECT_TRUE(eof);
}

TEST_F(BlockTest, EndWithinABlockClosesAndSucceedsAllTheSame)
{
    fake_pipe.Deliver(Hex("01 02"));
    fake_pipe.DeliverNothing();
    EXPECT_TRUE(Read(4));
    EXPECT_FALSE(eof);
    EXPECT_EQ(error, u"Failed to read data from named pipe");
    EXPECT_EQ(block, Hex("01 02 FF FF"));
    EXPECT_FALSE(fake_pipe.is_open);
    EXPECT_THAT(Logged(), ElementsAre("debug commfunc: Closing handle m_hNamedPipe 0x71"));
    EXPECT_FALSE(Read(1));
    EXPECT_EQ(error, u"text of 6\r\n");
}

TEST_F(BlockTest, FailedReadClosesAndReportsTheSystemsText)
{
    fake_pipe.FailRead(109);
    EXPECT_FALSE(Read(4));
    EXPECT_FALSE(eof);
    EXPECT_EQ(error, u"text of 109\r\n");
    EXPECT_FALSE(fake_pipe.is_open);
    EXPECT_THAT(Logged(), ElementsAre("error commfunc: ReadFile() returns with error",
                                      "debug commfunc: Closing handle m_hNamedPipe 0x71"));
}

TEST_F(BlockTest, FailedReadWithinABlockFailsToo)
{
    fake_pipe.Deliver(Hex("01 02"));
    fake_pipe.FailRead(109);
    EXPECT_FALSE(Read(4));
    EXPECT_EQ(error, u"text of 109\r\n");
}

TEST_F(ChannelTest, BlockIsWrittenInOnePiece)
{
    EXPECT_TRUE(channel.WriteDataToPipe("abc", 3, error));
    EXPECT_EQ(fake_pipe.written, Plain("abc"));
    EXPECT_THAT(fake_pipe.writes, ElementsAre(3u));
}

TEST_F(ChannelTest, FailedWriteReportsTheSystemsTextAndLeavesTheChannelOpen)
{
    fake_pipe.FailWrite(232);
    EXPECT_FALSE(channel.WriteDataToPipe("abc", 3, error));
    EXPECT_EQ(error, u"text of 232\r\n");
    EXPECT_THAT(Logged(), ElementsAre("error commfunc: Failed on write"));
    EXPECT_TRUE(fake_pipe.is_open);
    EXPECT_TRUE(channel.WriteDataToPipe("abc", 3, error));
}

TEST_F(ChannelTest, ShortWriteIsAFailureAndNotRepeated)
{
    fake_pipe.ShortenWrite(2);
    EXPECT_FALSE(channel.WriteDataToPipe("abcde", 5, error));
    EXPECT_EQ(error, u"Failed to serialise data");
    EXPECT_THAT(Logged(), ElementsAre("error commfunc: Only wrote 2 out of 5"));
    EXPECT_TRUE(fake_pipe.is_open);
    EXPECT_EQ(fake_pipe.written, Plain("ab"));
}

// Both readers, through one face. `Conditional` is the request loop's, which takes 'f' without a frame.

struct ReaderCase
{
    const char *name;
    bool conditional;
};

class ReaderTest : public ChannelTest, public ::testing::WithParamInterface<ReaderCase>
{
protected:
    bool Read()
    {
        eof = true; // cleared on entry
        return GetParam().conditional ? channel.GetNextRequestCond("f", type, data, size, eof, error)
                                      : channel.GetNextRequest(type, data, size, eof, error);
    }
    bool Conditional() const { return GetParam().conditional; }

    char type = '?';
    unsigned char *data = nullptr;
    std::uint32_t size = 99;
    bool eof = false;
};

INSTANTIATE_TEST_SUITE_P(Both, ReaderTest,
                         ::testing::Values(ReaderCase{"Plain", false}, ReaderCase{"Conditional", true}),
                         [](const auto &reader) { return reader.param.name; });

TEST_P(ReaderTest, FrameInOnePiece)
{
    fake_pipe.Deliver(Hex("4C 00 00 00 04 78 00 00 00"));
    ASSERT_TRUE(Read());
    EXPECT_FALSE(eof);
    EXPECT_EQ(type, 'L');
    EXPECT_EQ(Bytes(data, data + size), Hex("78 00 00 00"));
    EXPECT_EQ(fake_pipe.reads, 1u);
}

TEST_P(ReaderTest, FrameInSingleBytes)
{
    fake_pipe.DeliverInChunks(Hex("41 00 00 00 05 01 02 03 04 05"), 1);
    ASSERT_TRUE(Read());
    EXPECT_EQ(type, 'A');
    EXPECT_EQ(Bytes(data, data + size), Hex("01 02 03 04 05"));
}

TEST_P(ReaderTest, FramesThatArriveTogetherAreTakenOneByOne)
{
    fake_pipe.Deliver(SuccessFrame() + Frame('E', Hex("01")) + Frame('M', Hex("02 03")));
    ASSERT_TRUE(Read());
    EXPECT_EQ(type, 'S');
    EXPECT_EQ(size, 0u);
    ASSERT_TRUE(Read());
    EXPECT_EQ(type, 'E');
    EXPECT_EQ(Bytes(data, data + size), Hex("01"));
    ASSERT_TRUE(Read());
    EXPECT_EQ(type, 'M');
    EXPECT_EQ(Bytes(data, data + size), Hex("02 03"));
}

TEST_P(ReaderTest, EmptyPayload)
{
    fake_pipe.Deliver(Hex("50 00 00 00 00"));
    ASSERT_TRUE(Read());
    EXPECT_EQ(type, 'P');
    EXPECT_EQ(size, 0u);
    EXPECT_NE(data, nullptr);
    EXPECT_FALSE(eof);
}

TEST_P(ReaderTest, PayloadLargerThanTheBufferAndTheReadAhead)
{
    const Bytes payload = Repeat(0xAB, 100001);
    fake_pipe.Deliver(Hex("46 00 01 86 A1 AB AB"));
    fake_pipe.DeliverInChunks(Repeat(0xAB, 99999), 40000);
    ASSERT_TRUE(Read());
    EXPECT_EQ(size, 100001u);
    EXPECT_EQ(Bytes(data, data + size), payload);
}

TEST_P(ReaderTest, LengthThatCantBeRoundedUpIsNoMemory)
{
    fake_pipe.Deliver(Hex("46 FF FF FF FF"));
    EXPECT_FALSE(Read());
    EXPECT_EQ(error, u"Failed to allocate memory");
    EXPECT_THAT(Logged(), IsEmpty());
    EXPECT_TRUE(fake_pipe.is_open);
}

TEST_P(ReaderTest, LengthAboveTheMemoryIsNoMemory)
{
    fake_pipe.Deliver(Hex("46 C0 00 00 00"));
    const NoMemoryFrom limit(0xC0000000);
    EXPECT_FALSE(Read());
    EXPECT_EQ(error, u"Failed to allocate memory");
}

TEST_P(ReaderTest, LengthIsBigEndian)
{
    fake_pipe.Deliver(Hex("46 01 02 03 04"));
    const NoMemoryFrom limit(0x01020304);
    EXPECT_FALSE(Read());
    EXPECT_EQ(size, 0x01020304u);
}

TEST_P(ReaderTest, EndBeforeTheFrameIsEof)
{
    fake_pipe.DeliverNothing();
    EXPECT_TRUE(Read());
    EXPECT_TRUE(eof);
    EXPECT_EQ(size, 0u);
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_P(ReaderTest, EndBeforeThePayloadIsEof)
{
    fake_pipe.Deliver(Hex("46 00 00 00 02"));
    fake_pipe.DeliverNothing();
    EXPECT_TRUE(Read());
    EXPECT_TRUE(eof);
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_P(ReaderTest, EndBehindTheTypeByte)
{
    fake_pipe.Deliver(Hex("46"));
    fake_pipe.DeliverNothing();
    // The length is a block of its own only where the type byte is read first.
    EXPECT_EQ(Read(), Conditional());
    EXPECT_EQ(eof, Conditional());
    EXPECT_EQ(fake_pipe.is_open, Conditional());
    EXPECT_EQ(error, Conditional() ? u"" : u"Failed to allocate memory");
}

// What is missing of a length is all ones: no half of a header is a whole frame.
TEST_P(ReaderTest, EndWithinTheLengthFailsAtThePayload)
{
    fake_pipe.Deliver(Hex("53 00 00"));
    fake_pipe.DeliverNothing();
    EXPECT_FALSE(Read());
    EXPECT_FALSE(eof);
    EXPECT_EQ(size, 0xFFFFu);
    EXPECT_EQ(error, u"text of 6\r\n");
    EXPECT_FALSE(fake_pipe.is_open);
    EXPECT_FALSE(Read());
}

TEST_P(ReaderTest, EndBeforeTheLastByteOfTheLengthFailsAtThePayload)
{
    fake_pipe.Deliver(Hex("53 00 00 00"));
    fake_pipe.DeliverNothing();
    EXPECT_FALSE(Read());
    EXPECT_EQ(size, 0xFFu);
    EXPECT_EQ(error, u"text of 6\r\n");
}

TEST_P(ReaderTest, EndWithinThePayloadLeavesAHalfFilledBlock)
{
    fake_pipe.Deliver(Hex("46 00 00 00 04 61 62"));
    fake_pipe.DeliverNothing();
    EXPECT_TRUE(Read());
    EXPECT_FALSE(eof);
    EXPECT_EQ(Bytes(data, data + size), Hex("61 62 FF FF"));
    EXPECT_EQ(error, u"Failed to read data from named pipe");
    EXPECT_FALSE(fake_pipe.is_open);
    EXPECT_FALSE(Read());
    EXPECT_EQ(error, u"text of 6\r\n");
}

TEST_P(ReaderTest, FailedReadOfTheFirstBlock)
{
    fake_pipe.FailRead(109);
    EXPECT_FALSE(Read());
    EXPECT_EQ(error, u"text of 109\r\n");
    EXPECT_FALSE(eof);
    EXPECT_THAT(Logged(), ElementsAre("error commfunc: ReadFile() returns with error",
                                      "debug commfunc: Closing handle m_hNamedPipe 0x71",
                                      Conditional() ? "error commfunc: Back (error) from ReadDataFromPipe() mini"
                                                    : "error commfunc: Back (error) from ReadDataFromPipe() 0"));
}

TEST_P(ReaderTest, FailedReadOfTheLength)
{
    fake_pipe.Deliver(Hex("46"));
    fake_pipe.FailRead(109);
    EXPECT_FALSE(Read());
    EXPECT_EQ(error, u"text of 109\r\n");
    EXPECT_THAT(Logged(), ElementsAre("error commfunc: ReadFile() returns with error",
                                      "debug commfunc: Closing handle m_hNamedPipe 0x71",
                                      "error commfunc: Back (error) from ReadDataFromPipe() 0"));
}

TEST_P(ReaderTest, FailedReadOfThePayload)
{
    fake_pipe.Deliver(Hex("46 00 00 00 02"));
    fake_pipe.FailRead(109);
    EXPECT_FALSE(Read());
    EXPECT_EQ(error, u"text of 109\r\n");
    std::vector<std::string> expected = {"error commfunc: ReadFile() returns with error",
                                         "debug commfunc: Closing handle m_hNamedPipe 0x71"};
    if (!Conditional())
        expected.emplace_back("error commfunc: Back (error) from ReadDataFromPipe() 1");
    EXPECT_EQ(Logged(), expected);
}

TEST_P(ReaderTest, ParentsSectionIsTakenInAndTheNextFrameDelivered)
{
    fake_section.Add(u"s", 32);
    fake_pipe.Deliver(ResizeFrame(u"s", 32) + Frame('L', Hex("00 00")));
    ASSERT_TRUE(Read());
    EXPECT_EQ(type, 'L');
    EXPECT_EQ(Bytes(data, data + size), Hex("00 00"));
    EXPECT_EQ(fake_pipe.written, Hex("53 00 00 00 00"));
    EXPECT_EQ(channel.SharedSize(), 32u);
}

TEST_P(ReaderTest, ParentsSectionsOneBehindTheOther)
{
    fake_section.Add(u"s0", 32);
    fake_section.Add(u"s1", 48);
    fake_pipe.Deliver(ResizeFrame(u"s0", 32) + ResizeFrame(u"s1", 48) + SuccessFrame());
    ASSERT_TRUE(Read());
    EXPECT_EQ(type, 'S');
    EXPECT_EQ(fake_pipe.written, SuccessFrame() + SuccessFrame());
    EXPECT_EQ(channel.SharedSize(), 48u);
}

TEST_P(ReaderTest, EndBehindTheParentsSectionIsEof)
{
    fake_section.Add(u"s", 32);
    fake_pipe.Deliver(ResizeFrame(u"s", 32));
    fake_pipe.DeliverNothing();
    EXPECT_TRUE(Read());
    EXPECT_TRUE(eof);
    EXPECT_EQ(size, 0u);
}

TEST_P(ReaderTest, AnswerToTheParentsSectionThatCantBeWrittenIsIgnored)
{
    fake_section.Add(u"s", 32);
    fake_pipe.Deliver(ResizeFrame(u"s", 32) + SuccessFrame());
    fake_pipe.FailWrite(232);
    ASSERT_TRUE(Read());
    EXPECT_EQ(type, 'S');
    EXPECT_EQ(channel.SharedSize(), 32u);
}

TEST_P(ReaderTest, MalformedSectionIsRefused)
{
    fake_pipe.Deliver(Frame('R', Wide(u"s")));
    EXPECT_FALSE(Read());
    EXPECT_EQ(error, u"Failed to serialise data");
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise data"));
    EXPECT_THAT(Logged(), IsEmpty());
    EXPECT_TRUE(fake_pipe.is_open);
}

TEST_P(ReaderTest, SectionThatCantBeOpenedIsRefused)
{
    fake_pipe.Deliver(ResizeFrame(u"none", 32));
    EXPECT_FALSE(Read());
    EXPECT_EQ(error, u"text of 2\r\n");
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"text of 2\r\n"));
    EXPECT_TRUE(fake_pipe.is_open);
}

// The conditional reader's byte that has no frame.

class ConditionalReaderTest : public ChannelTest
{
protected:
    bool Read(const char *unframed) { return channel.GetNextRequestCond(unframed, type, data, size, eof, error); }

    char type = '?';
    unsigned char *data = reinterpret_cast<unsigned char *>(this);
    std::uint32_t size = 99;
    bool eof = false;
};

TEST_F(ConditionalReaderTest, UnframedByteIsReturnedAloneAndNothingReadBehindIt)
{
    fake_pipe.Deliver(Hex("66"));
    ASSERT_TRUE(Read("f"));
    EXPECT_EQ(type, 'f');
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(size, 0u);
    EXPECT_FALSE(eof);
    EXPECT_EQ(fake_pipe.reads, 1u);
}

TEST_F(ConditionalReaderTest, BytesBehindTheUnframedByteWaitForTheNextReader)
{
    fake_pipe.Deliver(Hex("66 2A"));
    ASSERT_TRUE(Read("f"));
    unsigned char byte = 0;
    ASSERT_TRUE(channel.ReadDataFromPipe(&byte, 1, eof, error));
    EXPECT_EQ(byte, 0x2A);
}

TEST_F(ConditionalReaderTest, EveryMemberOfTheSetIsUnframed)
{
    fake_pipe.Deliver(Hex("67 66 68"));
    ASSERT_TRUE(Read("fgh"));
    EXPECT_EQ(type, 'g');
    ASSERT_TRUE(Read("fgh"));
    EXPECT_EQ(type, 'f');
    ASSERT_TRUE(Read("fgh"));
    EXPECT_EQ(type, 'h');
}

TEST_F(ConditionalReaderTest, ZeroByteIsAlwaysAMember)
{
    fake_pipe.Deliver(Hex("00 00 00 00 00"));
    ASSERT_TRUE(Read("f"));
    EXPECT_EQ(type, '\0');
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(size, 0u);
    EXPECT_FALSE(eof);
}

TEST_F(ConditionalReaderTest, ByteAboveSevenBitsHasAFrame)
{
    fake_pipe.Deliver(Hex("E6 00 00 00 00"));
    ASSERT_TRUE(Read("f"));
    EXPECT_EQ(static_cast<unsigned char>(type), 0xE6);
    EXPECT_EQ(fake_pipe.reads, 1u);
}

TEST_F(ConditionalReaderTest, PlainReaderTakesTheUnframedByteForAHeader)
{
    fake_pipe.Deliver(Hex("66 00 00 00 01 07"));
    ASSERT_TRUE(channel.GetNextRequest(type, data, size, eof, error));
    EXPECT_EQ(type, 'f');
    EXPECT_EQ(Bytes(data, data + size), Hex("07"));
}

// Frames that go out.

TEST_F(ChannelTest, SuccessIsAnEmptyFrame)
{
    EXPECT_TRUE(channel.SendSuccess(error));
    EXPECT_EQ(fake_pipe.written, Hex("53 00 00 00 00"));
    EXPECT_THAT(fake_pipe.writes, ElementsAre(5u));
}

TEST_F(ChannelTest, SuccessThatCantBeWrittenIsReported)
{
    fake_pipe.FailWrite(232);
    EXPECT_FALSE(channel.SendSuccess(error));
    EXPECT_EQ(error, u"text of 232\r\n");
}

TEST_F(ChannelTest, FrameOfNumbersAndText)
{
    ASSERT_TRUE(channel.BeginMessage('E', error));
    ASSERT_TRUE(channel.AppendUInt32(0xFFFFFFFF, error));
    ASSERT_TRUE(channel.AppendUInt32(0x01020304, error));
    ASSERT_TRUE(channel.AppendUInt64(0x1122334455667788, error));
    ASSERT_TRUE(channel.AppendString(u"x\u20AC", error));
    ASSERT_TRUE(channel.SendMessage(error));
    EXPECT_EQ(fake_pipe.written,
              Hex("45 00 00 00 16 FF FF FF FF 01 02 03 04 11 22 33 44 55 66 77 88 78 00 AC 20 00 00"));
    EXPECT_THAT(fake_pipe.writes, ElementsAre(27u));
}

TEST_F(ChannelTest, FrameGrowsWithItsText)
{
    const std::u16string text(20000, u'y');
    ASSERT_TRUE(channel.BeginMessage('M', error));
    ASSERT_TRUE(channel.AppendString(text, error));
    ASSERT_TRUE(channel.SendMessage(error));
    EXPECT_EQ(fake_pipe.written, Frame('M', Wide(text)));
}

TEST_F(ChannelTest, EmbeddedZeroUnitsOfATextAreSent)
{
    ASSERT_TRUE(channel.BeginMessage('M', error));
    ASSERT_TRUE(channel.AppendString(WideString(u"a\0b", 3), error));
    ASSERT_TRUE(channel.SendMessage(error));
    EXPECT_EQ(fake_pipe.written, Hex("4D 00 00 00 08 61 00 00 00 62 00 00 00"));
}

TEST_F(ChannelTest, BeginMessageDropsAnEarlierFrame)
{
    ASSERT_TRUE(channel.BeginMessage('E', error));
    ASSERT_TRUE(channel.AppendUInt32(1, error));
    ASSERT_TRUE(channel.BeginMessage('S', error));
    ASSERT_TRUE(channel.SendMessage(error));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(UnattachedTest, BeginMessageWithoutMemoryFails)
{
    const NoMemoryFrom limit(1024);
    EXPECT_FALSE(channel.BeginMessage('S', error));
    EXPECT_EQ(error, u"Failed to allocate memory");
}

TEST_F(UnattachedTest, NumberWithoutMemoryRaisesAndLogsWhy)
{
    ASSERT_TRUE(channel.BeginMessage('E', error));
    for (int i = 0; i < 254; ++i)
        ASSERT_TRUE(channel.AppendUInt32(0, error));
    const NoMemoryFrom limit(2048);
    EXPECT_THROW(channel.AppendUInt32(0, error), std::bad_alloc);
    EXPECT_EQ(error, u"Failed to allocate memory");
    error.clear();
    EXPECT_THROW(channel.AppendUInt64(0, error), std::bad_alloc);
    EXPECT_EQ(error, u"Failed to allocate memory");
}

TEST_F(ChannelTest, TextWithoutMemoryFailsAndSendsNothing)
{
    const std::u16string text(20000, u'y');
    ASSERT_TRUE(channel.BeginMessage('E', error));
    const NoMemoryFrom limit(40000);
    EXPECT_FALSE(channel.AppendString(text, error));
    EXPECT_EQ(error, u"Failed to allocate memory");
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

} // namespace
} // namespace kessil::test
