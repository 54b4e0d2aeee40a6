#include "platform/pipe_server.h"

#include "child.h"
#include "platform/last_error.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace kessil::test {

using platform::Deadline;
using platform::PipeStatus;

namespace {

/// Long enough to be a wait, and short enough for a test.
Deadline Soon()
{
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(60);
}

PipeStatus ReadOne(ServedPipe &pipe, Deadline deadline)
{
    char byte = 0;
    std::uint32_t count = 0;
    return platform::ReadServedPipe(pipe.Server(), &byte, 1, count, deadline);
}

/// A pipe whose client is this process.
struct Connected
{
    Connected()
    {
        EXPECT_TRUE(client.IsConnected());
        EXPECT_EQ(pipe.Accept(OwnProcessId()), PipeStatus::Done);
    }

    ServedPipe pipe;
    PipeClient client{pipe.Name()};
};

} // namespace

TEST(RandomPipeName, DiffersEachTime)
{
    const ServedPipe first;
    const ServedPipe second;
    EXPECT_NE(first.Name(), second.Name());
}

TEST(RandomPipeName, EndsInThirtyTwoHexadecimalDigits)
{
    const ServedPipe pipe;
    const WideString &name = pipe.Name();
    ASSERT_GT(name.size(), 32u);
    EXPECT_EQ(name.find_first_not_of(u"0123456789abcdef", name.size() - 32), WideString::npos);
    if (on_windows) {
        EXPECT_EQ(name.substr(0, name.size() - 32), u"\\\\.\\pipe\\kessil-");
    }
}

TEST(PipeServer, IsRefusedForANameInUse)
{
    const ServedPipe pipe;
    EXPECT_EQ(platform::CreatePipeServer(pipe.Name()), nullptr);
    EXPECT_NE(platform::LastError(), 0u);
}

TEST(PipeServer, IsRefusedForAnEmptyName)
{
    EXPECT_EQ(platform::CreatePipeServer(u""), nullptr);
    EXPECT_NE(platform::LastError(), 0u);
}

TEST(PipeServer, FreesItsNameWhenDestroyed)
{
    platform::PipeServer *server = platform::CreatePipeServer(platform::RandomPipeName());
    ASSERT_NE(server, nullptr);
    platform::DestroyPipeServer(server);

    WideString name;
    {
        const ServedPipe pipe;
        name = pipe.Name();
    }
    EXPECT_FALSE(PipeClient(name, false).IsConnected());
}

TEST(PipeServer, ServesAClientThatConnectsLater)
{
    ServedPipe pipe;
    Child child({u"arguments", pipe.Name(), u"here"});
    ASSERT_EQ(pipe.Accept(child.Id()), PipeStatus::Done);
    EXPECT_EQ(pipe.ReadText(), u"here");
    EXPECT_EQ(child.ExitCode(), 0u);
}

TEST(PipeServer, ServesAClientThatLeftBeforeItWasAccepted)
{
    ServedPipe pipe;
    PipeClient client(pipe.Name());
    client.Write("left");
    client.Leave();
    ASSERT_EQ(pipe.Accept(OwnProcessId()), PipeStatus::Done);
    EXPECT_EQ(pipe.ReadAll(), "left");
}

TEST(PipeServer, ServesTheExpectedClientAfterAnIntruderThatLeft)
{
    ServedPipe pipe;
    PipeClient(pipe.Name()).Leave();
    Child child({u"arguments", pipe.Name(), u"me"});
    EXPECT_EQ(pipe.Accept(child.Id()), PipeStatus::WrongClient);
    EXPECT_EQ(pipe.Accept(child.Id()), PipeStatus::Done);
    EXPECT_EQ(pipe.ReadText(), u"me");
}

TEST(PipeServer, DisconnectsAnUnexpectedProcess)
{
    ServedPipe pipe;
    Child expected({u"exit", u"0"});
    PipeClient client(pipe.Name());
    ASSERT_TRUE(client.IsConnected());
    EXPECT_EQ(pipe.Accept(expected.Id()), PipeStatus::WrongClient);
    EXPECT_EQ(client.ReadByte(), "");
}

TEST(PipeServer, AcceptsTheExpectedProcessAfterAnother)
{
    ServedPipe pipe;
    PipeClient intruder(pipe.Name());
    ASSERT_TRUE(intruder.IsConnected());
    Child child({u"arguments", pipe.Name(), u"me"});
    EXPECT_EQ(pipe.Accept(child.Id()), PipeStatus::WrongClient);
    intruder.Leave();
    EXPECT_EQ(pipe.Accept(child.Id()), PipeStatus::Done);
    EXPECT_EQ(pipe.ReadText(), u"me");
}

TEST(PipeServer, StopsWaitingForAClientAtTheDeadline)
{
    ServedPipe pipe;
    const Deadline deadline = Soon();
    EXPECT_EQ(platform::AcceptPipeClient(pipe.Server(), OwnProcessId(), deadline), PipeStatus::TimedOut);
    EXPECT_GE(std::chrono::steady_clock::now(), deadline);

    const PipeClient client(pipe.Name());
    EXPECT_EQ(pipe.Accept(OwnProcessId()), PipeStatus::Done);
}

TEST(PipeServer, StaysBusyForASecondClient)
{
    const Connected connected;
    EXPECT_FALSE(PipeClient(connected.pipe.Name(), false).IsConnected());
}

TEST(PipeServer, StopsReadingAtTheDeadline)
{
    Connected connected;
    const Deadline deadline = Soon();
    EXPECT_EQ(ReadOne(connected.pipe, deadline), PipeStatus::TimedOut);
    EXPECT_GE(std::chrono::steady_clock::now(), deadline);

    connected.client.Write("still");
    EXPECT_EQ(connected.pipe.Read(5), "still");
}

TEST(PipeServer, StopsAtOnceWhenTheDeadlineHasPassed)
{
    Connected connected;
    const Deadline passed = std::chrono::steady_clock::now() - std::chrono::seconds(1);
    EXPECT_EQ(ReadOne(connected.pipe, passed), PipeStatus::TimedOut);

    connected.client.Write("there");
    EXPECT_EQ(ReadOne(connected.pipe, passed), PipeStatus::TimedOut);
    EXPECT_EQ(connected.pipe.Read(5), "there");
}

TEST(PipeServer, StopsWritingAtTheDeadline)
{
    Connected connected;
    const std::string more_than_a_pipe_holds(16 << 20, 'x');
    const Deadline deadline = Soon();
    EXPECT_EQ(platform::WriteServedPipe(connected.pipe.Server(), more_than_a_pipe_holds.data(),
                                        static_cast<std::uint32_t>(more_than_a_pipe_holds.size()), deadline),
              PipeStatus::TimedOut);
    EXPECT_GE(std::chrono::steady_clock::now(), deadline);
}

TEST(PipeServer, ReadsWhatIsAvailable)
{
    Connected connected;
    connected.client.Write("abc");
    char block[64] = {};
    std::uint32_t count = 0;
    ASSERT_EQ(platform::ReadServedPipe(connected.pipe.Server(), block, sizeof block, count, WaitLimit()),
              PipeStatus::Done);
    EXPECT_EQ(std::string(block, count), "abc");
}

TEST(PipeServer, ReportsThatTheClientIsGone)
{
    Connected connected;
    connected.client.Write("end");
    connected.client.Leave();
    EXPECT_EQ(connected.pipe.Read(3), "end");
    EXPECT_EQ(ReadOne(connected.pipe, WaitLimit()), PipeStatus::Closed);
    EXPECT_EQ(connected.pipe.Write("x"), PipeStatus::Closed);
}

TEST(PipeServer, ReportsThatTheClientDied)
{
    ServedPipe pipe;
    Child child({u"hang", pipe.Name()});
    ASSERT_EQ(pipe.Accept(child.Id()), PipeStatus::Done);
    platform::KillProcess(child.Process());
    EXPECT_EQ(ReadOne(pipe, WaitLimit()), PipeStatus::Closed);
}

TEST(PipeServer, KeepsAnInterruptForTheNextOperation)
{
    ServedPipe pipe;
    platform::InterruptPipeServer(pipe.Server());
    EXPECT_EQ(pipe.Accept(OwnProcessId()), PipeStatus::Interrupted);

    Connected reading;
    platform::InterruptPipeServer(reading.pipe.Server());
    EXPECT_EQ(ReadOne(reading.pipe, WaitLimit()), PipeStatus::Interrupted);

    Connected writing;
    platform::InterruptPipeServer(writing.pipe.Server());
    EXPECT_EQ(writing.pipe.Write("x"), PipeStatus::Interrupted);
}

TEST(PipeServer, IsInterruptedWhileItWaits)
{
    // The interrupt comes before or in the middle of the operation; both end it.
    for (int round = 0; round < 20; ++round) {
        ServedPipe waiting;
        std::thread first([&waiting] { platform::InterruptPipeServer(waiting.Server()); });
        EXPECT_EQ(waiting.Accept(OwnProcessId()), PipeStatus::Interrupted);
        first.join();

        Connected reading;
        std::thread second([&reading] { platform::InterruptPipeServer(reading.pipe.Server()); });
        EXPECT_EQ(ReadOne(reading.pipe, WaitLimit()), PipeStatus::Interrupted);
        second.join();
    }
}

TEST(PipeServer, IsInterruptedWhileItWrites)
{
    Connected connected;
    const std::string more_than_a_pipe_holds(16 << 20, 'x');
    std::thread interrupting([&connected] {
        // The first byte here says that the write is under way.
        EXPECT_EQ(connected.client.ReadByte(), "x");
        platform::InterruptPipeServer(connected.pipe.Server());
    });
    EXPECT_EQ(connected.pipe.Write(more_than_a_pipe_holds), PipeStatus::Interrupted);
    interrupting.join();
}

TEST(PipeServer, KeepsTheLastErrorWhenDestroyed)
{
    platform::PipeServer *const server = platform::CreatePipeServer(platform::RandomPipeName());
    ASSERT_NE(server, nullptr);
    platform::SetLastError(1234);
    platform::DestroyPipeServer(server);
    EXPECT_EQ(platform::LastError(), 1234u);
    platform::DestroyPipeServer(nullptr);
    EXPECT_EQ(platform::LastError(), 1234u);
}

} // namespace kessil::test
