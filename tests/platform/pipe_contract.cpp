#include "platform/pipe.h"

#include "platform/last_error.h"
#include "platform/pipe_server.h"
#include "surroundings.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

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

TEST(Pipe, ReadsWhatIsAvailable)
{
    Connection connection;
    connection.server.Write("hello");
    EXPECT_EQ(Read(connection.client, 64), "hello");
}

TEST(Pipe, ReadsNoMoreThanRequested)
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

TEST(Pipe, WritesZeroBytes)
{
    Connection connection;
    std::uint32_t count = 99;
    EXPECT_TRUE(platform::WritePipe(connection.client, "", 0, count));
    EXPECT_EQ(count, 0u);
}

TEST(Pipe, DoesNotConnectWithoutAServer)
{
    const auto start = std::chrono::steady_clock::now();
    const WideString name = on_windows ? u"\\\\.\\pipe\\kessil-no-such-pipe" : u"/tmp/kessil-no-such-directory/pipe";
    EXPECT_EQ(platform::ConnectPipe(name, 50), platform::invalid_pipe);
    EXPECT_EQ(platform::LastError(), 2u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(Pipe, DoesNotConnectToANameThatIsNoPipe)
{
    platform::SetLastError(0);
    const WideString name = on_windows ? u"C:\\windows" : WideString(u"/tmp/") + WideString(103, u'x');
    EXPECT_EQ(platform::ConnectPipe(name, 50), platform::invalid_pipe);
    EXPECT_NE(platform::LastError(), 0u);
}

TEST(Pipe, KeepsTheLastErrorWhenItIsClosed)
{
    const WideString name = platform::RandomPipeName();
    const RawServer server(name);
    const PipeHandle client = platform::ConnectPipe(name, 30000);
    ASSERT_NE(client, platform::invalid_pipe);
    platform::SetLastError(1234);
    platform::ClosePipe(client);
    EXPECT_EQ(platform::LastError(), 1234u);
}

} // namespace kessil::test
