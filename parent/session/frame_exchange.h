#pragma once

#include "parent/session/session.h"

namespace kessil::parent {

/// One request that is answered by a frame: an 'S' frame (success), or an 'E' frame (4 bytes return code, 4 bytes
/// system error, a wide text). In a call the helper may send first, any number of times,
///
///     'M'    4 bytes value, at most 255, and a wide text: a notice, which is passed on
///     'R'    wide name, 8 bytes size: the section that it has made for results that don't fit. It is opened and
///            answered by a frame 'S', or 'E' when that failed
///     'E'    once, with -1, -1 and a text that begins "Failed to get error message (": the library's function failed
///            and gave no error text. The rest of the answer follows
class FrameExchange
{
public:
    explicit FrameExchange(Session &session) : m_session(session) {}

    /// Sends these bytes and waits for the final answer.
    Result Run(const Request &request, const TimeLimit &limit, std::span<const unsigned char> bytes);

    /// The same with the frame that Session::Writer holds.
    Result Run(const Request &request, const TimeLimit &limit);

private:
    std::optional<Result> HandleFrame(const Frame &frame);
    std::optional<Result> HandleAnnouncement(const Frame &frame);
    bool PassNotice(const Frame &frame);
    bool KeepLookupFailure(const Frame &frame);
    Result Success();
    Result Refusal(const Frame &frame);
    Result EndUnexpected(const Frame &frame);

    Session &m_session;
    WideString m_lookup_failure; ///< of a call whose library gave no error text
};

/// A request by the frame that Session::Writer holds, within Options::request_limit.
Result Exchange(Session &session, const Request &request);

} // namespace kessil::parent
