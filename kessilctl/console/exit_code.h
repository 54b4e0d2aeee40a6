#pragma once

#include <stdexcept>
#include <string>

namespace kessil::kessilctl {

/// The program's exit codes; --help lists them too.
enum class ExitCode
{
    Done = 0,
    LibraryFailed = 1, ///< the library or adapter reported a failure, for everything or for some of the files
    Usage = 2,
    Refused = 3,     ///< the helper refused a request: library, function or signature unknown to it
    Died = 4,        ///< the helper ended during a request, or broke the protocol
    TimedOut = 5,    ///< a call took longer than --time-limit
    NotStarted = 6,  ///< the helper did not start or did not connect
    LocalFailed = 7, ///< a file or directory on this side couldn't be read or written
    Different = 8,   ///< restore, write-disk: what was read back, or the backup itself, isn't as it was
    Interrupted = 130
};

/// Ends the run: `what()` says why, to the user.
class Failure : public std::runtime_error
{
public:
    Failure(ExitCode exit_code, const std::string &text) : std::runtime_error(text), m_exit_code(exit_code) {}

    ExitCode Code() const { return m_exit_code; }

private:
    ExitCode m_exit_code;
};

} // namespace kessil::kessilctl
