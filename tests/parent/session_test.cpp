// A session without the classes that offer it to a parent: the request under way, and how it ends.

#include "parent/fake_helper.h"
#include "parent/session/calls.h"
#include "parent/session/frame_exchange.h"

#include <gmock/gmock.h>

namespace kessil::parent {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using platform::PipeStatus;
using testing::HasSubstr;
using testing::StartsWith;

const std::string success = "S\0\0\0\0"s;
const Request request{"asking for", u"x"};

class SessionTest : public testing::Test
{
protected:
    ~SessionTest() override
    {
        session.reset();
        FakeHelper::ExpectNothingHeld();
    }

    Session &Start()
    {
        session.emplace(fake.options);
        EXPECT_TRUE(session->Start());
        return *session;
    }

    FakeHelper fake;
    std::optional<Session> session;
};

TEST_F(SessionTest, NoRequestBeginsBeforeTheStartAndNoneAfterTheStop)
{
    fake.run.exit_code = 0;
    session.emplace(fake.options);
    EXPECT_EQ(session->Begin(request, {})->outcome, Outcome::NotSent);
    EXPECT_TRUE(session->Start());
    EXPECT_FALSE(session->Begin(request, {}));
    EXPECT_TRUE(session->Stop(20s));
    EXPECT_EQ(session->Begin(request, {})->message, "the helper is not running");
    EXPECT_EQ(session->Start().outcome, Outcome::NotSent);
}

TEST_F(SessionTest, ARequestSendsAndReceivesBareBytes)
{
    Start();
    ASSERT_FALSE(session->Begin(request, {}));
    EXPECT_EQ(session->UnderWay().Description(), "asking for x");
    const unsigned char question[] = {'q'};
    EXPECT_EQ(session->Send(question), PipeStatus::Done);
    EXPECT_EQ(fake.client->Receive(1), "q");
    fake.client->Send("yes!");
    std::span<const unsigned char> peeked;
    EXPECT_EQ(session->Peek(1, peeked), PipeStatus::Done);
    EXPECT_EQ(peeked[0], 'y');
    unsigned char answer[3] = {};
    EXPECT_EQ(session->Receive(answer), PipeStatus::Done);
    EXPECT_EQ(answer[2], 's');
    EXPECT_TRUE(session->HasMore());
    EXPECT_TRUE(session->Answered());
}

TEST_F(SessionTest, EveryLaterRequestEndsAsTheOneThatEndedTheHelper)
{
    Start();
    ASSERT_FALSE(session->Begin(request, {}));
    const Result broken = session->EndBroken("nonsense");
    EXPECT_EQ(broken.outcome, Outcome::BrokenProtocol);
    EXPECT_EQ(broken.message, "the helper broke the protocol in asking for x and was killed: it sent nonsense");
    EXPECT_EQ(test::fake_process.kills, 1U);
    EXPECT_EQ(session->Begin({"asking for", u"y"}, {})->message, broken.message);
    EXPECT_EQ(session->NotSent("another reason").message, broken.message);
    EXPECT_EQ(session->EndByResults("a reason").message, broken.message);
}

TEST_F(SessionTest, ARequestThatIsSlowIsWarnedOfOnce)
{
    int warnings = 0;
    fake.options.on_slow = [&](const SlowRequest &slow) {
        ++warnings;
        EXPECT_EQ(slow.description, "asking for x");
        fake.client->Send("a");
    };
    Start();
    ASSERT_FALSE(session->Begin(request, {5ms, 0ms}));
    unsigned char byte[1] = {};
    EXPECT_EQ(session->Receive(byte), PipeStatus::Done);
    EXPECT_EQ(byte[0], 'a');
    fake.client->Send("b");
    EXPECT_EQ(session->Receive(byte), PipeStatus::Done);
    EXPECT_EQ(byte[0], 'b');
    EXPECT_EQ(warnings, 1);
}

TEST_F(SessionTest, ARequestPastItsLimitIsWarnedOfAndThenEnded)
{
    int warnings = 0;
    fake.options.on_slow = [&](const SlowRequest &slow) {
        ++warnings;
        EXPECT_EQ(slow.kill_after, 50ms);
    };
    Start();
    ASSERT_FALSE(session->Begin(request, {5ms, 50ms}));
    unsigned char byte[1];
    EXPECT_EQ(session->Receive(byte), PipeStatus::TimedOut);
    EXPECT_EQ(warnings, 1);
    EXPECT_EQ(session->EndByPipe(PipeStatus::TimedOut).message,
              "the helper hung in asking for x: no answer within 50.00 ms, so it was killed");
}

TEST_F(SessionTest, NoticesDoNotPostponeTheEndOfACall)
{
    const std::string notice = "M\0\0\0\6\0\0\0\1\0\0"s;
    const auto enough = std::chrono::steady_clock::now() + 5s;
    fake.options.on_notice = [&](std::uint8_t, const WideString &) {
        // One notice after another, until nobody would call that in time.
        fake.client->Send(std::chrono::steady_clock::now() < enough ? notice : success);
    };
    Start();
    fake.client->Answer(success); // to the section
    fake.client->Answer(notice);  // to the call
    BeginArguments(*session, 0);
    const Result result = Call(*session, {{}, u"a", "f", "s"}, {0ms, 50ms});
    EXPECT_EQ(result.outcome, Outcome::Hung) << result.message;
    EXPECT_EQ(test::fake_process.kills, 1U);
}

TEST_F(SessionTest, TheExitCodeSaysWhetherARefusalEndedTheHelper)
{
    fake.run.exit_code = 1;
    Start();
    ASSERT_FALSE(session->Begin(request, {}));
    EXPECT_EQ(session->EndRefusedOrDead().outcome, Outcome::Refused);
    EXPECT_EQ(session->Figures().refused, 1U);
    session.reset();
    fake.run.exit_code = 2;
    Start();
    ASSERT_FALSE(session->Begin(request, {}));
    const Result died = session->EndRefusedOrDead();
    EXPECT_EQ(died.outcome, Outcome::Died);
    EXPECT_EQ(died.exit_code, 2U);
    EXPECT_THAT(died.message, StartsWith("the helper died in asking for x, "));
}

TEST_F(SessionTest, FramesThatBelongToCallsAreBrokenElsewhere)
{
    for (const std::string &frame : {"M\0\0\0\6\0\0\0\1\0\0"s, "R\0\0\0\x0C\0\0\0\0\0\0\0\0\0\0\0\1"s}) {
        Start();
        session->Writer().Begin('P').Wide(u"x");
        fake.client->Answer(frame);
        const Result result = Exchange(*session, request);
        EXPECT_EQ(result.outcome, Outcome::BrokenProtocol) << result.message;
        EXPECT_THAT(result.message, HasSubstr(" in asking for x "));
    }
}

TEST_F(SessionTest, ACallIsMadeInASectionThatGrowsWithItsArguments)
{
    fake.options.section_size = 4;
    Start();
    fake.client->Answer(success); // to the first section
    fake.client->Answer(success); // to one of 8 bytes
    fake.client->Answer(success); // to the call
    BeginArguments(*session, 0).U32(0x01020304).U16(0x0506);
    EXPECT_EQ(session->Figures().sections_announced, 2U);
    EXPECT_EQ(session->Figures().section_size, 8U);
    const Request call{{}, u"a", "f", "s"};
    EXPECT_EQ(Call(*session, {{}, u"a", {}, {}}, {}).outcome, Outcome::Answered);
    std::uint32_t number = 0;
    EXPECT_TRUE(Results(*session).U32(number).Complete());
    EXPECT_EQ(number, 0x01020304U);
    EXPECT_EQ(Call(*session, call, {}).message, "f (s) of library a: no argument list was begun");
    EXPECT_EQ(session->Out().Complete().outcome, Outcome::NotSent);
}

} // namespace
} // namespace kessil::parent
