#pragma once

#include "platform/pipe_server.h"

#include <kessil/parent.h>

namespace kessil::parent {

/// When the request under way was sent, and how long it may take.
class RequestTimer
{
public:
    using Clock = std::chrono::steady_clock;

    /// Begins a request now.
    void Start(const TimeLimit &limit);

    std::chrono::microseconds Elapsed() const;
    const TimeLimit &Limit() const { return m_limit; }

    /// Whether a warning is still to be given before the request is ended.
    bool HasWarning() const { return !m_warned && m_warn_at < m_kill_at; }
    void SetWarned() { m_warned = true; }

    platform::Deadline WarnAt() const { return m_warn_at; }

    /// Deadline::max() without a limit.
    platform::Deadline KillAt() const { return m_kill_at; }

private:
    Clock::time_point m_sent_at{};
    TimeLimit m_limit;
    bool m_warned = false;
    platform::Deadline m_warn_at{};
    platform::Deadline m_kill_at{};
};

} // namespace kessil::parent
