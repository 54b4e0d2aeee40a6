#pragma once

#include "parent/session/session.h"

namespace kessil::parent {

/// The answer of one call by command: its bytes, and how the request ended. Once it has ended, Receive and Peek return
/// false, and it can't be ended another way.
class CommandSource
{
public:
    explicit CommandSource(Session &session) : m_session(session) {}

    bool Ended() const { return m_end.has_value(); }

    /// Waits for exactly as many bytes as `place` has room for.
    bool Receive(std::span<unsigned char> place);

    /// Waits for the next bytes, which the next Receive returns again.
    bool Peek(std::size_t size, std::span<const unsigned char> &bytes);

    /// Ends the request, since the helper sent this.
    void EndBroken(const std::string &sent);

    void End(Result result);

    /// How the request ended. One that has not ended is answered, if no more bytes follow.
    Result TakeResult();

private:
    Session &m_session;
    std::optional<Result> m_end;
};

} // namespace kessil::parent
