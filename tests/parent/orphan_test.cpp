#include "parent/scripted.h"

#include "platform/pipe_server.h"
#include "platform/process.h"

namespace kessil::parent {
namespace {

using namespace std::chrono_literals;

/// A parent of its own process, its helper, and a pipe to each.
class OrphanTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NE(parent_pipe, nullptr);
        ASSERT_NE(helper_pipe, nullptr);
    }

    ~OrphanTest() override
    {
        platform::ReleaseProcess(parent);
        platform::DestroyPipeServer(parent_pipe);
        platform::DestroyPipeServer(helper_pipe);
    }

    /// Both are running when this returns. `script` is what the helper does once it has connected.
    void Start(const std::string &ending, const std::string &script)
    {
        directory.WriteFile("script", "attach\nlog_names\nwitness " + platform::ToUtf8(helper_name) + '\n' + script);
        parent = platform::StartProcess(platform::FromUtf8(DOOMED_PARENT),
                                        {parent_name, platform::FromUtf8(SCRIPTED_HELPER),
                                         platform::FromUtf8(directory.Path().string()), platform::FromUtf8(ending)},
                                        {});
        ASSERT_NE(parent, nullptr);
        ASSERT_EQ(platform::AcceptPipeClient(*parent_pipe, platform::ProcessId(*parent), Limit()),
                  platform::PipeStatus::Done);
        std::uint32_t count = 0;
        std::uint32_t id = 0;
        ASSERT_EQ(platform::ReadServedPipe(*parent_pipe, &id, sizeof id, count, Limit()), platform::PipeStatus::Done);
        ASSERT_EQ(count, sizeof id);
        ASSERT_EQ(platform::AcceptPipeClient(*helper_pipe, id, Limit()), platform::PipeStatus::Done);
    }

    void LetParentGoOn()
    {
        EXPECT_EQ(platform::WriteServedPipe(*parent_pipe, "", 1, Limit()), platform::PipeStatus::Done);
    }

    std::uint32_t AwaitParent()
    {
        std::uint32_t code = 0;
        EXPECT_TRUE(platform::WaitForProcess(*parent, Limit(), code));
        return code;
    }

    void ExpectHelperGone()
    {
        unsigned char byte = 0;
        std::uint32_t count = 0;
        EXPECT_EQ(platform::ReadServedPipe(*helper_pipe, &byte, 1, count, Limit()), platform::PipeStatus::Closed);
        EXPECT_EQ(Leftovers(directory), "");
    }

    static platform::Deadline Limit() { return std::chrono::steady_clock::now() + 30s; }

    TemporaryDirectory directory;
    WideString parent_name = platform::RandomPipeName();
    WideString helper_name = platform::RandomPipeName();
    platform::PipeServer *parent_pipe = platform::CreatePipeServer(parent_name);
    platform::PipeServer *helper_pipe = platform::CreatePipeServer(helper_name);
    platform::Process *parent = nullptr;
};

TEST_F(OrphanTest, AKilledParent)
{
    Start("killed", "hang\n");
    platform::KillProcess(*parent);
    AwaitParent();
    ExpectHelperGone();
}

TEST_F(OrphanTest, AParentKilledInARequest)
{
    Start("in_call", "take 7800\nlog_names\nhang\n");
    LetParentGoOn();
    platform::KillProcess(*parent);
    AwaitParent();
    ExpectHelperGone();
}

TEST_F(OrphanTest, AParentThatReturnsWithoutAStop)
{
    Start("return", "hang\n");
    LetParentGoOn();
    EXPECT_EQ(AwaitParent(), 0U);
    ExpectHelperGone();
}

TEST_F(OrphanTest, AParentThatExits)
{
    Start("exit", "hang\n");
    LetParentGoOn();
    EXPECT_EQ(AwaitParent(), 0U);
    ExpectHelperGone();
}

TEST_F(OrphanTest, AParentThatExitsWithoutCleaningUp)
{
    Start("quick_exit", "hang\n");
    LetParentGoOn();
    EXPECT_EQ(AwaitParent(), 0U);
    ExpectHelperGone();
}

TEST_F(OrphanTest, AParentThatAborts)
{
    Start("abort", "hang\n");
    LetParentGoOn();
    EXPECT_NE(AwaitParent(), 0U);
    ExpectHelperGone();
}

TEST_F(OrphanTest, AHelperOutlivesTheThreadThatStartedIt)
{
    Start("outlives_thread", "take 7800\n" + success + "hang\n");
    LetParentGoOn();
    EXPECT_EQ(AwaitParent(), 0U) << directory.ReadFile("log");
    ExpectHelperGone();
}

} // namespace
} // namespace kessil::parent
