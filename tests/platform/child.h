#pragma once

#include "platform/pipe_server.h"
#include "platform/process.h"
#include "surroundings.h"

#include <chrono>
#include <string>
#include <vector>

namespace kessil::test {

/// Exit codes of the test program of child.cpp.
enum ChildResult
{
    child_returned = 10,  ///< the guarded call returned
    child_abandoned = 11, ///< the guarded call was abandoned
    child_caught = 12,    ///< an exception came through the guard
    child_yes = 13,
    child_no = 14,
    child_failed = 15 ///< anything else
};

/// No wait of a test lasts longer than this.
inline platform::Deadline WaitLimit()
{
    return std::chrono::steady_clock::now() + std::chrono::seconds(60);
}

/// ChildProgram() with one of its tasks. Killed on destruction if it still runs.
class Child
{
public:
    explicit Child(const std::vector<WideString> &arguments, const WideString &directory = {});
    ~Child();
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    platform::Process &Process() { return *m_process; }
    std::uint32_t Id() const { return platform::ProcessId(*m_process); }

    /// Waits for the end and returns the exit code.
    std::uint32_t ExitCode();

    /// Releases the process, as its owner may at any time.
    void Release();

private:
    platform::Process *m_process;
};

/// A served pipe that a child connects to.
class ServedPipe
{
public:
    ServedPipe();
    ~ServedPipe();
    ServedPipe(const ServedPipe &) = delete;
    ServedPipe &operator=(const ServedPipe &) = delete;

    const WideString &Name() const { return m_name; }
    platform::PipeServer &Server() { return *m_server; }

    platform::PipeStatus Accept(std::uint32_t process_id);
    platform::PipeStatus Write(const std::string &bytes);

    /// Reads until `size` bytes have arrived or the other end is gone.
    std::string Read(std::size_t size);

    /// Reads until the other end is gone.
    std::string ReadAll() { return Read(~std::size_t{0}); }

    /// Closes the pipe, which the other end notices.
    void Close();

    /// Reads one text that the child sent with its length in front.
    WideString ReadText();

private:
    WideString m_name = platform::RandomPipeName();
    platform::PipeServer *m_server = platform::CreatePipeServer(m_name);
};

} // namespace kessil::test
