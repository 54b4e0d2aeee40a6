#include "parent/scripted.h"

#include "platform/pipe_server.h"

#include <gmock/gmock.h>

#include <csignal>
#include <future>
#include <thread>

namespace kessil::parent {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

using RequestTest = ScriptedTest;

TEST_F(RequestTest, EachRequestHasItsBytes)
{
    Start("attach\n"
          "expect 50 0000000A 4300 3A00 5C00 7800 0000\n"
          "send 53 00000000\n"
          "expect 41 00000016 7500 0000 6400 0000 7000 7700 0000 7300 0000 00000001\n"
          "send 53 00000000\n"
          "expect 41 0000000C 0000 0000 0000 0000 00000000\n"
          "send 53 00000000\n"
          "expect 4C 00000006 E900 3DD8 0000\n"
          "send 53 00000000\n"
          "expect 58 00000008 01020304 6D00 0000\n"
          "send 45 00000010 FFFFFFFF 01020304 7400 6F00 6F00 0000\n" +
          stop);
    EXPECT_TRUE(helper->AddPath(u"C:\\x"));
    EXPECT_TRUE(helper->Logon(u"u", u"d", u"pw", u"s", true));
    EXPECT_TRUE(helper->Logon(u"", u"", u"", u"", false));
    EXPECT_TRUE(helper->Load(u"\u00E9\xD83D"));
    WideString text;
    EXPECT_TRUE(helper->ErrorText(0x01020304, u"m", text));
    EXPECT_EQ(text, u"too");
    EXPECT_EQ(helper->Figures().refused, 0U);
    ExpectGoodEnd();
    EXPECT_EQ(helper->Figures().pipe_bytes_sent, 15U + 27U + 17U + 11U + 13U + 2U);
    EXPECT_EQ(helper->Figures().pipe_bytes_received, 4U * 5U + 21U);
}

TEST_F(RequestTest, ARefusalCarriesItsCodesAndText)
{
    Start("attach\n"
          "expect 4C 00000004 7800 0000\n"
          "send 45 0000000E 00000000 00000002 6E00 6F00 0000\n"
          "expect 4C 00000004 7800 0000\n" +
          success + stop);
    const Result result = helper->Load(u"x");
    EXPECT_EQ(result.outcome, Outcome::Refused);
    EXPECT_EQ(result.return_code, 0);
    EXPECT_EQ(result.system_error, 2);
    EXPECT_EQ(result.text, u"no");
    EXPECT_EQ(result.message, "the helper refused loading x: no (return code 0, system error 2)");
    EXPECT_TRUE(helper->Running());
    EXPECT_EQ(helper->Figures().refused, 1U);
    EXPECT_TRUE(helper->Load(u"x"));
    ExpectGoodEnd();
}

TEST_F(RequestTest, ATextWithAZeroIsNotSent)
{
    Start("attach\n" + stop);
    EXPECT_EQ(helper->Load({u"a\0b", 3}).outcome, Outcome::NotSent);
    EXPECT_EQ(helper->Logon(u"u", {u"\0", 1}, u"p", u"", true).outcome, Outcome::NotSent);
    EXPECT_TRUE(helper->Running());
    ExpectGoodEnd();
}

TEST_F(RequestTest, ACallWithoutArguments)
{
    StartWithSection(call_f + success + stop);
    const Result result = CallF();
    EXPECT_TRUE(result) << result.message;
    EXPECT_TRUE(helper->Results().Complete());
    EXPECT_EQ(helper->Figures().calls, 1U);
    EXPECT_EQ(helper->Figures().sections_announced, 1U);
    EXPECT_EQ(helper->Figures().section_size, 65536U);
    ExpectGoodEnd();
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(RequestTest, ACallNeedsAListBegunForIt)
{
    StartWithSection(call_f + success + stop);
    EXPECT_TRUE(CallF());
    EXPECT_EQ(CallF().outcome, Outcome::NotSent);
    EXPECT_EQ(helper->Figures().calls, 1U);
    ExpectGoodEnd();
}

TEST_F(RequestTest, ARefusedCallHasNoResults)
{
    StartWithSection(call_f + "send 45 0000000A FFFFFFFF FFFFFFFF 0000\n" + call_f + success + stop);
    const Result result = CallF();
    EXPECT_EQ(result.outcome, Outcome::Refused);
    EXPECT_EQ(result.return_code, -1);
    EXPECT_EQ(result.system_error, -1);
    EXPECT_THAT(result.message, HasSubstr("f (s) of library a"));
    std::uint32_t value = 5;
    EXPECT_EQ(helper->Results().U32(value).Complete().outcome, Outcome::NotSent);
    EXPECT_EQ(value, 5U);
    helper->Begin();
    EXPECT_TRUE(CallF());
    ExpectGoodEnd();
}

TEST_F(RequestTest, NoticesArriveInOrderBeforeTheAnswer)
{
    std::vector<std::pair<int, WideString>> notices;
    options.on_notice = [&](std::uint8_t value, const WideString &text) { notices.emplace_back(value, text); };
    StartWithSection(call_f + "send 4D 00000008 00000007 6100 0000\n" + "send 4D 00000006 000000FF 0000\n" + success +
                     stop);
    EXPECT_TRUE(CallF());
    EXPECT_THAT(notices, ElementsAre(Pair(7, u"a"), Pair(255, u"")));
    EXPECT_EQ(helper->Figures().notices, 2U);
    ExpectGoodEnd();
}

TEST_F(RequestTest, NoticesAndAnswerInOneWrite)
{
    int notices = 0;
    options.on_notice = [&](std::uint8_t, const WideString &) { ++notices; };
    StartWithSection(call_f + "send 4D 00000006 00000001 0000 4D 00000006 00000002 0000 53 00000000\n" + stop);
    EXPECT_TRUE(CallF());
    EXPECT_EQ(notices, 2);
    ExpectGoodEnd();
}

TEST_F(RequestTest, ANoticeLargerThanAnyBuffer)
{
    WideString text;
    options.on_notice = [&](std::uint8_t, const WideString &given) { text = given; };
    std::string units;
    for (int i = 0; i < 20000; ++i)
        units += "7A00";
    StartWithSection(call_f + "send 4D 00009C46 00000000 " + units + "0000\n" + success + stop);
    EXPECT_TRUE(CallF());
    EXPECT_EQ(text, WideString(20000, u'z'));
    ExpectGoodEnd();
}

TEST_F(RequestTest, EveryByteInAWriteOfItsOwn)
{
    int notices = 0;
    options.on_notice = [&](std::uint8_t, const WideString &) { ++notices; };
    StartWithSection(call_f + "dribble 4D 00000006 00000001 0000\n" + "dribble 53 00000000\n" + stop);
    EXPECT_TRUE(CallF());
    EXPECT_EQ(notices, 1);
    ExpectGoodEnd();
}

TEST_F(RequestTest, TheHelperGrowsTheSectionSeveralTimesInOneCall)
{
    options.section_size = 16;
    StartWithSection(call_f + "size 16\narguments 11 22 33 44\n" +
                     "create 100\nannounce 100\nexpect 53 00000000\n"
                     "create 70000\nannounce 70000\nexpect 53 00000000\n"
                     "results 69996 0A0B0C0D\n"
                     "log_names\n" +
                     success + stop);
    helper->Begin().U32(0x11223344);
    EXPECT_TRUE(CallF());
    EXPECT_EQ(helper->Figures().sections_grown_by_helper, 2U);
    EXPECT_EQ(helper->Figures().section_size, 70000U);
    std::uint32_t value = 0;
    std::uint32_t last = 0;
    OutList &out = helper->Results().U32(value);
    EXPECT_EQ(value, 0x11223344U);
    std::uint64_t skipped = 0;
    for (int i = 0; i < (69996 - 4) / 8; ++i)
        out.U64(skipped);
    EXPECT_TRUE(out.U32(last).Complete());
    EXPECT_EQ(last, 0x0A0B0C0DU);
    ExpectGoodEnd();
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(RequestTest, ASectionThatDoesNotExistIsRefusedAndTheNextCallGetsAFreshOne)
{
    StartWithSection(call_f + "announce 100\ntake FFFFFFFF FFFFFFFF\n" +
                     "send 45 0000000C FFFFFFFF FFFFFFFF 7800 0000\n" + "section\nlog_names\n" + call_f + success +
                     stop);
    const Result result = CallF();
    EXPECT_EQ(result.outcome, Outcome::Refused);
    EXPECT_EQ(result.text, u"x");
    helper->Begin().U32(1);
    EXPECT_TRUE(CallF());
    EXPECT_EQ(helper->Figures().sections_announced, 2U);
    EXPECT_EQ(helper->Figures().sections_grown_by_helper, 0U);
    ExpectGoodEnd();
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(RequestTest, ASectionSmallerThanAnnouncedIsRefused)
{
    StartWithSection(call_f + "create 4096\nannounce 1000000\ntake FFFFFFFF FFFFFFFF\nlog_names\n" +
                     "send 45 0000000C FFFFFFFF FFFFFFFF 7800 0000\n" + stop);
    EXPECT_EQ(CallF().outcome, Outcome::Refused);
    ExpectGoodEnd();
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(RequestTest, ASectionThatTheHelperRefusesIsTheEndOfIt)
{
    Start("attach\nsection_refused\nlog_names\nexit 1\n");
    helper->Begin().U32(1);
    EXPECT_FALSE(helper->Begin().Good());
    const Result result = CallF();
    EXPECT_EQ(result.outcome, Outcome::Died);
    EXPECT_EQ(result.exit_code, 1U);
    EXPECT_THAT(result.message, HasSubstr("it refused: n"));
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(RequestTest, ADeathInACallIsDescribed)
{
    StartWithSection(call_f + "log about to fall over\nexit 41\n");
    const Result result = CallF();
    EXPECT_EQ(result.outcome, Outcome::Died);
    EXPECT_EQ(result.exit_code, 41U);
    EXPECT_THAT(result.message, HasSubstr("the helper died in f (s) of library a, "));
    EXPECT_THAT(result.message, HasSubstr(" ms after the request, exit code 41; "));
    EXPECT_THAT(result.message, HasSubstr("\n  about to fall over"));
    EXPECT_FALSE(helper->Running());
    // Nothing is sent again; what is asked later gets the same end.
    const Result later = helper->Load(u"x");
    EXPECT_EQ(later.outcome, Outcome::Died);
    EXPECT_EQ(later.message, result.message);
    EXPECT_EQ(helper->Stop().outcome, Outcome::Died);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(RequestTest, AHelperThatDropsItsPipeButLivesIsKilled)
{
    StartWithSection(call_f + "drop\nhang\n");
    const Result result = CallF();
    EXPECT_EQ(result.outcome, Outcome::Died);
    EXPECT_FALSE(result.exit_code);
    EXPECT_THAT(result.message, HasSubstr("so it was killed"));
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(RequestTest, AHungHelperCausesAWarningAndIsThenKilled)
{
    int warnings = 0;
    std::string description;
    options.on_slow = [&](const SlowRequest &slow) {
        ++warnings;
        description = slow.description;
        EXPECT_GE(slow.elapsed, 20ms);
        EXPECT_EQ(slow.kill_after, 300ms);
    };
    StartWithSection(call_f + "hang\n");
    const Result result = CallF({20ms, 300ms});
    EXPECT_EQ(result.outcome, Outcome::Hung);
    EXPECT_GE(result.elapsed, 300ms);
    EXPECT_EQ(warnings, 1);
    EXPECT_EQ(description, "f (s) of library a");
    EXPECT_THAT(result.message, HasSubstr("no answer within 300.00 ms"));
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(RequestTest, AHelperThatHangsInTheMiddleOfAFrameIsHung)
{
    StartWithSection(call_f + "send 53 0000\nhang\n");
    EXPECT_EQ(CallF({0ms, 100ms}).outcome, Outcome::Hung);
}

TEST_F(RequestTest, AWarningAloneDoesNotEndACall)
{
    int warnings = 0;
    const WideString gate_name = platform::RandomPipeName();
    platform::PipeServer *gate = platform::CreatePipeServer(gate_name);
    ASSERT_NE(gate, nullptr);
    options.on_slow = [&](const SlowRequest &) {
        ++warnings;
        const auto limit = std::chrono::steady_clock::now() + 20s;
        EXPECT_EQ(platform::AcceptPipeClient(*gate, helper->ProcessId(), limit), platform::PipeStatus::Done);
        EXPECT_EQ(platform::WriteServedPipe(*gate, "", 1, limit), platform::PipeStatus::Done);
    };
    StartWithSection(call_f + "gate " + platform::ToUtf8(gate_name) + '\n' + success + stop);
    EXPECT_TRUE(CallF({20ms, 0ms}));
    EXPECT_EQ(warnings, 1);
    ExpectGoodEnd();
    platform::DestroyPipeServer(gate);
}

TEST_F(RequestTest, ARequestLimitHoldsForLoading)
{
    options.request_limit = {0ms, 100ms};
    Start("attach\nhang\n");
    const Result result = helper->Load(u"x");
    EXPECT_EQ(result.outcome, Outcome::Hung);
    EXPECT_THAT(result.message, HasSubstr("the helper hung in loading x"));
}

TEST_F(RequestTest, CancelledFromTheWarning)
{
    options.on_slow = [&](const SlowRequest &) { helper->Cancel(); };
    StartWithSection(call_f + "hang\n");
    const Result result = CallF({10ms, 0ms});
    EXPECT_EQ(result.outcome, Outcome::Cancelled);
    EXPECT_FALSE(result.exit_code);
    EXPECT_EQ(helper->Load(u"x").outcome, Outcome::Cancelled);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(RequestTest, CancelledFromAnotherThread)
{
    std::promise<void> slow;
    options.on_slow = [&](const SlowRequest &) { slow.set_value(); };
    StartWithSection(call_f + "hang\n");
    std::thread canceller([&] {
        slow.get_future().wait();
        helper->Cancel();
    });
    const Result result = CallF({10ms, 0ms});
    canceller.join();
    EXPECT_EQ(result.outcome, Outcome::Cancelled);
}

Helper *g_signalled = nullptr;

TEST_F(RequestTest, CancelledFromASignalHandler)
{
    options.on_slow = [](const SlowRequest &) { std::raise(SIGTERM); };
    StartWithSection(call_f + "hang\n");
    g_signalled = helper.get();
    std::signal(SIGTERM, [](int) { g_signalled->Cancel(); });
    EXPECT_EQ(CallF({10ms, 0ms}).outcome, Outcome::Cancelled);
    std::signal(SIGTERM, SIG_DFL);
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(RequestTest, CancelledBetweenRequests)
{
    StartWithSection("hang\n");
    helper->Cancel();
    EXPECT_EQ(CallF().outcome, Outcome::Cancelled);
}

TEST_F(RequestTest, RejectedResultsEndTheHelper)
{
    StartWithSection(call_f + success + "hang\n");
    EXPECT_TRUE(CallF());
    const Result result = helper->RejectResults("a count larger than the block");
    EXPECT_EQ(result.outcome, Outcome::BrokenProtocol);
    EXPECT_THAT(result.message, HasSubstr("a count larger than the block"));
    EXPECT_FALSE(helper->Running());
    EXPECT_EQ(Leftovers(directory), "");
}

} // namespace
} // namespace kessil::parent
