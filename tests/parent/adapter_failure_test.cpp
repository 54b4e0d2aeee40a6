// Each command of the adapter, with an answer that is cut at every byte, refused, or complete: the call always ends as
// kessil/adapter.h says.

#include "parent/adapter_calls.h"
#include "parent/fake_helper.h"

#include <gmock/gmock.h>

#include <future>
#include <optional>

namespace kessil::parent {
namespace {

using namespace std::string_literals;
using platform::PipeStatus;
using test::fake_pipe_server;
using testing::StartsWith;

const std::string empty_log = "\xFF\xFF\xFC\x19";
const std::string refusal = "\xFF\xFF\xFF\xFF";

/// The request that is sent behind some calls, before and behind its number, and likewise its answer.
const std::string sentinel_start = "X\0\0\0\6"s;
const std::string sentinel_end = "\0\0"s;
const std::string sentinel_answer_start = "E\0\0\0\x0E\xFF\xFF\xFF\xFF"s;
const std::string sentinel_answer_end = "n\0o\0\0\0"s;
constexpr std::size_t sentinel_size = 11;

std::string Bytes(const std::string &hex)
{
    std::string digits = hex;
    std::erase(digits, ' ');
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

class AdapterFailureTest : public testing::Test
{
protected:
    void TearDown() override { End(); }

    void End()
    {
        adapter.reset();
        helper.reset();
        fake.reset();
        FakeHelper::ExpectNothingHeld();
    }

    /// A helper that has loaded an adapter of the name "a", and whose process has ended with this code
    /// whenever it is waited for.
    void Host(std::optional<std::uint32_t> exit_code)
    {
        End();
        fake = std::make_unique<FakeHelper>();
        fake->run.exit_code = exit_code;
        helper.emplace(fake->options);
        adapter.emplace(*helper);
        ASSERT_TRUE(helper->Start());
        fake->client->Answer("\0\0\0\1"s);
        const Result loaded = adapter->Load(u"a");
        ASSERT_TRUE(loaded) << loaded.message;
        ASSERT_EQ(fake->client->Receive(6), "l\0\0\0\1a"s);
    }

    /// Makes the call, receives its request, and answers with the first `size` bytes of the answer; closes the pipe if
    /// more would follow.
    Answer Make(const AdapterCall &call, const std::string &answer, std::size_t size)
    {
        const std::string request = Bytes(call.request);
        const auto player = std::async(std::launch::async, [&] {
            EXPECT_EQ(fake->client->Receive(request.size()), request) << call.name;
            std::string all = answer;
            if (call.has_sentinel) {
                const std::string sentinel = fake->client->Receive(sentinel_size);
                EXPECT_EQ(sentinel.substr(0, 5), sentinel_start) << call.name;
                EXPECT_EQ(sentinel.substr(9), sentinel_end) << call.name;
                if (answer != refusal)
                    all += sentinel_answer_start + sentinel.substr(5, 4) + sentinel_answer_end;
            }
            fake->client->Send(all.substr(0, size));
            if (size < all.size())
                fake->client->Leave();
        });
        return call.make(*adapter);
    }

    /// What the helper sends in all.
    static std::string Whole(const AdapterCall &call, const std::string &answer)
    {
        return (call.logs ? empty_log : "") + Bytes(answer);
    }

    static std::size_t Size(const AdapterCall &call, const std::string &whole)
    {
        return whole.size() + (call.has_sentinel ? sentinel_answer_start.size() + 4 + sentinel_answer_end.size() : 0);
    }

    void ExpectDeathAtEachByte(const AdapterCall &call, const std::string &answer)
    {
        const std::string whole = Whole(call, answer);
        for (std::size_t size = 0; size < Size(call, whole); ++size) {
            Host(5);
            const Answer died = Make(call, whole, size);
            ASSERT_EQ(died.result.outcome, Outcome::Died) << call.name << " at byte " << size << died.message;
            EXPECT_EQ(died.result.exit_code, 5U);
            EXPECT_FALSE(died.okay);
            EXPECT_THAT(died.message, StartsWith("the helper died in " + call.name + " (command "));
            EXPECT_FALSE(helper->Running());
        }
    }

    std::unique_ptr<FakeHelper> fake;
    std::optional<Helper> helper;
    std::optional<Adapter> adapter;
};

TEST_F(AdapterFailureTest, YesToTheLastByte)
{
    for (const AdapterCall &call : AdapterCalls()) {
        Host(std::nullopt);
        const Answer answer = Make(call, Whole(call, call.yes), std::string::npos);
        EXPECT_TRUE(answer) << call.name << answer.message;
        EXPECT_TRUE(helper->Running());
    }
}

TEST_F(AdapterFailureTest, YesCutAtEachByte)
{
    for (const AdapterCall &call : AdapterCalls())
        ExpectDeathAtEachByte(call, call.yes);
}

TEST_F(AdapterFailureTest, NoCutAtEachByte)
{
    for (const AdapterCall &call : AdapterCalls()) {
        if (!call.no.empty())
            ExpectDeathAtEachByte(call, call.no);
    }
}

TEST_F(AdapterFailureTest, EachRefusal)
{
    for (const AdapterCall &call : AdapterCalls()) {
        // Here a refusal looks like a failure until the helper ends.
        if (call.name == "InitVixDiskLib")
            continue;
        Host(std::nullopt);
        const Answer answer = Make(call, refusal, std::string::npos);
        EXPECT_EQ(answer.result.outcome, Outcome::Refused) << call.name << answer.message;
        EXPECT_THAT(answer.message, StartsWith("the helper refused " + call.name + " (command "));
        // The helper takes arguments that are left in the pipe for requests.
        EXPECT_EQ(helper->Running(), Bytes(call.request).size() == 2) << call.name;
        EXPECT_EQ(helper->Figures().refused, 1U);
    }
}

TEST_F(AdapterFailureTest, OneWriteForACallWithoutABlock)
{
    for (const AdapterCall &call : AdapterCalls()) {
        if (call.has_sentinel || call.request.find("44415441") != std::string::npos || call.name == "SetVMConfig" ||
            call.name == "WriteSectors")
            continue;
        Host(std::nullopt);
        // It comes with the first write.
        fake->client->Answer(Whole(call, call.yes));
        const Answer answer = call.make(*adapter);
        EXPECT_TRUE(answer) << call.name << answer.message;
    }
}

TEST_F(AdapterFailureTest, AWriteThatFails)
{
    Host(5);
    fake_pipe_server.write_fates = {{PipeStatus::Failed, 6}};
    const Answer answer = adapter->CloseDisk();
    EXPECT_EQ(answer.result.outcome, Outcome::Died);
    EXPECT_THAT(answer.message, testing::HasSubstr("its pipe failed: text of 6"));
}

TEST_F(AdapterFailureTest, ALoadThatCanNotBeWrittenOrIsCut)
{
    for (std::size_t size = 0; size < 4; ++size) {
        Host(5);
        fake->client->Send("\0\0\0\1"s.substr(0, size));
        fake->client->Leave();
        fake_pipe_server.write_fates = {{PipeStatus::Done, 0}};
        const Result result = adapter->Load(u"b");
        EXPECT_EQ(result.outcome, Outcome::Died);
        EXPECT_THAT(result.message, StartsWith("the helper died in loading b, "));
    }
    Host(5);
    fake_pipe_server.write_fates = {{PipeStatus::Closed, 0}};
    EXPECT_EQ(adapter->Load(u"b").outcome, Outcome::Died);
    EXPECT_EQ(adapter->Load(u"c").outcome, Outcome::Died);
}

TEST_F(AdapterFailureTest, AReadThatFailsBehindWhatMayBeARefusal)
{
    const AdapterCall *init = nullptr;
    for (const AdapterCall &call : AdapterCalls()) {
        if (call.name == "InitVixDiskLib")
            init = &call;
    }
    for (const std::uint32_t code : {1U, 5U}) {
        Host(code);
        fake->client->Send(refusal);
        fake->client->Leave();
        fake_pipe_server.write_fates = {{PipeStatus::Done, 0}};
        const Answer answer = init->make(*adapter);
        EXPECT_EQ(answer.result.outcome, code == 1 ? Outcome::Refused : Outcome::Died) << answer.message;
        EXPECT_FALSE(helper->Running());
    }
    Host(std::nullopt);
    fake->client->Send(refusal);
    fake_pipe_server.write_fates = {{PipeStatus::Done, 0}};
    const Answer answer = [&] {
        const auto canceller = std::async(std::launch::async, [&] { helper->Cancel(); });
        return init->make(*adapter);
    }();
    EXPECT_EQ(answer.result.outcome, Outcome::Cancelled) << answer.message;
}

} // namespace
} // namespace kessil::parent
