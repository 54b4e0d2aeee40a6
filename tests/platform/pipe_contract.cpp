#include "platform/pipe.h"

#include "child.h"
#include "platform/last_error.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace kessil::test {

using platform::PipeHandle;

namespace {

/// A client of a raw server, both in this process.
struct Connection
{
    Connection()
    {
        client = platform::ConnectPipe(name, 30000);
        EXPECT_NE(client, platform::invalid_pipe);
        server.Accept();
    }
    ~Connection() { platform::ClosePipe(client); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    WideString name = platform::RandomPipeName();
    RawServer server{name};
    PipeHandle client = platform::invalid_pipe;
};

std::string Read(PipeHandle pipe, std::uint32_t size)
{
    std::string bytes(size, '\0');
    std::uint32_t count = 0;
    EXPECT_TRUE(platform::ReadPipe(pipe, bytes.data(), size, count));
    EXPECT_LE(count, size);
    bytes.resize(count);
    return bytes;
}

} // namespace

TEST(Pipe, ReadsWhatIsThere)
{
    Connection connection;
    connection.server.Write("hello");
    EXPECT_EQ(Read(connection.client, 64), "hello");
}

TEST(Pipe, ReadsNoMoreThanAskedFor)
{
    Connection connection;
    connection.server.Write("hello");
    EXPECT_EQ(Read(connection.client, 2), "he");
    EXPECT_EQ(Read(connection.client, 64), "llo");
}

TEST(Pipe, JoinsWhatWasWrittenInPieces)
{
    Connection connection;
    connection.server.Write("one");
    connection.server.Write("two");
    std::string bytes = Read(connection.client, 64);
    while (bytes.size() < 6)
        bytes += Read(connection.client, 64);
    EXPECT_EQ(bytes, "onetwo");
}

TEST(Pipe, WaitsForTheFirstByte)
{
    Connection connection;
    std::thread writer([&connection] { connection.server.Write("late"); });
    EXPECT_EQ(Read(connection.client, 4).substr(0, 1), "l");
    writer.join();
}

TEST(Pipe, ReadsNothingWhenTheStreamEndedAndThePipeIsHeld)
{
    Connection connection;
    connection.server.Write("last");
    connection.server.EndStream();
    EXPECT_EQ(Read(connection.client, 64), "last");
    unsigned char byte = 0;
    std::uint32_t count = 99;
    EXPECT_TRUE(platform::ReadPipe(connection.client, &byte, 1, count));
    EXPECT_EQ(count, 0u);
}

TEST(Pipe, FailsToReadWhenTheOtherEndIsGone)
{
    Connection connection;
    connection.server.Write("last");
    connection.server.Close();
    EXPECT_EQ(Read(connection.client, 64), "last");
    unsigned char byte = 0;
    std::uint32_t count = 99;
    EXPECT_FALSE(platform::ReadPipe(connection.client, &byte, 1, count));
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(platform::LastError(), on_windows ? 109u : 32u);
}

TEST(Pipe, FailsToWriteWhenTheOtherEndIsGone)
{
    Connection connection;
    connection.server.Close();
    std::uint32_t count = 99;
    EXPECT_FALSE(platform::WritePipe(connection.client, "x", 1, count));
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(platform::LastError(), on_windows ? 232u : 32u);
}

TEST(Pipe, CarriesLargeBlocksBothWays)
{
    ServedPipe served;
    const PipeHandle client = platform::ConnectPipe(served.Name(), 30000);
    ASSERT_NE(client, platform::invalid_pipe);
    ASSERT_EQ(served.Accept(OwnProcessId()), platform::PipeStatus::Done);

    std::string sent(3 << 20, '\0');
    for (std::size_t i = 0; i < sent.size(); ++i)
        sent[i] = static_cast<char>(i * 7 + i / 251);
    std::string echoed;
    std::thread echo([&] {
        std::string received;
        while (received.size() < sent.size()) {
            const std::string block = Read(client, 1 << 20);
            if (block.empty())
                break;
            received += block;
        }
        std::uint32_t count = 0;
        EXPECT_TRUE(platform::WritePipe(client, received.data(), static_cast<std::uint32_t>(received.size()), count));
        EXPECT_EQ(count, sent.size());
    });
    EXPECT_EQ(served.Write(sent), platform::PipeStatus::Done);
    echoed = served.Read(sent.size());
    echo.join();
    EXPECT_TRUE(echoed == sent);
    platform::ClosePipe(client);
}

TEST(Pipe, WritesNothing)
{
    Connection connection;
    std::uint32_t count = 99;
    EXPECT_TRUE(platform::WritePipe(connection.client, "", 0, count));
    EXPECT_EQ(count, 0u);
}

TEST(Pipe, DoesNotConnectToNothing)
{
    const auto start = std::chrono::steady_clock::now();
    const WideString name = on_windows ? u"\\\\.\\pipe\\kessil-no-such-pipe" : u"/tmp/kessil-no-such-directory/pipe";
    EXPECT_EQ(platform::ConnectPipe(name, 50), platform::invalid_pipe);
    EXPECT_EQ(platform::LastError(), 2u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(Pipe, DoesNotConnectUnderANameThatCanBeNoPipe)
{
    platform::SetLastError(0);
    const WideString name = on_windows ? u"C:\\windows" : WideString(u"/tmp/") + WideString(103, u'x');
    EXPECT_EQ(platform::ConnectPipe(name, 50), platform::invalid_pipe);
    EXPECT_NE(platform::LastError(), 0u);
}

TEST(Pipe, StaysBusyForASecondClient)
{
    ServedPipe served;
    const PipeHandle first = platform::ConnectPipe(served.Name(), 30000);
    ASSERT_NE(first, platform::invalid_pipe);
    ASSERT_EQ(served.Accept(OwnProcessId()), platform::PipeStatus::Done);
    const PipeHandle second = platform::ConnectPipe(served.Name(), 50);
    EXPECT_EQ(second, platform::invalid_pipe);
    platform::ClosePipe(first);
}

TEST(Pipe, KeepsTheLastErrorWhenItIsClosed)
{
    ServedPipe served;
    const PipeHandle client = platform::ConnectPipe(served.Name(), 30000);
    ASSERT_NE(client, platform::invalid_pipe);
    platform::SetLastError(1234);
    platform::ClosePipe(client);
    EXPECT_EQ(platform::LastError(), 1234u);
}

} // namespace kessil::test
