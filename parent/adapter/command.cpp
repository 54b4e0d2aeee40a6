#include "parent/adapter/command.h"

namespace kessil::parent {
namespace {

using platform::PipeStatus;

constexpr std::int32_t yes = 1;
constexpr std::int32_t no = -1;

std::string Printed(std::uint32_t value)
{
    return std::to_string(static_cast<std::int32_t>(value));
}

} // namespace

Command::Command(CommandContext &context, int number, std::string_view name)
    : m_context(context), m_session(context.session), m_request(CommandRequest(context, number, name)),
      m_source(context.session)
{
    m_context.writer.Begin(number);
}

Command::~Command()
{
    if (m_secret)
        m_context.writer.Wipe();
}

Command &Command::U32(std::uint32_t value)
{
    m_context.writer.U32(value);
    return *this;
}

Command &Command::U64(std::uint64_t value)
{
    m_context.writer.U64(value);
    return *this;
}

Command &Command::Text(std::string_view text)
{
    return Require(text.find('\0') == text.npos, "a text holds a zero").WholeText(text);
}

Command &Command::WholeText(std::string_view text)
{
    Require(text.size() <= longest_text_argument, "a text is longer than 1024 bytes");
    if (m_fault.empty())
        m_context.writer.Text(text);
    return *this;
}

Command &Command::Block(std::span<const std::byte> data)
{
    Require(data.size() <= std::numeric_limits<std::uint32_t>::max(), "a block has 4 GiB or more");
    m_block = {reinterpret_cast<const unsigned char *>(data.data()), data.size()};
    return U32(static_cast<std::uint32_t>(data.size()));
}

Command &Command::Require(bool good, const char *reason)
{
    if (!good && m_fault.empty())
        m_fault = reason;
    return *this;
}

Command &Command::Secret()
{
    m_secret = true;
    m_context.writer.Reserve(2 * (sizeof(std::uint32_t) + longest_text_argument));
    return *this;
}

void Command::Send()
{
    if (!m_fault.empty())
        return m_source.End(m_session.NotSent(m_request.Description() + ": " + m_fault));
    if (std::optional<Result> end = CheckAdapter(m_context, m_request))
        return m_source.End(std::move(*end));
    if (std::optional<Result> end = m_session.Begin(m_request, m_context.options.limit))
        return m_source.End(std::move(*end));
    ++m_session.Counts().calls;
    if (m_sentinel)
        m_sentinel->AppendTo(m_context.writer);
    SendBytes();
}

void Command::SendBytes()
{
    PipeStatus status = m_session.Send(m_context.writer.Bytes());
    if (status == PipeStatus::Done && !m_block.empty())
        status = m_session.Send(m_block);
    if (status == PipeStatus::Done)
        return;
    // A helper that refuses a call doesn't read the arguments to their end. Its answer may have arrived.
    unsigned char first[4];
    if (status == PipeStatus::Closed && m_session.Receive(first) == PipeStatus::Done &&
        FromBigEndian(first) == failure_mark)
        return EndRefused();
    m_source.End(m_session.EndByPipe(status));
}

// With arguments, the helper now reads them as requests.
void Command::EndRefused()
{
    if (!m_source.Ended())
        m_source.End(m_context.writer.HasArguments() ? m_session.EndRefused() : m_session.Refused());
}

void Command::ReadLog()
{
    std::int32_t mark = 0;
    bool first = true;
    while (Read(mark) && mark != end_of_log) {
        if (mark == no && first)
            return EndRefused();
        if (mark != log_line_follows)
            return m_source.EndBroken("the number " + std::to_string(mark) + " in the place of a log line");
        if (!ReadLogLine())
            return;
        first = false;
    }
}

bool Command::ReadLogLine()
{
    std::uint8_t level = 0;
    if (!m_reader.LogLine(level, m_context.log_line))
        return false;
    ++m_session.Counts().notices;
    if (m_context.options.on_log)
        m_context.options.on_log(level, m_context.log_line);
    return true;
}

// What follows the mark of a failure.
void Command::ReadFailure()
{
    m_okay = false;
    m_reader.Text(m_error);
}

void Command::ReadStatus()
{
    std::int32_t status = 0;
    if (!Read(status) || status == yes)
        return;
    if (status != no)
        return m_source.EndBroken("the number " + std::to_string(status) + " in the place of a status");
    ReadFailure();
}

void Command::ReadFirstStatus()
{
    std::int32_t status = 0;
    if (!Read(status) || status == yes)
        return;
    if (status != no)
        return m_source.EndBroken("the number " + std::to_string(status) + " in the place of a status");
    // A refusal looks like the start of the adapter's own failure. But the helper then reads the arguments, whose first
    // byte is a zero, as a request, and ends.
    m_okay = false;
    unsigned char length[4];
    const PipeStatus end = m_session.Receive(length);
    if (end == PipeStatus::Closed || end == PipeStatus::Failed)
        return m_source.End(m_session.EndRefusedOrDead());
    if (end != PipeStatus::Done)
        return m_source.End(m_session.EndByPipe(end));
    m_reader.Text(static_cast<std::uint32_t>(FromBigEndian(length)), m_error);
}

void Command::ReadFirstText(std::string &text)
{
    std::uint32_t length = 0;
    if (!Read(length))
        return;
    if (length == failure_mark)
        return EndRefused();
    m_reader.Text(length, text);
}

void Command::ReadListing(std::vector<AdapterItem> &items, ItemForm form)
{
    std::uint32_t count = 0;
    if (Read(count))
        m_reader.Items(count, items, form);
}

void Command::ReadBlock(std::span<std::byte> place)
{
    std::uint32_t length = 0;
    if (!Read(length))
        return;
    if (length == failure_mark)
        return ReadFailure();
    if (length != place.size())
        return m_source.EndBroken("a block of " + std::to_string(length) + " bytes in the place of one of " +
                                  std::to_string(place.size()));
    m_source.Receive({reinterpret_cast<unsigned char *>(place.data()), place.size()});
}

Answer Command::End()
{
    return MakeAnswer(m_source.TakeResult(), m_okay, std::move(m_error), m_request);
}

Answer Command::AskStatus()
{
    Send();
    ReadLog();
    ReadStatus();
    return End();
}

Answer Command::AskListing(std::vector<AdapterItem> &items, ItemForm form)
{
    Send();
    ReadLog();
    std::uint32_t count = 0;
    if (!Read(count))
        return End();
    if (count == failure_mark)
        ReadFailure();
    else
        m_reader.Items(count, items, form);
    return End();
}

std::optional<std::uint32_t> Command::AskMarkedValue()
{
    Send();
    ReadLog();
    std::uint32_t value = 0;
    if (Read(value) && value == failure_mark)
        ReadFailure();
    return Okay() ? std::optional(value) : std::nullopt;
}

bool Command::IsIndex(std::uint32_t value)
{
    const bool index = value <= std::uint32_t{std::numeric_limits<std::int32_t>::max()};
    if (!index)
        m_source.EndBroken("the number " + Printed(value) + " in the place of a handle");
    return index;
}

bool Command::PeekSentinel()
{
    std::span<const unsigned char> start;
    return m_source.Peek(Sentinel::start_size, start) && m_sentinel->IsAnsweredBy(start);
}

void Command::SkipSentinel()
{
    if (!m_source.Ended() && !PeekSentinel())
        return m_source.EndBroken("another answer than that to the request behind the call");
    unsigned char header[frame_header_size];
    if (!m_source.Receive(header))
        return;
    std::string payload;
    const auto length = static_cast<std::uint32_t>(FromBigEndian(std::span(header).subspan(1)));
    if (m_reader.Text(length, payload) && !Sentinel::IsWellFormed(payload))
        m_source.EndBroken("a malformed failure frame");
}

std::optional<std::uint32_t> Command::AskValue()
{
    m_sentinel.emplace();
    Send();
    ReadLog();
    std::uint32_t value = 0;
    if (Read(value) && !PeekSentinel()) {
        m_okay = false;
        m_reader.Text(value, m_error);
    }
    SkipSentinel();
    return Okay() ? std::optional(value) : std::nullopt;
}

Answer Command::AskEcho(std::uint32_t value)
{
    const std::optional<std::uint32_t> echo = AskValue();
    // A failure without a text is a length of 0.
    if (echo == 0U && value != 0)
        m_okay = false;
    else if (echo && *echo != value)
        m_source.EndBroken("the number " + Printed(*echo) + " in the place of the handle that it was given");
    return End();
}

} // namespace kessil::parent
