#include "protocol/system.h"

#include "support/under_wine.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <io.h>
#include <memory>
#include <psapi.h>
#include <stdexcept>

namespace kessil::test {
namespace {

[[noreturn]] void Fail(const char *what)
{
    throw std::runtime_error(std::string(what) + ", error " + std::to_string(GetLastError()));
}

const wchar_t *Native(const WideString &text)
{
    return reinterpret_cast<const wchar_t *>(text.c_str());
}

bool IsGone(DWORD error)
{
    return error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA || error == ERROR_PIPE_NOT_CONNECTED;
}

void CloseOnce(HANDLE &handle)
{
    if (handle != nullptr)
        CloseHandle(handle);
    handle = nullptr;
}

DWORD MillisecondsLeft()
{
    const auto left = WaitLimit() - std::chrono::steady_clock::now();
    return static_cast<DWORD>(std::chrono::ceil<std::chrono::milliseconds>(left).count());
}

} // namespace

struct PipeEnd::Native
{
    WideString name;
    HANDLE pipe = nullptr;
    HANDLE occupant = nullptr;
    HANDLE done = nullptr;

    // Waits for an operation that the system's call `started`; false, with its error, when it failed.
    bool Finish(bool started, OVERLAPPED &operation, DWORD &count)
    {
        if (!started && GetLastError() != ERROR_IO_PENDING)
            return false;
        if (WaitForSingleObject(done, MillisecondsLeft()) != WAIT_OBJECT_0) {
            CancelIoEx(pipe, &operation);
            GetOverlappedResult(pipe, &operation, &count, TRUE);
            throw std::runtime_error("the helper let the limit pass");
        }
        return GetOverlappedResult(pipe, &operation, &count, FALSE) != 0;
    }

    OVERLAPPED Operation() const
    {
        OVERLAPPED operation = {};
        operation.hEvent = done;
        return operation;
    }
};

PipeEnd::PipeEnd(const WideString &name) : m_native(new Native)
{
    m_native->name = name;
    m_native->done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    // Wine drops an empty write to a pipe of bytes. The other end reads a pipe of messages as bytes all the same.
    const DWORD type = UnderWine() ? PIPE_TYPE_MESSAGE : PIPE_TYPE_BYTE;
    const HANDLE pipe =
        CreateNamedPipeW(test::Native(name), PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE | FILE_FLAG_OVERLAPPED,
                         type | PIPE_READMODE_BYTE, 1, 65536, 65536, 0, nullptr);
    if (pipe == INVALID_HANDLE_VALUE)
        Fail("CreateNamedPipeW");
    m_native->pipe = pipe;
}

PipeEnd::~PipeEnd()
{
    Close();
    CloseOnce(m_native->done);
    delete m_native;
}

void PipeEnd::Accept()
{
    OVERLAPPED operation = m_native->Operation();
    DWORD none = 0;
    const bool started = ConnectNamedPipe(m_native->pipe, &operation) != 0;
    if (!started && GetLastError() == ERROR_PIPE_CONNECTED)
        return;
    if (!m_native->Finish(started, operation, none))
        Fail("ConnectNamedPipe");
}

void PipeEnd::Occupy()
{
    m_native->occupant =
        CreateFileW(test::Native(m_native->name), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (m_native->occupant == INVALID_HANDLE_VALUE)
        Fail("CreateFileW");
    Accept();
}

void PipeEnd::Vacate()
{
    CloseOnce(m_native->occupant);
    DisconnectNamedPipe(m_native->pipe);
}

Bytes PipeEnd::Read(std::size_t size)
{
    Bytes bytes(size);
    OVERLAPPED operation = m_native->Operation();
    DWORD count = 0;
    const bool started = ReadFile(m_native->pipe, bytes.data(), static_cast<DWORD>(size), nullptr, &operation) != 0;
    if (!m_native->Finish(started, operation, count) && !IsGone(GetLastError()))
        Fail("ReadFile");
    bytes.resize(count);
    return bytes;
}

bool PipeEnd::Write(const Bytes &bytes)
{
    OVERLAPPED operation = m_native->Operation();
    DWORD count = 0;
    const bool started =
        WriteFile(m_native->pipe, bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, &operation) != 0;
    const bool written = m_native->Finish(started, operation, count);
    if (!written && !IsGone(GetLastError()))
        Fail("WriteFile");
    return written;
}

void PipeEnd::EndStream()
{
    Write(Bytes());
}

void PipeEnd::Close()
{
    CloseOnce(m_native->occupant);
    CloseOnce(m_native->pipe);
}

Holdings HoldingsOf(const platform::Process &process)
{
    HANDLE opened = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, platform::ProcessId(process));
    PROCESS_MEMORY_COUNTERS_EX memory = {};
    memory.cb = sizeof memory;
    DWORD handles = 0;
    if (!GetProcessMemoryInfo(opened, reinterpret_cast<PROCESS_MEMORY_COUNTERS *>(&memory), sizeof memory) ||
        !GetProcessHandleCount(opened, &handles))
        Fail("asking for a process's holdings");
    CloseOnce(opened);
    // Wine counts nothing as private; what is resident it has from the system below.
    return {UnderWine() ? memory.WorkingSetSize : memory.PrivateUsage, handles};
}

RedirectedOutput::RedirectedOutput(const std::filesystem::path &file)
    : m_kept(reinterpret_cast<std::uintptr_t>(GetStdHandle(STD_OUTPUT_HANDLE)))
{
    const HANDLE opened = CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        Fail("CreateFileW");
    SetStdHandle(STD_OUTPUT_HANDLE, opened);
}

RedirectedOutput::~RedirectedOutput()
{
    HANDLE opened = GetStdHandle(STD_OUTPUT_HANDLE);
    SetStdHandle(STD_OUTPUT_HANDLE, reinterpret_cast<HANDLE>(m_kept));
    CloseOnce(opened);
}

TakenName::TakenName(const WideString &name)
    : m_name(name), m_object(reinterpret_cast<std::uintptr_t>(CreateEventW(nullptr, TRUE, FALSE, Native(name))))
{
    if (m_object == 0)
        Fail("CreateEventW");
}

TakenName::~TakenName()
{
    CloseHandle(reinterpret_cast<HANDLE>(m_object));
}

bool ShrinkSection(const WideString & /*name*/)
{
    return false;
}

WideString NativePath(const std::string &path)
{
    WideString native = platform::FromUtf8(path);
    std::replace(native.begin(), native.end(), u'/', u'\\');
    return native.starts_with(u'\\') ? u"Z:" + native : native;
}

} // namespace kessil::test
