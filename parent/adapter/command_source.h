#pragma once

#include "parent/session/session.h"

namespace kessil::parent {

/// The request of one call by command while it is under way: the bytes of its answer, and how it has ended. Once it has
/// ended, every function does nothing; those that return bool return false.
class CommandSource
{
public:
    explicit CommandSource(Session &session) : m_session(session) {}

    bool Ended() const { return m_end.has_value(); }

    /// Waits for exactly as many bytes as `place` has room for.
    bool Receive(std::span<unsigned char> place);

    /// Waits for the next bytes, which the next Receive returns again.
    bool Peek(std::size_t size, std::span<const unsigned char> &bytes);

    /// Waits as Receive does, and leaves it to the caller what to make of a status other than Done.
    platform::PipeStatus TryReceive(std::span<unsigned char> place) { return m_session.Receive(place); }

    /// Ends the request, since the helper sent this.
    void EndBroken(const std::string &sent);

    void End(Result result);

    /// How the request ended. One that has not ended yet is answered, and must have no more bytes behind its answer.
    Result TakeResult();

private:
    Session &m_session;
    std::optional<Result> m_end;
};

} // namespace kessil::parent
