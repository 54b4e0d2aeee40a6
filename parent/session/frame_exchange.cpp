#include "parent/session/frame_exchange.h"

#include "parent/session/message_text.h"
#include "parent/wire/big_endian.h"
#include "platform/last_error.h"

#include <limits>

namespace kessil::parent {
namespace {

using platform::PipeStatus;

constexpr std::u16string_view lookup_failure_start = u"Failed to get error message (";
constexpr const char *more_bytes = "more bytes behind its answer";
constexpr std::uint32_t refusal_mark = 0xFFFFFFFF;

} // namespace

Result FrameExchange::Run(const Request &request, const TimeLimit &limit)
{
    FrameWriter &writer = m_session.Writer();
    if (writer.HasZeroInText())
        return m_session.NotSent(request.Description() + ": a text holds a zero");
    return Run(request, limit, writer.Finish());
}

Result FrameExchange::Run(const Request &request, const TimeLimit &limit, std::span<const unsigned char> bytes)
{
    if (std::optional<Result> end = m_session.Begin(request, limit))
        return std::move(*end);
    PipeStatus status = m_session.Send(bytes);
    while (status == PipeStatus::Done) {
        Frame frame;
        status = m_session.ReceiveFrame(frame);
        if (status != PipeStatus::Done)
            break;
        if (std::optional<Result> result = HandleFrame(frame))
            return std::move(*result);
    }
    return m_session.EndByPipe(status);
}

// How the request ends by this frame; empty when it goes on.
std::optional<Result> FrameExchange::HandleFrame(const Frame &frame)
{
    if (!frame.allowed)
        return EndUnexpected(frame);
    const bool in_call = m_session.UnderWay().IsCall();
    switch (frame.type) {
    case 'S':
        if (m_session.HasMore())
            return m_session.EndBroken(more_bytes);
        return Success();
    case 'E':
        if (in_call && m_lookup_failure.empty() && KeepLookupFailure(frame))
            return std::nullopt;
        if (m_session.HasMore())
            return m_session.EndBroken(more_bytes);
        return Refusal(frame);
    case 'M':
        if (in_call && PassNotice(frame))
            return std::nullopt;
        return m_session.EndBroken("a notice that is malformed or out of place");
    default:
        if (in_call)
            return HandleAnnouncement(frame);
        return m_session.EndBroken("an announcement of a section outside a call");
    }
}

// Moves to the section that the helper has announced, or answers that this failed.
std::optional<Result> FrameExchange::HandleAnnouncement(const Frame &frame)
{
    PayloadReader payload(frame.payload);
    const auto name = payload.Wide();
    const auto size = payload.U64();
    if (!name || !size || *size == 0 || *size > largest_section)
        return m_session.EndBroken("a malformed announcement of a section");
    CallSection &section = m_session.Section();
    if (!section.IsNextName(*name))
        return m_session.EndBroken("an announcement of an unknown section " + Quoted(platform::ToUtf8(*name)));

    FrameWriter &writer = m_session.Writer();
    // The old section has to be released before the answer: the helper uses its name again.
    if (section.Open(*name, static_cast<std::uint32_t>(*size))) {
        ++m_session.Counts().sections_grown_by_helper;
        writer.Begin('S');
    } else {
        const std::uint32_t code = platform::LastError();
        writer.Begin('E').U32(refusal_mark).U32(refusal_mark).Wide(platform::FromUtf8(SystemText(code)));
    }
    const PipeStatus status = m_session.Send(writer.Finish());
    if (status != PipeStatus::Done)
        return m_session.EndByPipe(status);
    return std::nullopt;
}

bool FrameExchange::PassNotice(const Frame &frame)
{
    PayloadReader payload(frame.payload);
    const auto value = payload.U32();
    const auto text = payload.Wide();
    if (!value || *value > 255 || !text)
        return false;
    ++m_session.Counts().notices;
    const auto *on_log = m_session.UnderWay().on_log;
    const auto &on_notice = m_session.Settings().on_notice;
    if (on_log == nullptr && on_notice)
        on_notice(static_cast<std::uint8_t>(*value), *text);
    else if (on_log != nullptr && *on_log)
        (*on_log)(static_cast<std::uint8_t>(*value), platform::ToUtf8(*text));
    return true;
}

bool FrameExchange::KeepLookupFailure(const Frame &frame)
{
    PayloadReader payload(frame.payload);
    if (payload.U64() != std::numeric_limits<std::uint64_t>::max())
        return false;
    std::optional<WideString> text = payload.Wide();
    if (!text || !text->starts_with(lookup_failure_start))
        return false;
    m_lookup_failure = std::move(*text);
    return true;
}

Result FrameExchange::Success()
{
    Result result = m_session.Answered();
    result.text = std::move(m_lookup_failure);
    return result;
}

Result FrameExchange::Refusal(const Frame &frame)
{
    PayloadReader payload(frame.payload);
    const auto return_code = payload.U32();
    const auto system_error = payload.U32();
    auto text = payload.Wide();
    if (!return_code || !system_error || !text)
        return m_session.EndBroken("a malformed failure frame");
    ++m_session.Counts().refused;
    Result result = m_session.Answered();
    result.outcome = Outcome::Refused;
    result.return_code = static_cast<std::int32_t>(*return_code);
    result.system_error = static_cast<std::int32_t>(*system_error);
    result.text = std::move(*text);
    result.message = "the helper refused " + m_session.UnderWay().Description() + ": " +
                     WithoutLineEnd(platform::ToUtf8(result.text)) + " (return code " +
                     std::to_string(result.return_code) + ", system error " + std::to_string(result.system_error) + ")";
    return result;
}

// A call by command is refused by four bytes that are no frame.
Result FrameExchange::EndUnexpected(const Frame &frame)
{
    if (m_session.UnderWay().command != 0 && frame.type == '\xFF') {
        std::span<const unsigned char> bytes;
        const PipeStatus status = m_session.Peek(4, bytes);
        if (status != PipeStatus::Done)
            return m_session.EndByPipe(status);
        if (FromBigEndian(bytes) == refusal_mark) {
            unsigned char refusal[4];
            m_session.Receive(refusal);
            if (m_session.HasMore())
                return m_session.EndBroken(more_bytes);
            return m_session.Refused();
        }
    }
    return m_session.EndBroken("a frame that no helper sends (type " +
                               std::to_string(static_cast<unsigned char>(frame.type)) + ", length " +
                               std::to_string(frame.length) + ")");
}

Result Exchange(Session &session, const Request &request)
{
    return FrameExchange(session).Run(request, session.Settings().request_limit);
}

} // namespace kessil::parent
