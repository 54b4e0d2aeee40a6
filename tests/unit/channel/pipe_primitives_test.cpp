#include "channel/pipe_primitives.h"

#include "support/heap_probe.h"
#include "unit/channel_fixture.h"

#include <new>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PrimitivesTest : public ChannelTest
{
protected:
    std::uint32_t u32 = 77;
    std::uint64_t u64 = 77;
    std::string text = "old";
    std::vector<unsigned char> bytes = {9};
};

TEST_F(PrimitivesTest, NumbersAreBigEndian)
{
    EXPECT_TRUE(WriteInt32ToPipe(channel, -2));
    EXPECT_TRUE(WriteInt32ToPipe(channel, 1));
    EXPECT_TRUE(WriteUInt32ToPipe(channel, 0x01020304));
    EXPECT_TRUE(WriteUInt64ToPipe(channel, 0x0102030405060708));
    EXPECT_EQ(fake_pipe.written, Hex("FF FF FF FE 00 00 00 01 01 02 03 04 01 02 03 04 05 06 07 08"));
    EXPECT_THAT(fake_pipe.writes, ElementsAre(4u, 4u, 4u, 8u));
}

TEST_F(PrimitivesTest, LengthAndBodyGoOutAsTwoWrites)
{
    EXPECT_TRUE(WriteStringToPipe(channel, "ab"));
    EXPECT_TRUE(WriteBytesToPipe(channel, {1, 0, 2}));
    EXPECT_EQ(fake_pipe.written, Hex("00 00 00 02 61 62 00 00 00 03 01 00 02"));
    EXPECT_THAT(fake_pipe.writes, ElementsAre(4u, 2u, 4u, 3u));
}

TEST_F(PrimitivesTest, EmptyBodiesAreWritten)
{
    EXPECT_TRUE(WriteStringToPipe(channel, ""));
    EXPECT_TRUE(WriteBytesToPipe(channel, {}));
    EXPECT_EQ(fake_pipe.written, Hex("00 00 00 00 00 00 00 00"));
    EXPECT_THAT(fake_pipe.writes, ElementsAre(4u, 0u, 4u, 0u));
}

TEST_F(PrimitivesTest, LongStringIsWrittenWhole)
{
    EXPECT_TRUE(WriteStringToPipe(channel, std::string(1025, 'x')));
    EXPECT_EQ(fake_pipe.written, Be32(1025) + Repeat('x', 1025));
}

TEST_F(PrimitivesTest, BodyIsNotWrittenBehindALengthThatFailed)
{
    fake_pipe.FailWrite(232);
    EXPECT_FALSE(WriteStringToPipe(channel, "ab"));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    fake_pipe.FailWrite(232);
    EXPECT_FALSE(WriteBytesToPipe(channel, {1}));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

TEST_F(PrimitivesTest, FailedWritesAreReported)
{
    for (int i = 0; i < 4; ++i)
        fake_pipe.FailWrite(232);
    EXPECT_FALSE(WriteInt32ToPipe(channel, 1));
    EXPECT_FALSE(WriteUInt32ToPipe(channel, 1));
    EXPECT_FALSE(WriteUInt64ToPipe(channel, 1));
    EXPECT_FALSE(WriteStringToPipe(channel, ""));
    fake_pipe.ShortenWrite(4);
    fake_pipe.ShortenWrite(1);
    EXPECT_FALSE(WriteStringToPipe(channel, "ab"));
}

TEST_F(PrimitivesTest, NumbersAreRead)
{
    fake_pipe.DeliverInChunks(Hex("FF FF FF FE 01 02 03 04 05 06 07 08"), 5);
    EXPECT_TRUE(ReadUInt32FromPipe(channel, u32));
    EXPECT_EQ(u32, 0xFFFFFFFEu);
    EXPECT_TRUE(ReadUInt64FromPipe(channel, u64));
    EXPECT_EQ(u64, 0x0102030405060708u);
}

TEST_F(PrimitivesTest, NumbersAreZeroAtTheEndOfTheStream)
{
    fake_pipe.DeliverNothing();
    EXPECT_FALSE(ReadUInt32FromPipe(channel, u32));
    EXPECT_EQ(u32, 0u);
    fake_pipe.DeliverNothing();
    EXPECT_FALSE(ReadUInt64FromPipe(channel, u64));
    EXPECT_EQ(u64, 0u);
}

TEST_F(PrimitivesTest, NumbersAreZeroWhenTheReadFails)
{
    fake_pipe.Deliver(Hex("01 02"));
    fake_pipe.FailRead(109);
    EXPECT_FALSE(ReadUInt32FromPipe(channel, u32));
    EXPECT_EQ(u32, 0u);
    EXPECT_FALSE(ReadUInt64FromPipe(channel, u64));
    EXPECT_EQ(u64, 0u);
}

TEST_F(PrimitivesTest, StringIsRead)
{
    fake_pipe.Deliver(Be32(3) + Hex("61 00 62") + Be32(0));
    EXPECT_TRUE(ReadStringFromPipe(channel, text));
    EXPECT_EQ(text, std::string("a\0b", 3));
    EXPECT_TRUE(ReadStringFromPipe(channel, text));
    EXPECT_EQ(text, "");
}

TEST_F(PrimitivesTest, StringOfExactly1024BytesIsRead)
{
    fake_pipe.Deliver(Be32(1024) + Repeat('x', 1024));
    EXPECT_TRUE(ReadStringFromPipe(channel, text));
    EXPECT_EQ(text, std::string(1024, 'x'));
}

TEST_F(PrimitivesTest, StringOf1025BytesIsRefusedAndItsBytesStayInThePipe)
{
    fake_pipe.Deliver(Be32(1025) + Hex("01 02 03 04") + Repeat('x', 1021));
    EXPECT_FALSE(ReadStringFromPipe(channel, text));
    EXPECT_EQ(text, "old");
    EXPECT_TRUE(ReadUInt32FromPipe(channel, u32));
    EXPECT_EQ(u32, 0x01020304u);
}

TEST_F(PrimitivesTest, StringThatEndsEarlyFails)
{
    fake_pipe.DeliverNothing();
    EXPECT_FALSE(ReadStringFromPipe(channel, text));
    fake_pipe.Deliver(Be32(3));
    fake_pipe.DeliverNothing();
    EXPECT_FALSE(ReadStringFromPipe(channel, text));
    fake_pipe.Deliver(Be32(3) + Hex("61"));
    fake_pipe.FailRead(109);
    EXPECT_FALSE(ReadStringFromPipe(channel, text));
    EXPECT_EQ(text, "old");
}

TEST_F(PrimitivesTest, BytesAreReadWithoutALimit)
{
    fake_pipe.Deliver(Be32(100000));
    fake_pipe.DeliverInChunks(Repeat(0xA5, 100000), 60000);
    EXPECT_TRUE(ReadBytesFromPipe(channel, bytes));
    EXPECT_EQ(bytes, Repeat(0xA5, 100000));
}

TEST_F(PrimitivesTest, BytesAreEmptyWhenTheLengthCantBeRead)
{
    fake_pipe.DeliverNothing();
    EXPECT_FALSE(ReadBytesFromPipe(channel, bytes));
    EXPECT_THAT(bytes, IsEmpty());
}

TEST_F(PrimitivesTest, BytesOfNoLength)
{
    fake_pipe.Deliver(Be32(0));
    EXPECT_TRUE(ReadBytesFromPipe(channel, bytes));
    EXPECT_THAT(bytes, IsEmpty());
}

TEST_F(PrimitivesTest, BytesThatEndEarlyFail)
{
    fake_pipe.Deliver(Be32(3));
    fake_pipe.DeliverNothing();
    EXPECT_FALSE(ReadBytesFromPipe(channel, bytes));
    fake_pipe.Deliver(Be32(3) + Hex("61"));
    fake_pipe.FailRead(109);
    EXPECT_FALSE(ReadBytesFromPipe(channel, bytes));
}

TEST_F(PrimitivesTest, BytesWithoutMemoryRaise)
{
    fake_pipe.Deliver(Be32(0xFFFFFFFF));
    const NoMemoryFrom limit(0xFFFFFFFF);
    EXPECT_THROW(static_cast<void>(ReadBytesFromPipe(channel, bytes)), std::bad_alloc);
}

} // namespace
} // namespace kessil::test
