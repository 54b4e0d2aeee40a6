#pragma once

#include "platform/text.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// The environment of the platform's functions in a suite: the far ends of pipes, and the programs and libraries that
/// exist. One implementation for the real system, and one for the fakes.
namespace kessil::test {

#ifdef _WIN32
inline constexpr bool on_windows = true;
#else
inline constexpr bool on_windows = false;
#endif

/// The serving end of a pipe that platform::ConnectPipe connects to, without the limits and checks of a PipeServer.
class RawServer
{
public:
    explicit RawServer(const WideString &name);
    ~RawServer();
    RawServer(const RawServer &) = delete;
    RawServer &operator=(const RawServer &) = delete;

    /// Accepts the client that has connected.
    void Accept();
    void Write(const std::string &bytes);
    /// Makes the client's read return zero bytes while this end still holds the pipe.
    void EndStream();
    void Close();

private:
    struct Native;
    std::unique_ptr<Native> m_native;
};

/// A client, in this process, of a pipe that platform::CreatePipeServer created.
class PipeClient
{
public:
    /// Waits some time for the pipe when `patient`, otherwise hardly any.
    explicit PipeClient(const WideString &name, bool patient = true);
    ~PipeClient();
    PipeClient(const PipeClient &) = delete;
    PipeClient &operator=(const PipeClient &) = delete;

    /// Whether it found such a pipe.
    bool IsConnected() const;

    void Write(const std::string &bytes);

    /// Waits for one byte that the server writes; empty when the server has closed the pipe.
    std::string ReadByte();

    void Leave();

private:
    struct Native;
    std::unique_ptr<Native> m_native;
};

/// The system's id of this process.
std::uint32_t OwnProcessId();

/// The path of the program that the suites start: child.cpp, or a fake of what it does.
WideString ChildProgram();

/// The path of a library of tests/targets, or of a fake with the same exports. `plain`, `first_answer`,
/// `second_answer`, `null_write` and `throws_own` exist, and whatever else a suite of the real system names.
WideString TargetLibrary(const std::string &name);

/// The path of a file with the messages of tests/targets/messages, or of a fake with the same messages.
WideString MessageFile();

/// The path of the test program itself.
std::filesystem::path OwnProgram();

/// Redirects this process's standard output to a file while it exists.
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

/// The exit code of a process that makes these calls and then hangs.
std::uint32_t ExitCodeOfAHangingProcess(const std::vector<Ending> &calls);

} // namespace kessil::test
