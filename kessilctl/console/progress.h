#pragma once

#include "kessilctl/console/console.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace kessil::kessilctl {

/// Shows how far a long job is: on a terminal a bar that is redrawn in place, elsewhere a line every two seconds.
class Progress
{
public:
    using Clock = std::chrono::steady_clock;

    /// Shown on `console`, which has one at a time and outlives it. `now` is when the job begins.
    Progress(Console &console, std::string verb, std::uint64_t total_files, std::uint64_t total_bytes,
             Clock::time_point now);

    /// Clears the bar if the job ended early.
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    /// May be called often; draws only when it is time. `files` and `bytes` are those done so far.
    void Advance(std::uint64_t files, std::uint64_t bytes, Clock::time_point now);

    /// Clears the bar's line, so that something else can be written there. Advance draws the bar again.
    void ClearBar();

    /// Draws the final state and ends the bar's line.
    void Finish(std::uint64_t files, std::uint64_t bytes, Clock::time_point now);

private:
    void Draw(std::uint64_t files, std::uint64_t bytes, Clock::time_point now);

    Console &m_console;
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
