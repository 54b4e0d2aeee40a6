#include "marshal/replies.h"

#include "support/heap_probe.h"
#include "unit/channel_fixture.h"

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(ChannelTest, SuccessReply)
{
    SendSuccessReply(channel);
    EXPECT_EQ(fake_pipe.written, Hex("53 00 00 00 00"));
}

TEST_F(ChannelTest, FailureReplyCarriesMinusOneTwice)
{
    SendFailureReply(channel, u"x");
    EXPECT_EQ(fake_pipe.written, Hex("45 00 00 00 0C FF FF FF FF FF FF FF FF 78 00 00 00"));
}

TEST_F(ChannelTest, MessageReplyCarriesItsByteAs32Bits)
{
    SendMessageReply(channel, u"hi", 0xFE);
    EXPECT_EQ(fake_pipe.written, Hex("4D 00 00 00 0A 00 00 00 FE 68 00 69 00 00 00"));
    EXPECT_THAT(fake_pipe.writes, ElementsAre(15u));
}

TEST_F(ChannelTest, ReplyThatCantBeWrittenIsDropped)
{
    for (int i = 0; i < 3; ++i)
        fake_pipe.FailWrite(232);
    SendSuccessReply(channel);
    SendFailureReply(channel, u"x");
    SendMessageReply(channel, u"x", 1);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_TRUE(fake_pipe.is_open);
}

// The frame's block grows in steps of 1024 bytes, the text's in its own: only the frame needs the last step.
TEST_F(ChannelTest, ReplyWithoutMemoryForItsTextIsDropped)
{
    const WideString text(20000, u'y');
    const NoMemoryFrom limit(40960);
    SendMessageReply(channel, text, 1);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

} // namespace
} // namespace kessil::test
