#include "surroundings.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <io.h>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace kessil::test {

std::uint32_t OwnProcessId()
{
    return GetCurrentProcessId();
}

RedirectedOutput::RedirectedOutput(const std::string &path)
    : m_kept(reinterpret_cast<std::uintptr_t>(GetStdHandle(STD_OUTPUT_HANDLE)))
{
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    SetStdHandle(STD_OUTPUT_HANDLE, file);
}

RedirectedOutput::~RedirectedOutput()
{
    CloseHandle(GetStdHandle(STD_OUTPUT_HANDLE));
    SetStdHandle(STD_OUTPUT_HANDLE, reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(m_kept)));
}

// Such a small number of bytes fits into a pipe that nobody reads yet.
Input::Input(const std::string &bytes)
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(_pipe(ends, 65536, _O_BINARY | _O_NOINHERIT), 0);
    EXPECT_EQ(_write(ends[1], bytes.data(), static_cast<unsigned>(bytes.size())), static_cast<int>(bytes.size()));
    _close(ends[1]);
    m_descriptor = ends[0];
}

Input::~Input()
{
    _close(m_descriptor);
}

struct RawServer::Native
{
    HANDLE pipe = INVALID_HANDLE_VALUE;
};

RawServer::RawServer(const WideString &name) : m_native(std::make_unique<Native>())
{
    // Wine drops writes of zero bytes on a pipe in byte mode. The client reads bytes from a pipe in message mode just
    // the same.
    m_native->pipe = CreateNamedPipeW(reinterpret_cast<const wchar_t *>(name.c_str()), PIPE_ACCESS_DUPLEX,
                                      PIPE_TYPE_MESSAGE, 1, 4096, 4096, 0, nullptr);
    EXPECT_NE(m_native->pipe, INVALID_HANDLE_VALUE);
}

RawServer::~RawServer()
{
    Close();
}

void RawServer::Accept()
{
    EXPECT_TRUE(ConnectNamedPipe(m_native->pipe, nullptr) || GetLastError() == ERROR_PIPE_CONNECTED);
}

void RawServer::Write(const std::string &bytes)
{
    DWORD count = 0;
    EXPECT_TRUE(WriteFile(m_native->pipe, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr));
    EXPECT_EQ(count, bytes.size());
}

void RawServer::EndStream()
{
    Write("");
}

void RawServer::Close()
{
    if (m_native->pipe != INVALID_HANDLE_VALUE)
        CloseHandle(m_native->pipe);
    m_native->pipe = INVALID_HANDLE_VALUE;
}

} // namespace kessil::test
