#include "platform/pipe.h"

#include "child.h"
#include "platform/pipe_server.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace kessil::test {

using platform::PipeHandle;

namespace {

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

TEST(PipeSystem, WaitsForTheFirstByte)
{
    const WideString name = platform::RandomPipeName();
    RawServer server(name);
    const PipeHandle client = platform::ConnectPipe(name, 30000);
    ASSERT_NE(client, platform::invalid_pipe);
    server.Accept();
    std::thread writer([&server] { server.Write("late"); });
    EXPECT_EQ(Read(client, 4).substr(0, 1), "l");
    writer.join();
    platform::ClosePipe(client);
}

TEST(PipeSystem, CarriesLargeBlocksBothWays)
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

} // namespace kessil::test
