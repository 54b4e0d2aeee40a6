#include "native.h"

#include <gtest/gtest.h>

#include <vector>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace kessil::test {

namespace {

std::uint64_t ToNumber(HANDLE handle)
{
    return reinterpret_cast<std::uintptr_t>(handle);
}

HANDLE Native(std::uint64_t number)
{
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(number));
}

} // namespace

std::uint32_t OwnProcessId()
{
    return GetCurrentProcessId();
}

// Numbers are given out from the lowest on, and a child's own handles have low ones: this one gets a high one.
InheritableHandle::InheritableHandle()
{
    std::vector<HANDLE> low(1000);
    for (HANDLE &handle : low)
        handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, nullptr, TRUE};
    m_number = ToNumber(CreateEventW(&attributes, TRUE, FALSE, nullptr));
    EXPECT_NE(m_number, 0u);
    for (const HANDLE handle : low)
        CloseHandle(handle);
}

InheritableHandle::~InheritableHandle()
{
    CloseHandle(Native(m_number));
}

bool IsOpen(std::uint64_t number)
{
    DWORD flags = 0;
    return GetHandleInformation(Native(number), &flags) != 0;
}

RedirectedOutput::RedirectedOutput(const std::string &path) : m_kept(ToNumber(GetStdHandle(STD_OUTPUT_HANDLE)))
{
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    SetStdHandle(STD_OUTPUT_HANDLE, file);
}

RedirectedOutput::~RedirectedOutput()
{
    CloseHandle(GetStdHandle(STD_OUTPUT_HANDLE));
    SetStdHandle(STD_OUTPUT_HANDLE, Native(m_kept));
}

NoInput::NoInput() : m_kept(ToNumber(GetStdHandle(STD_INPUT_HANDLE)))
{
    SetStdHandle(STD_INPUT_HANDLE, nullptr);
}

NoInput::~NoInput()
{
    SetStdHandle(STD_INPUT_HANDLE, Native(m_kept));
}

RawServer::RawServer(const WideString &name) : m_name(name), m_listener(0)
{
    // Wine drops writes of nothing on a pipe of bytes. The client reads bytes from a pipe of messages just the same.
    m_client = ToNumber(CreateNamedPipeW(reinterpret_cast<const wchar_t *>(name.c_str()), PIPE_ACCESS_DUPLEX,
                                         PIPE_TYPE_MESSAGE, 1, 4096, 4096, 0, nullptr));
    EXPECT_NE(Native(m_client), INVALID_HANDLE_VALUE);
}

RawServer::~RawServer()
{
    Close();
}

void RawServer::Accept()
{
    EXPECT_TRUE(ConnectNamedPipe(Native(m_client), nullptr) || GetLastError() == ERROR_PIPE_CONNECTED);
}

void RawServer::Write(const std::string &bytes)
{
    DWORD count = 0;
    EXPECT_TRUE(WriteFile(Native(m_client), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr));
    EXPECT_EQ(count, bytes.size());
}

void RawServer::EndStream()
{
    Write("");
}

void RawServer::Close()
{
    if (m_client != 0)
        CloseHandle(Native(m_client));
    m_client = 0;
}

void EndThisThread(std::uint32_t exit_code)
{
    ExitThread(exit_code);
}

void SetVariable(const std::string &name, const std::string &value)
{
    EXPECT_TRUE(SetEnvironmentVariableA(name.c_str(), value.c_str()));
}

} // namespace kessil::test
