#include "surroundings.h"

#include "child.h"
#include "platform/pipe.h"

#include <gtest/gtest.h>

namespace kessil::test {

WideString ChildProgram()
{
    return platform::FromUtf8(KESSIL_TEST_CHILD);
}

WideString TargetLibrary(const std::string &name)
{
    return platform::FromUtf8(KESSIL_TEST_LIBRARIES "/" + name + (on_windows ? ".dll" : ".so"));
}

WideString MessageFile()
{
    return platform::FromUtf8(KESSIL_TEST_LIBRARIES "/messages" + std::string(on_windows ? ".dll" : ".cat"));
}

struct PipeClient::Native
{
    platform::PipeHandle pipe = platform::invalid_pipe;
};

PipeClient::PipeClient(const WideString &name, bool patient) : m_native(std::make_unique<Native>())
{
    m_native->pipe = platform::ConnectPipe(name, patient ? 30000 : 50);
}

PipeClient::~PipeClient()
{
    Leave();
}

bool PipeClient::IsConnected() const
{
    return m_native->pipe != platform::invalid_pipe;
}

void PipeClient::Write(const std::string &bytes)
{
    std::uint32_t count = 0;
    EXPECT_TRUE(platform::WritePipe(m_native->pipe, bytes.data(), static_cast<std::uint32_t>(bytes.size()), count));
    EXPECT_EQ(count, bytes.size());
}

std::string PipeClient::ReadByte()
{
    char byte = 0;
    std::uint32_t count = 0;
    return platform::ReadPipe(m_native->pipe, &byte, 1, count) && count == 1 ? std::string(1, byte) : std::string();
}

void PipeClient::Leave()
{
    if (IsConnected())
        platform::ClosePipe(m_native->pipe);
    m_native->pipe = platform::invalid_pipe;
}

std::uint32_t ExitCodeOfAHangingProcess(const std::vector<Ending> &calls)
{
    ServedPipe pipe;
    std::vector<WideString> arguments = {u"end_hanging", pipe.Name()};
    for (const Ending &call : calls) {
        arguments.push_back(platform::FromUtf8(std::to_string(call.milliseconds)));
        arguments.push_back(platform::FromUtf8(std::to_string(call.exit_code)));
    }
    Child child(arguments);
    EXPECT_EQ(pipe.Accept(child.Id()), platform::PipeStatus::Done);
    return child.ExitCode();
}

} // namespace kessil::test
