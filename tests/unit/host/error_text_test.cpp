#include "host/error_text.h"

#include "fakes/fake_message_table.h"
#include "support/heap_probe.h"
#include "unit/channel_fixture.h"

#include <new>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ErrorTextTest : public ChannelTest
{
protected:
    ErrorTextTest()
    {
        fake_message_table.files[u"m.dll"] = {{1234, u"no %1 in drive %2\r\n"}, {0xC0000005, u"d\u00E9faut\r\n"}};
    }
};

TEST_F(ErrorTextTest, MessageIsAnErrorFrameWithItsNumber)
{
    ReadErrDLL(1234, u"m.dll", channel);
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0xFFFFFFFF, 1234, u"no %1 in drive %2\r\n"));
    EXPECT_THAT(call_log.calls,
                ElementsAre("OpenMessageTable m.dll", "ReadMessage 1234", "CloseMessageTable", "WritePipe 53"));
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(ErrorTextTest, NumberHasAllItsBits)
{
    ReadErrDLL(0xC0000005, u"m.dll", channel);
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0xFFFFFFFF, 0xC0000005, u"d\u00E9faut\r\n"));
}

// The number is then taken for a code of the system; why the lookup failed is not reported.
TEST_F(ErrorTextTest, NumberThatTheFileLacksHasTheSystemsText)
{
    ReadErrDLL(5, u"m.dll", channel);
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0xFFFFFFFF, 5, u"text of 5\r\n (m.dll)"));
    EXPECT_EQ(fake_message_table.open, 0u);
}

TEST_F(ErrorTextTest, FileThatCanNotBeOpenedHasTheTextOfThatFailure)
{
    ReadErrDLL(1234, u"none.dll", channel);
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0xFFFFFFFF, 1234, u"text of 126\r\n (none.dll)"));
    EXPECT_THAT(call_log.calls, ElementsAre("OpenMessageTable none.dll", "WritePipe 63"));
}

TEST_F(ErrorTextTest, FileIsOpenedAnewEachTime)
{
    ReadErrDLL(1234, u"m.dll", channel);
    fake_message_table.files[u"m.dll"][1234] = u"other";
    Forget();
    ReadErrDLL(1234, u"m.dll", channel);
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0xFFFFFFFF, 1234, u"other"));
}

TEST_F(ErrorTextTest, ReplyThatCanNotBeWrittenIsIgnored)
{
    fake_pipe.FailWrite(232);
    ReadErrDLL(1234, u"m.dll", channel);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_TRUE(fake_pipe.is_open);
}

// A text that doesn't fit into the channel's block is not sent in part.
TEST_F(ErrorTextTest, ReplyWithoutMemoryIsNotSent)
{
    const WideString name(u"m.dll");
    fake_message_table.files[name][7] = WideString(20000, u'x');
    call_log.recording = false;
    {
        const NoMemoryFrom limit(40500);
        ReadErrDLL(7, name, channel);
    }
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_EQ(fake_message_table.open, 0u);
}

} // namespace
} // namespace kessil::test
