// The calls of an adapter over a session alone: by command with bare values, and by section.

#include "parent/adapter/command.h"
#include "parent/adapter/section_command.h"
#include "parent/fake_helper.h"

#include <gmock/gmock.h>

#include <future>

namespace kessil::parent {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::Pair;

const std::string empty_log = "\xFF\xFF\xFC\x19";

class CommandTest : public testing::Test
{
protected:
    CommandTest()
    {
        context.options.on_log = [this](std::uint8_t level, std::string_view text) { log.emplace_back(level, text); };
    }

    ~CommandTest() override
    {
        session.reset();
        FakeHelper::ExpectNothingHeld();
    }

    void SetUp() override
    {
        ASSERT_TRUE(session->Start());
        session->Adapters().emplace(u"a");
    }

    FakeHelper fake;
    std::unique_ptr<Session> session = std::make_unique<Session>(fake.options);
    CommandContext context{*session, {}};
    std::vector<std::pair<int, std::string>> log;
};

TEST_F(CommandTest, SendsTheArgumentsAndReadsLogAndStatus)
{
    fake.client->Answer("\xFF\xFF\xFF\x9D\0\0\0\2hi\0\0\0\5"s + empty_log + "\0\0\0\1"s);
    const Answer answer = Command(context, 9, "Nine").U32(1).U64(2).Flag(true).Text("t").AskStatus();
    EXPECT_TRUE(answer) << answer.message;
    EXPECT_EQ(fake.client->Receive(23), "\x66\x09\0\0\0\1\0\0\0\0\0\0\0\2\0\0\0\1\0\0\0\1t"s);
    EXPECT_THAT(log, ElementsAre(Pair(5, "hi")));
    EXPECT_EQ(session->Figures().notices, 1U);
}

TEST_F(CommandTest, ANoIsTheAdaptersTextMadeReadable)
{
    fake.client->Answer(empty_log + "\xFF\xFF\xFF\xFF\0\0\0\4b\xE9\x64\n"s);
    const Answer answer = Command(context, 9, "Nine").AskStatus();
    EXPECT_TRUE(answer.result);
    EXPECT_FALSE(answer);
    EXPECT_EQ(answer.error, "b\xE9\x64\n");
    EXPECT_EQ(answer.message, "Nine (command 9) of library a failed: b?d");
}

TEST_F(CommandTest, ARefusalEndsTheHelperOnlyIfItLeftArgumentsInThePipe)
{
    fake.client->Answer("\xFF\xFF\xFF\xFF");
    EXPECT_EQ(Command(context, 9, "Nine").AskStatus().result.outcome, Outcome::Refused);
    EXPECT_TRUE(session->Running());
    fake.client->Answer("\xFF\xFF\xFF\xFF");
    EXPECT_EQ(Command(context, 9, "Nine").U32(1).AskStatus().result.outcome, Outcome::Refused);
    EXPECT_FALSE(session->Running());
}

TEST_F(CommandTest, TheFirstStepThatFailsEndsTheCall)
{
    session->Adapters().clear();
    EXPECT_EQ(Command(context, 9, "Nine").AskStatus().message,
              "Nine (command 9) of the first library: no adapter is loaded");
    EXPECT_EQ(Command(context, 9, "Nine").Text("a\0"s).Require(false, "never").AskStatus().message,
              "Nine (command 9) of the first library: a text holds a zero");
    EXPECT_EQ(session->Figures().calls, 0U);
}

TEST_F(CommandTest, WhatStandsInFrontOfTheSentinelsAnswerSaysWhetherItWasAHandle)
{
    for (const std::string &value : {"\0\0\0\3"s, "\0\0\0\3bad"s}) {
        const auto player = std::async(std::launch::async, [&] {
            const std::string sent = fake.client->Receive(13);
            EXPECT_EQ(sent.substr(0, 7), "\x66\x13X\0\0\0\6"s);
            EXPECT_EQ(sent.substr(11), "\0\0"s);
            fake.client->Send(empty_log + value + "E\0\0\0\x0C\xFF\xFF\xFF\xFF"s + sent.substr(7, 4) + "n\0\0\0"s);
        });
        RestoreFile file = RestoreFile::None;
        const Answer answer = Command(context, 19, "OpenRestoreFile").AskHandle(file);
        EXPECT_EQ(answer.result.outcome, Outcome::Answered) << answer.message;
        EXPECT_EQ(answer.okay, value.size() == 4);
        EXPECT_EQ(file, value.size() == 4 ? RestoreFile{3} : RestoreFile::None);
        EXPECT_EQ(answer.error, value.substr(4));
    }
}

TEST_F(CommandTest, ACallBySectionReadsItsResultsThere)
{
    fake.client->Answer("S\0\0\0\0"s); // to the section
    SectionCommand command(context, 14, "ListResourcePools");
    command.In().U32(7).Str("no");
    fake.client->Answer("S\0\0\0\0"s);
    // The arguments are still there, in the place of results.
    Listing listing = Listing::None;
    const Answer answer = command.AskHandle(listing);
    EXPECT_TRUE(answer.result);
    EXPECT_EQ(listing, Listing{7});
    EXPECT_EQ(answer.message, "ListResourcePools (command 14) of library a failed: no");
    SectionCommand rejected(context, 12, "CloseBackupFile");
    fake.client->Answer("S\0\0\0\0"s);
    rejected.Ask();
    EXPECT_EQ(rejected.RejectResults("a reason").message,
              "the helper broke the protocol and was killed: CloseBackupFile (command 12) of library a: a reason");
}

} // namespace
} // namespace kessil::parent
