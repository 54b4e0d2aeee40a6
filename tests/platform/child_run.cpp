#include "child.h"

#include "platform/last_error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace kessil::test {

using platform::PipeStatus;

Child::Child(const std::vector<WideString> &arguments, const WideString &directory)
    : m_process(platform::StartProcess(ChildProgram(), arguments, directory))
{
    if (!m_process)
        throw std::runtime_error("the child didn't start, error " + std::to_string(platform::LastError()));
}

Child::~Child()
{
    Release();
}

std::uint32_t Child::ExitCode()
{
    std::uint32_t exit_code = ~0u;
    EXPECT_TRUE(platform::WaitForProcess(*m_process, WaitLimit(), exit_code));
    return exit_code;
}

void Child::Release()
{
    platform::ReleaseProcess(m_process);
    m_process = nullptr;
}

ServedPipe::ServedPipe()
{
    if (!m_server)
        throw std::runtime_error("no pipe, error " + std::to_string(platform::LastError()));
}

ServedPipe::~ServedPipe()
{
    Close();
}

void ServedPipe::Close()
{
    platform::DestroyPipeServer(m_server);
    m_server = nullptr;
}

PipeStatus ServedPipe::Accept(std::uint32_t process_id)
{
    return platform::AcceptPipeClient(*m_server, process_id, WaitLimit());
}

PipeStatus ServedPipe::Write(const std::string &bytes)
{
    return platform::WriteServedPipe(*m_server, bytes.data(), static_cast<std::uint32_t>(bytes.size()), WaitLimit());
}

std::string ServedPipe::Read(std::size_t size)
{
    std::string bytes;
    char block[4096];
    while (bytes.size() < size) {
        const std::size_t wanted = std::min(size - bytes.size(), sizeof block);
        std::uint32_t count = 0;
        const PipeStatus status =
            platform::ReadServedPipe(*m_server, block, static_cast<std::uint32_t>(wanted), count, WaitLimit());
        EXPECT_TRUE(status == PipeStatus::Done || status == PipeStatus::Closed) << static_cast<int>(status);
        if (status != PipeStatus::Done)
            break;
        bytes.append(block, count);
    }
    return bytes;
}

WideString ServedPipe::ReadText()
{
    const std::string prefix = Read(sizeof(std::uint32_t));
    std::uint32_t length = 0;
    if (prefix.size() == sizeof length)
        std::memcpy(&length, prefix.data(), sizeof length);
    const std::string bytes = Read(length * sizeof(char16_t));
    WideString text(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), bytes.data(), bytes.size());
    return text;
}

} // namespace kessil::test
