#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <string>

namespace kessil::kessilctl {

/// Shows how far a long task is: on a terminal a bar that stays in its line, anywhere else a line now and then.
class Progress
{
public:
    using Clock = std::chrono::steady_clock;

    /// `columns` is the width of the terminal, 0 for anything else. `now` is the task's beginning.
    Progress(std::ostream &stream, unsigned columns, std::string verb, std::uint64_t total_files,
             std::uint64_t total_bytes, Clock::time_point now);

    /// Clears the bar that an early end left standing.
    ~Progress() { MakeRoom(); }
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    /// To be told often; shows something only when it is time.
    void Advance(std::uint64_t files, std::uint64_t bytes, Clock::time_point now);

    /// Clears the line that the bar stands in, so that something else can be written; the bar comes back with Advance.
    void MakeRoom();

    /// The last word: shows where it came to.
    void Finish(std::uint64_t files, std::uint64_t bytes, Clock::time_point now);

private:
    void Show(std::uint64_t files, std::uint64_t bytes, Clock::time_point now);

    std::ostream &m_stream;
    unsigned m_columns;
    std::string m_verb;
    std::uint64_t m_total_files;
    std::uint64_t m_total_bytes;
    Clock::time_point m_start;
    Clock::time_point m_next;
    bool m_bar_shown = false;
};

/// "1.5 MB": powers of 1000, three digits at most.
std::string ReadableSize(double bytes);

/// "1:05" or "2:03:04".
std::string ReadableTime(std::chrono::seconds time);

} // namespace kessil::kessilctl
