#pragma once

#include "platform/text.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// What stands around the platform's functions while a suite calls them: the far ends of pipes, programs and libraries
/// that are there. One implementation for the real system, and one for the fakes.
namespace kessil::test {

#ifdef _WIN32
inline constexpr bool on_windows = true;
#else
inline constexpr bool on_windows = false;
#endif

/// The serving end of a pipe that platform::ConnectPipe finds, without the bounds and checks of a PipeServer.
class RawServer
{
public:
    explicit RawServer(const WideString &name);
    ~RawServer();
    RawServer(const RawServer &) = delete;
    RawServer &operator=(const RawServer &) = delete;

    /// Takes the client that has connected.
    void Accept();
    void Write(const std::string &bytes);
    /// Makes the client's read return nothing, while this end still holds the pipe.
    void EndStream();
    void Close();

private:
    struct Native;
    std::unique_ptr<Native> m_native;
};

/// A client, in this process, of a pipe that platform::CreatePipeServer made.
class PipeClient
{
public:
    /// Waits for the pipe for a while when `patient`, and else hardly at all.
    explicit PipeClient(const WideString &name, bool patient = true);
    ~PipeClient();
    PipeClient(const PipeClient &) = delete;
    PipeClient &operator=(const PipeClient &) = delete;

    /// Whether there was such a pipe for it.
    bool IsConnected() const;

    void Write(const std::string &bytes);

    /// One byte that the server has written, waiting for it; empty when the server has closed the pipe.
    std::string ReadByte();

    void Leave();

private:
    struct Native;
    std::unique_ptr<Native> m_native;
};

/// The number that the system knows this process by.
std::uint32_t OwnProcessId();

/// The path of the program that the suites start: child.cpp, or a fake of what it does.
WideString ChildProgram();

/// The path of a library of tests/targets, or of a fake with the same exports. `plain`, `first_answer`,
/// `second_answer`, `null_write` and `throws_own` are there, and whatever else a suite of the real system names.
WideString TargetLibrary(const std::string &name);

/// The path of a file with the messages of tests/targets/messages, or of a fake with the same.
WideString MessageFile();

/// The path of the test program itself.
std::filesystem::path OwnProgram();

/// Sends this process's standard output to a file for as long as it lives.
class RedirectedOutput
{
public:
    explicit RedirectedOutput(const std::string &path);
    ~RedirectedOutput();
    RedirectedOutput(const RedirectedOutput &) = delete;
    RedirectedOutput &operator=(const RedirectedOutput &) = delete;

private:
    std::uint64_t m_kept;
};

/// An open descriptor with these bytes to read.
class Input
{
public:
    explicit Input(const std::string &bytes);
    ~Input();
    Input(const Input &) = delete;
    Input &operator=(const Input &) = delete;

    int Descriptor() const { return m_descriptor; }

private:
    int m_descriptor = -1;
};

/// The arguments of one call of platform::EndWithin.
struct Ending
{
    std::uint32_t milliseconds;
    int exit_code;
};

/// The exit code of a process that makes these calls and hangs then.
std::uint32_t ExitCodeOfAHangingProcess(const std::vector<Ending> &calls);

} // namespace kessil::test
