#include "channel/read_ahead.h"

#include "fakes/fake_pipe.h"
#include "platform/last_error.h"
#include "unit/channel_fixture.h"

#include <algorithm>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;

class ReadAheadTest : public FakesTest
{
protected:
    ReadAheadTest() { platform::ConnectPipe(u"pipe", 0); }

    // What one read of `size` bytes delivers.
    Bytes Read(std::uint32_t size)
    {
        Bytes bytes(size, 0xCC);
        std::uint32_t count = 0;
        EXPECT_TRUE(ahead.Read(fake_pipe_handle, bytes.data(), size, count));
        bytes.resize(count);
        return bytes;
    }

    ReadAhead ahead;
};

TEST_F(ReadAheadTest, FrameInOnePieceCostsOneRead)
{
    fake_pipe.Deliver(Hex("46 00 00 00 02 61 62"));
    EXPECT_EQ(Read(1), Hex("46"));
    EXPECT_EQ(Read(4), Hex("00 00 00 02"));
    EXPECT_EQ(Read(2), Hex("61 62"));
    EXPECT_THAT(fake_pipe.sizes, ElementsAre(4096u));
}

TEST_F(ReadAheadTest, WhatIsThereIsDeliveredWithoutWaitingForMore)
{
    fake_pipe.Deliver(Hex("01 02"));
    fake_pipe.Deliver(Hex("03"));
    EXPECT_EQ(Read(4), Hex("01 02"));
    EXPECT_EQ(fake_pipe.reads, 1u);
    EXPECT_EQ(Read(4), Hex("03"));
    EXPECT_EQ(fake_pipe.reads, 2u);
}

TEST_F(ReadAheadTest, LargeRequestIsReadInPlace)
{
    fake_pipe.Deliver(Repeat(5, 10000));
    EXPECT_EQ(Read(10000), Repeat(5, 10000));
    EXPECT_THAT(fake_pipe.sizes, ElementsAre(10000u));
}

TEST_F(ReadAheadTest, LargeRequestTakesWhatIsBufferedFirst)
{
    fake_pipe.Deliver(Hex("01 02 03"));
    fake_pipe.Deliver(Repeat(9, 9998));
    EXPECT_EQ(Read(1), Hex("01"));
    EXPECT_EQ(Read(10000), Hex("02 03"));
    EXPECT_EQ(Read(9998), Repeat(9, 9998));
    EXPECT_THAT(fake_pipe.sizes, ElementsAre(4096u, 9998u));
}

TEST_F(ReadAheadTest, EndOfStreamIsDeliveredAndNotRemembered)
{
    fake_pipe.DeliverNothing();
    fake_pipe.Deliver(Hex("07"));
    EXPECT_EQ(Read(1), Bytes());
    EXPECT_EQ(Read(1), Hex("07"));
}

TEST_F(ReadAheadTest, EndOfStreamComesAfterWhatIsBuffered)
{
    fake_pipe.Deliver(Hex("01 02"));
    fake_pipe.DeliverNothing();
    EXPECT_EQ(Read(1), Hex("01"));
    EXPECT_EQ(Read(1), Hex("02"));
    EXPECT_EQ(Read(1), Bytes());
}

TEST_F(ReadAheadTest, FailureLeavesTheReasonAndNoBytes)
{
    fake_pipe.FailRead(109);
    fake_pipe.Deliver(Hex("07"));
    unsigned char byte = 0;
    std::uint32_t count = 0;
    EXPECT_FALSE(ahead.Read(fake_pipe_handle, &byte, 1, count));
    EXPECT_EQ(platform::LastError(), 109u);
    EXPECT_EQ(Read(1), Hex("07"));
}

TEST_F(ReadAheadTest, ClearForgetsWhatIsBuffered)
{
    fake_pipe.Deliver(Hex("01 02 03"));
    fake_pipe.Deliver(Hex("04"));
    EXPECT_EQ(Read(1), Hex("01"));
    ahead.Clear();
    EXPECT_EQ(Read(1), Hex("04"));
}

TEST_F(ReadAheadTest, NothingDeliveredIsLeftBehindAWipe)
{
    const Bytes secret = Plain("correct horse battery staple");
    const auto holds_secret = [&] {
        const auto *const bytes = reinterpret_cast<const unsigned char *>(&ahead);
        return std::search(bytes, bytes + sizeof ahead, secret.begin(), secret.end()) != bytes + sizeof ahead;
    };
    fake_pipe.Deliver(secret + Hex("01 02"));
    Read(static_cast<std::uint32_t>(secret.size()));
    ASSERT_TRUE(holds_secret());
    ahead.WipeDelivered();
    EXPECT_FALSE(holds_secret());
    EXPECT_EQ(Read(2), Hex("01 02"));
}

// An arrival that is shorter than the one before leaves that one's end where it was.
TEST_F(ReadAheadTest, NothingOfEarlierArrivalsIsLeftBehindAWipe)
{
    const Bytes secret = Plain("correct horse battery staple");
    fake_pipe.Deliver(Repeat(1, 100) + secret);
    Read(4000);
    fake_pipe.Deliver(Hex("01 02"));
    Read(1);
    ahead.WipeDelivered();
    const auto *const bytes = reinterpret_cast<const unsigned char *>(&ahead);
    EXPECT_EQ(std::search(bytes, bytes + sizeof ahead, secret.begin(), secret.end()), bytes + sizeof ahead);
    EXPECT_EQ(Read(1), Hex("02"));
}

} // namespace
} // namespace kessil::test
