#include "parent/scripted.h"

#include <gmock/gmock.h>

namespace kessil::parent {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

/// A helper that answers a call against the protocol and then keeps running, so that only its answer can end the call.
/// The limit is for a parent that waits for more.
class BrokenAnswerTest : public ScriptedTest
{
protected:
    Result After(const std::string &lines)
    {
        StartWithSection(call_f + lines + "hang\n");
        return CallF({0ms, 20s});
    }

    void ExpectBroken(const std::string &lines)
    {
        const Result result = After(lines);
        EXPECT_EQ(result.outcome, Outcome::BrokenProtocol) << lines << result.message;
        EXPECT_THAT(result.message, HasSubstr("the helper broke the protocol in f (s) of library a"));
        EXPECT_FALSE(result.exit_code);
        EXPECT_FALSE(helper->Running());
        EXPECT_EQ(Leftovers(directory), "");
    }
};

TEST_F(BrokenAnswerTest, EveryTypeThatNoHelperSends)
{
    for (const std::string type : {"00", "41", "46", "4C", "50", "58", "5A", "65", "66", "72", "73", "FF"})
        ExpectBroken("send " + type + '\n');
}

TEST_F(BrokenAnswerTest, LengthsOfFourGigabytes)
{
    for (const std::string type : {"53", "45", "4D", "52"})
        ExpectBroken("send " + type + " FFFFFFFF\n");
}

TEST_F(BrokenAnswerTest, LengthsJustBeyondTheBounds)
{
    ExpectBroken("send 53 00000001\n");
    ExpectBroken("send 45 00100001\n");
    ExpectBroken("send 4D 00100001\n");
    ExpectBroken("send 52 00010001\n");
}

TEST_F(BrokenAnswerTest, FailuresCutShort)
{
    const std::string payload = "FFFFFFFFFFFFFFFF7800";
    for (std::size_t bytes = 0; bytes <= payload.size() / 2; ++bytes) {
        const std::string length = {"0123456789A"[bytes]};
        ExpectBroken("send 45 0000000" + length + payload.substr(0, 2 * bytes) + '\n');
    }
}

TEST_F(BrokenAnswerTest, NoticesCutShortOrWithALargeValue)
{
    const std::string payload = "000000017800";
    for (std::size_t bytes = 0; bytes <= payload.size() / 2; ++bytes)
        ExpectBroken("send 4D 0000000" + std::to_string(bytes) + payload.substr(0, 2 * bytes) + '\n');
    ExpectBroken("send 4D 00000006 00000100 0000\n");
}

TEST_F(BrokenAnswerTest, BytesBehindTheAnswer)
{
    ExpectBroken("send 53 00000000 53\n");
    ExpectBroken("send 45 0000000A FFFFFFFF FFFFFFFF 0000 4D\n");
}

TEST_F(BrokenAnswerTest, AnnouncementsCutShort)
{
    const std::string payload = "610000000000000000000064";
    for (std::size_t bytes = 0; bytes < payload.size() / 2; ++bytes) {
        const std::string length = {"0123456789ABC"[bytes]};
        ExpectBroken("send 52 0000000" + length + payload.substr(0, 2 * bytes) + '\n');
    }
}

TEST_F(BrokenAnswerTest, AnnouncementsOfUnknownSections)
{
    ExpectBroken("announce_as kessil-of-someone-else 4096\n");
    ExpectBroken("announce_as 0 4096\n");
}

TEST_F(BrokenAnswerTest, AnnouncementsOfImpossibleSizes)
{
    ExpectBroken("create 4096\nlog_names\nannounce 0\n");
    ExpectBroken("create 4096\nlog_names\nannounce 4294967296\n");
    ExpectBroken("create 4096\nlog_names\nannounce 18446744073709551615\n");
}

TEST_F(BrokenAnswerTest, ASuccessInASectionThatWasRefused)
{
    ExpectBroken("announce 100\ntake FFFFFFFF FFFFFFFF\nsend 53 00000000\n");
}

TEST_F(BrokenAnswerTest, NoticesAndAnnouncementsOutsideACall)
{
    for (const std::string frame : {"4D 00000006 00000001 0000", "52 0000000C 6100 0000 0000000000000064"}) {
        Start("attach\nexpect 4C 00000004 7800 0000\nsend " + frame + "\nhang\n");
        const Result result = helper->Load(u"x");
        EXPECT_EQ(result.outcome, Outcome::BrokenProtocol);
        EXPECT_THAT(result.message, HasSubstr("in loading x"));
    }
}

TEST_F(BrokenAnswerTest, ASuccessForAnErrorText)
{
    Start("attach\ntake 00000005\nsend 53 00000000\nhang\n");
    WideString text = u"before";
    EXPECT_EQ(helper->ErrorText(5, u"m", text).outcome, Outcome::BrokenProtocol);
    EXPECT_EQ(text, u"before");
}

TEST_F(BrokenAnswerTest, TheErrorTextOfAnotherMessage)
{
    Start("attach\ntake 00000005\nsend 45 0000000A FFFFFFFF 00000006 0000\nhang\n");
    WideString text;
    EXPECT_EQ(helper->ErrorText(5, u"m", text).outcome, Outcome::BrokenProtocol);
}

class EarlyExitTest : public BrokenAnswerTest
{
protected:
    void ExpectDeathAfterEachByteOf(const std::string &frame)
    {
        for (std::size_t bytes = 0; bytes < frame.size() / 2; ++bytes) {
            const std::string sent = bytes == 0 ? "" : "send " + frame.substr(0, 2 * bytes) + '\n';
            StartWithSection(call_f + sent + "exit 5\n");
            const Result result = CallF({0ms, 20s});
            EXPECT_EQ(result.outcome, Outcome::Died) << bytes << result.message;
            EXPECT_EQ(result.exit_code, 5U);
            EXPECT_EQ(Leftovers(directory), "");
        }
    }
};

TEST_F(EarlyExitTest, InEveryByteOfASuccess)
{
    ExpectDeathAfterEachByteOf("5300000000");
}

TEST_F(EarlyExitTest, InEveryByteOfAFailure)
{
    ExpectDeathAfterEachByteOf("450000000CFFFFFFFFFFFFFFFF78000000");
}

TEST_F(EarlyExitTest, InEveryByteOfANotice)
{
    ExpectDeathAfterEachByteOf("4D000000080000000178000000");
}

TEST_F(EarlyExitTest, InEveryByteOfAnAnnouncement)
{
    ExpectDeathAfterEachByteOf("520000000C610000000000000000000064");
}

TEST_F(EarlyExitTest, WithASectionMadeAndNotYetAnnounced)
{
    StartWithSection(call_f + "create 4096\nlog_names\nexit 5\n");
    EXPECT_EQ(CallF().outcome, Outcome::Died);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(EarlyExitTest, DirectlyAfterAnAnnouncement)
{
    StartWithSection(call_f + "create 4096\nlog_names\nannounce 4096\nexit 5\n");
    EXPECT_EQ(CallF().outcome, Outcome::Died);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(EarlyExitTest, BeforeTheRequestArrived)
{
    StartWithSection("drop\nexit 5\n");
    const Result result = CallF();
    EXPECT_EQ(result.outcome, Outcome::Died);
    EXPECT_EQ(result.exit_code, 5U);
}

} // namespace
} // namespace kessil::parent
