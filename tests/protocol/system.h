#pragma once

#include "platform/pipe_server.h"
#include "platform/process.h"
#include "platform/text.h"
#include "support/wire.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

/// What the tests of a whole helper need of the operating system beyond the platform's own functions. One
/// implementation per system.
namespace kessil::test {

#ifdef _WIN32
inline constexpr bool on_windows = true;
#else
inline constexpr bool on_windows = false;
#endif

/// The sanitizers that the helper is built with, as the compiler's option names them; empty for none.
inline constexpr std::string_view sanitizers = KESSIL_TEST_SANITIZERS;

/// No wait of a test lasts longer than this.
platform::Deadline WaitLimit();

/// The parent's end of a pipe, bare: it can also do what a correct parent never does. Every operation that runs into
/// the limit throws.
class PipeEnd
{
public:
    /// Creates the pipe, which takes one client.
    explicit PipeEnd(const WideString &name);
    ~PipeEnd();
    PipeEnd(const PipeEnd &) = delete;
    PipeEnd &operator=(const PipeEnd &) = delete;

    /// Takes the client that connects.
    void Accept();

    /// Makes a client of this process's own hold the only place in the pipe, and releases it again.
    void Occupy();
    void Vacate();

    /// At least 1 and at most `size` bytes; none when the other end is gone.
    Bytes Read(std::size_t size);

    /// False when the other end is gone.
    bool Write(const Bytes &bytes);

    /// Makes the other end's read return nothing while this end still holds the pipe and can read.
    void EndStream();

    void Close();

private:
    struct Native;
    Native *m_native;
};

/// What a process holds of the system.
struct Holdings
{
    std::uint64_t private_bytes;
    std::uint64_t handles;
};
Holdings HoldingsOf(const platform::Process &process);

/// Sends this process's standard output to a file for as long as it lives, so that a child inherits that.
class RedirectedOutput
{
public:
    explicit RedirectedOutput(const std::filesystem::path &file);
    ~RedirectedOutput();
    RedirectedOutput(const RedirectedOutput &) = delete;
    RedirectedOutput &operator=(const RedirectedOutput &) = delete;

private:
    std::uint64_t m_kept;
};

/// Occupies a section's name with another kind of object for as long as it lives.
class TakenName
{
public:
    explicit TakenName(const WideString &name);
    ~TakenName();
    TakenName(const TakenName &) = delete;
    TakenName &operator=(const TakenName &) = delete;

private:
    WideString m_name;
    std::uintptr_t m_object;
};

/// Takes the memory of a section away from everyone who has it mapped. False where the system has no such thing.
bool ShrinkSection(const WideString &name);

/// A path as programs of this build write it: on Windows with the drive that stands for the root and with backslashes.
WideString NativePath(const std::string &path);

} // namespace kessil::test
