#pragma once

#include "platform/pipe.h"
#include "platform/pipe_server.h"
#include "platform/text.h"

#include <cstdint>
#include <string>

/// What the tests of the platform need of the operating system beyond the platform's own functions. One
/// implementation per system.
namespace kessil::test {

#ifdef _WIN32
inline constexpr bool on_windows = true;
#else
inline constexpr bool on_windows = false;
#endif

std::uint32_t OwnProcessId();

/// A handle or descriptor of this process that children would inherit if they weren't kept from it; closed at the end
/// of its life. The child is told its number.
class InheritableHandle
{
public:
    InheritableHandle();
    ~InheritableHandle();
    InheritableHandle(const InheritableHandle &) = delete;
    InheritableHandle &operator=(const InheritableHandle &) = delete;

    std::uint64_t Number() const { return m_number; }

private:
    std::uint64_t m_number;
};

/// Whether that number stands for an open handle or descriptor in this process.
bool IsOpen(std::uint64_t number);

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

/// Takes this process's standard input away for as long as it lives.
class NoInput
{
public:
    NoInput();
    ~NoInput();
    NoInput(const NoInput &) = delete;
    NoInput &operator=(const NoInput &) = delete;

private:
    std::uint64_t m_kept;
};

/// The serving end of a pipe, without the bounds and checks of a PipeServer.
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
    WideString m_name;
    std::uint64_t m_listener;
    std::uint64_t m_client;
};

#ifdef _WIN32
/// Ends the calling thread and no other.
[[noreturn]] void EndThisThread(std::uint32_t exit_code);
#endif

/// Sets a variable of the environment that children and library searches see.
void SetVariable(const std::string &name, const std::string &value);

} // namespace kessil::test
