#include "parent/session/request_timer.h"

namespace kessil::parent {
namespace {

platform::Deadline After(RequestTimer::Clock::time_point start, std::chrono::milliseconds limit)
{
    return limit.count() <= 0 ? platform::Deadline::max() : start + limit;
}

} // namespace

void RequestTimer::Start(const TimeLimit &limit)
{
    m_sent_at = Clock::now();
    m_limit = limit;
    m_warned = false;
    m_warn_at = After(m_sent_at, limit.warn_after);
    m_kill_at = After(m_sent_at, limit.kill_after);
}

std::chrono::microseconds RequestTimer::Elapsed() const
{
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - m_sent_at);
}

} // namespace kessil::parent
