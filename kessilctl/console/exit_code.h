#pragma once

#include <stdexcept>
#include <string>

namespace kessil::kessilctl {

/// What the program ends with; --help shows the same list.
enum class ExitCode
{
    Done = 0,
    LibraryFailed = 1, ///< the library or adapter told a failure, for everything or for some of the files
    Usage = 2,
    Refused = 3,     ///< the helper refused a request: library, function or signature unknown to it
    Died = 4,        ///< the helper ended in the middle, or talked nonsense
    TimedOut = 5,    ///< a call took longer than --time-limit
    NotStarted = 6,  ///< the helper did not start or did not connect
    LocalFailed = 7, ///< a file or directory on this side couldn't be read or written
    Different = 8,   ///< restore, write-disk: what was read back, or the backup itself, isn't what it should be
    Interrupted = 130
};

/// Ends the run: `what()` says why, for a person.
class Failure : public std::runtime_error
{
public:
    Failure(ExitCode exit_code, const std::string &text) : std::runtime_error(text), m_exit_code(exit_code) {}

    ExitCode Code() const { return m_exit_code; }

private:
    ExitCode m_exit_code;
};

} // namespace kessil::kessilctl
