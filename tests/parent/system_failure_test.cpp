// The parent on a system where any step can fail: each failure is the one clear Result that kessil/parent.h describes.

#include "parent/fake_helper.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

namespace kessil::parent {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using platform::PipeStatus;
using test::fake_pipe_server;
using test::fake_process;
using test::fake_section;
using testing::AllOf;
using testing::EndsWith;
using testing::StartsWith;

const std::string success = "S\0\0\0\0"s;
const std::string call = "GetBackupType (SIGNATURE_GetBackupType) of library a.so";

class SystemFailureTest : public testing::Test
{
protected:
    void TearDown() override
    {
        helper.reset();
        FakeHelper::ExpectNothingHeld();
    }

    Result Start()
    {
        helper.emplace(fake.options);
        return helper->Start();
    }

    void StartWell()
    {
        const Result result = Start();
        ASSERT_TRUE(result) << result.message;
    }

    Result Call() { return helper->Call(u"a.so", "GetBackupType", "SIGNATURE_GetBackupType", {}); }

    /// Takes the announcement of a section that the parent has written: its name.
    WideString TakeAnnouncedName() const
    {
        const std::string header = fake.client->Receive(5);
        EXPECT_EQ(header.substr(0, 4), "R\0\0\0"s);
        const std::string payload = fake.client->Receive(static_cast<unsigned char>(header.at(4)));
        WideString name;
        for (std::size_t i = 0; i + 10 < payload.size(); i += 2)
            name += static_cast<unsigned char>(payload[i]);
        return name;
    }

    void ExpectOver(const Result &ended)
    {
        EXPECT_FALSE(helper->Running());
        const Result later = helper->Load(u"b.so");
        EXPECT_EQ(later.outcome, ended.outcome);
        EXPECT_EQ(later.message, ended.message);
    }

    FakeHelper fake;
    std::optional<Helper> helper;
};

/// The announcement of a section of 131072 bytes under a name of ASCII characters.
std::string Announcement(const WideString &name)
{
    std::string payload;
    for (const char16_t unit : name + u'\0')
        payload.append({static_cast<char>(unit), '\0'});
    payload += "\0\0\0\0\0\2\0\0"s;
    return "R\0\0\0"s + static_cast<char>(payload.size()) + payload;
}

TEST_F(SystemFailureTest, NoNameForAPipe)
{
    fake_pipe_server.has_names = false;
    const Result result = Start();
    EXPECT_EQ(result.outcome, Outcome::NeverStarted);
    EXPECT_EQ(result.message, "the helper \"fake_helper\" was not started: no pipe could be made for it: text of 24");
    EXPECT_TRUE(fake_process.starts.empty());
    ExpectOver(result);
}

TEST_F(SystemFailureTest, NoPipe)
{
    fake_pipe_server.create_code = 5;
    const Result result = Start();
    EXPECT_EQ(result.outcome, Outcome::NeverStarted);
    EXPECT_EQ(result.message, "the helper \"fake_helper\" was not started: no pipe could be made for it: text of 5");
    EXPECT_TRUE(fake_process.starts.empty());
    ExpectOver(result);
}

TEST_F(SystemFailureTest, NoProcess)
{
    fake_process.start_code = 11;
    const Result result = Start();
    EXPECT_EQ(result.outcome, Outcome::NeverStarted);
    EXPECT_THAT(result.message, AllOf(StartsWith("the helper \"fake_helper\" (arguments: \""),
                                      EndsWith("could not be started: text of 11")));
    EXPECT_TRUE(fake_pipe_server.servers.empty());
    ExpectOver(result);
}

TEST_F(SystemFailureTest, APipeThatAcceptsNoClient)
{
    fake_pipe_server.accept_fates = {{PipeStatus::Failed, 23}};
    const Result result = Start();
    EXPECT_EQ(result.outcome, Outcome::NeverAttached);
    EXPECT_THAT(result.message, EndsWith("could not be waited for: text of 23"));
    EXPECT_EQ(fake_process.kills, 1u);
    ExpectOver(result);
}

TEST_F(SystemFailureTest, AnotherProcessConnectsBeforeTheHelper)
{
    fake.stranger = std::make_shared<test::FakePipeClient>(1);
    StartWell();
    EXPECT_TRUE(fake.stranger->IsAlone());
    EXPECT_FALSE(fake.client->IsAlone());
    EXPECT_EQ(helper->Figures().rejected_clients, 1u);
}

TEST_F(SystemFailureTest, NoSectionForTheArguments)
{
    StartWell();
    fake_section.create_code = 28;
    helper->Begin();
    const Result refused = Call();
    EXPECT_EQ(refused.outcome, Outcome::NotSent);
    EXPECT_EQ(refused.message, call + ": no section of 65536 bytes: text of 28");
    EXPECT_TRUE(helper->Running());

    fake_section.create_code = 0;
    fake.client->Answer(success);
    fake.client->Answer(success);
    helper->Begin();
    const Result result = Call();
    EXPECT_TRUE(result) << result.message;
}

TEST_F(SystemFailureTest, ASectionThatCanNotBeMapped)
{
    StartWell();
    fake_section.map_code = 12;
    helper->Begin();
    const Result refused = Call();
    EXPECT_EQ(refused.outcome, Outcome::NotSent);
    EXPECT_EQ(refused.message, call + ": no section of 65536 bytes: text of 12");
    EXPECT_EQ(fake_section.open_handles, 0u);
    EXPECT_TRUE(helper->Running());

    fake_section.map_code = 0;
    fake.client->Answer(success);
    fake.client->Answer(success);
    helper->Begin();
    const Result result = Call();
    EXPECT_TRUE(result) << result.message;
}

TEST_F(SystemFailureTest, AHelpersSectionThatCanNotBeOpened)
{
    StartWell();
    fake.client->Answer(success);
    helper->Begin();
    WideString name = TakeAnnouncedName();
    ASSERT_EQ(name.back(), u'0');
    name.back() = u'1';
    fake_section.open_code = 24;
    fake.client->Answer(Announcement(name));
    fake.client->Answer(success);
    const Result result = Call();
    EXPECT_EQ(result.outcome, Outcome::BrokenProtocol);
    EXPECT_EQ(result.message, "the helper broke the protocol in " + call +
                                  " and was killed: it sent an answer in a section that this side could not open");
    EXPECT_EQ(fake_process.kills, 1u);

    const std::string all = fake.client->Receive(1 << 16);
    EXPECT_THAT(all, EndsWith("E\0\0\0\x1E\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
                              "t\0e\0x\0t\0 \0o\0f\0 \0"
                              "2\0"
                              "4\0\0\0"s));
    ExpectOver(result);
}

TEST_F(SystemFailureTest, AHelpersSectionThatCanNotBeMapped)
{
    StartWell();
    fake.client->Answer(success);
    helper->Begin();
    WideString name = TakeAnnouncedName();
    name.back() = u'1';
    fake_section.Add(name, 131072);
    fake_section.map_code = 12;
    fake.client->Answer(Announcement(name));
    fake.client->Answer("E\0\0\0\x0A\0\0\0\0\0\0\0\5\0\0"s);
    const Result result = Call();
    EXPECT_EQ(result.outcome, Outcome::Refused);
    EXPECT_EQ(result.system_error, 5);
    EXPECT_TRUE(helper->Running());
    EXPECT_FALSE(fake_section.Has(name));

    // The next call makes a section of this side's.
    fake_section.map_code = 0;
    fake.client->Answer(success);
    fake.client->Answer(success);
    helper->Begin();
    const Result next = Call();
    EXPECT_TRUE(next) << next.message;
}

TEST_F(SystemFailureTest, AWriteThatFails)
{
    fake_process.waits = false;
    StartWell();
    fake_pipe_server.write_fates = {{PipeStatus::Failed, 6}};
    const Result result = helper->Load(u"a.so");
    EXPECT_EQ(result.outcome, Outcome::Died);
    EXPECT_THAT(result.message, AllOf(StartsWith("the helper died in loading a.so, "),
                                      EndsWith("its pipe closed and the process still running, so it was killed; its "
                                               "pipe failed: text of 6")));
    EXPECT_FALSE(result.exit_code);
    EXPECT_EQ(fake_process.kills, 1u);
    ExpectOver(result);
}

TEST_F(SystemFailureTest, AReadThatFailsAfterTheHelperEnded)
{
    fake.run.exit_code = 139;
    StartWell();
    fake_pipe_server.read_fates = {{PipeStatus::Failed, 6}};
    const Result result = helper->Load(u"a.so");
    EXPECT_EQ(result.outcome, Outcome::Died);
    EXPECT_THAT(result.message, EndsWith("after the request, exit code 139; its pipe failed: text of 6"));
    EXPECT_EQ(result.exit_code, 139u);
    EXPECT_EQ(fake_process.kills, 0u);
    ExpectOver(result);
}

TEST_F(SystemFailureTest, AReadThatEndsAsNoReadShould)
{
    for (const PipeStatus status : {PipeStatus::Interrupted, PipeStatus::WrongClient}) {
        fake_process.waits = false;
        StartWell();
        fake_pipe_server.read_fates = {{status, 0}};
        const Result result = helper->Load(u"a.so");
        EXPECT_EQ(result.outcome, Outcome::Died);
        EXPECT_THAT(result.message, StartsWith("the helper died in loading a.so, "));
        ExpectOver(result);
        helper.reset();
    }
}

TEST_F(SystemFailureTest, AHelperThatHangsAndDoesNotEvenDie)
{
    fake.run.dies = false;
    fake_process.waits = false;
    fake.options.request_limit = {0ms, 20ms};
    StartWell();
    const Result result = helper->Load(u"a.so");
    EXPECT_EQ(result.outcome, Outcome::Hung);
    EXPECT_EQ(result.message, "the helper hung in loading a.so: no answer within 20.00 ms, so it was killed");
    EXPECT_FALSE(result.exit_code);
    EXPECT_EQ(fake_process.kills, 1u);
    ExpectOver(result);
}

TEST_F(SystemFailureTest, AStopThatTheHelperIgnores)
{
    fake_process.waits = false;
    StartWell();
    const Result result = helper->Stop(20ms);
    EXPECT_EQ(result.outcome, Outcome::Hung);
    EXPECT_EQ(result.message, "the helper hung in the orderly stop: no answer within 20.00 ms, so it was killed");
    EXPECT_EQ(fake.client->Receive(2), "\x66\x01");
    EXPECT_EQ(fake_process.kills, 1u);
    ExpectOver(result);
}

TEST_F(SystemFailureTest, AStopThatCanNotBeSent)
{
    fake.run.exit_code = 3;
    StartWell();
    fake_pipe_server.write_fates = {{PipeStatus::Closed, 0}};
    const Result result = helper->Stop(20s);
    EXPECT_EQ(result.outcome, Outcome::Died);
    EXPECT_THAT(result.message, AllOf(StartsWith("the helper died in the orderly stop, "),
                                      EndsWith(" after the request, exit code 3")));
    EXPECT_EQ(result.exit_code, 3u);
    ExpectOver(result);
}

TEST_F(SystemFailureTest, AStopInError)
{
    fake.run.exit_code = 1;
    StartWell();
    const Result result = helper->Stop(20s);
    EXPECT_EQ(result.outcome, Outcome::Died);
    EXPECT_THAT(result.message, EndsWith("exit code 1; it should have ended with exit code 0"));
    EXPECT_EQ(result.exit_code, 1u);
    ExpectOver(result);
}

} // namespace
} // namespace kessil::parent
