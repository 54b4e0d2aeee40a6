#include "parent/session/session.h"

#include "parent/session/message_text.h"
#include "platform/last_error.h"

#include <thread>

namespace kessil::parent {
namespace {

using platform::Deadline;
using platform::PipeStatus;

// How long a helper whose pipe broke may take to end: it gives itself two seconds after a fault.
constexpr std::chrono::seconds exit_limit(5);

constexpr std::uint32_t exit_code_of_unknown_request = 1;

} // namespace

Session::Session(Options options) : m_options(std::move(options)), m_log(m_options.log_file) {}

Session::~Session()
{
    if (Running())
        End({.outcome = Outcome::Cancelled});
    while (m_cancellers != 0)
        std::this_thread::yield();
}

Result Session::Start()
{
    if (m_state != State::NotStarted)
        return NotSent("the helper was started before");
    m_timer.Start({});
    HelperStart start(m_options, m_log.Path(), m_connection, m_process, m_cancelled);
    std::optional<Ending> ending = start.Run();
    m_counts.rejected_clients = start.RejectedClients();
    if (ending)
        return End(std::move(*ending));
    m_state = State::Running;
    return Answered();
}

Result Session::Stop(std::chrono::milliseconds limit)
{
    static constexpr unsigned char orderly_stop[] = {0x66, 0x01};
    if (m_state == State::Stopped)
        return {};
    if (std::optional<Result> end = Begin({"the orderly stop", {}}, {{}, limit}))
        return std::move(*end);
    const PipeStatus status = Send(orderly_stop);
    if (status != PipeStatus::Done)
        return EndByPipe(status);
    const std::optional<std::uint32_t> code = m_process.WaitForExit(m_timer.KillAt());
    if (!code)
        return EndByPipe(PipeStatus::TimedOut);
    if (code != 0U || m_cancelled)
        return EndDead("it should have ended with exit code 0");
    const auto elapsed = m_timer.Elapsed();
    End({.outcome = Outcome::Answered, .exit_code = code});
    m_state = State::Stopped;
    return {.exit_code = code, .elapsed = elapsed};
}

void Session::Cancel() noexcept
{
    ++m_cancellers;
    m_cancelled = true;
    m_connection.Interrupt();
    m_process.Kill();
    --m_cancellers;
}

std::optional<Result> Session::Begin(const Request &request, const TimeLimit &limit)
{
    if (!Running())
        return NotSent(not_running);
    m_request = request;
    m_timer.Start(limit);
    return std::nullopt;
}

PipeStatus Session::Send(std::span<const unsigned char> bytes)
{
    return m_connection.Write(bytes, m_timer.KillAt());
}

PipeStatus Session::Receive(std::span<unsigned char> place)
{
    std::size_t done = 0;
    return Await([&](Deadline deadline) { return m_connection.ReadBytes(place, done, deadline); });
}

PipeStatus Session::Peek(std::size_t size, std::span<const unsigned char> &bytes)
{
    return Await([&](Deadline deadline) { return m_connection.Peek(size, bytes, deadline); });
}

PipeStatus Session::ReceiveFrame(Frame &frame)
{
    return Await([&](Deadline deadline) { return m_connection.ReadFrame(frame, deadline); });
}

// Waits by `read`, which takes a deadline and continues where it stopped, and gives the warning when it is due.
template <class Read>
PipeStatus Session::Await(Read read)
{
    if (m_timer.HasWarning()) {
        const PipeStatus status = read(m_timer.WarnAt());
        if (status != PipeStatus::TimedOut)
            return status;
        m_timer.SetWarned();
        if (m_options.on_slow) {
            const std::string description = m_request.Description();
            m_options.on_slow({description, std::chrono::duration_cast<std::chrono::milliseconds>(m_timer.Elapsed()),
                               m_timer.Limit().kill_after});
        }
    }
    return read(m_timer.KillAt());
}

Result Session::Answered() const
{
    return {.elapsed = m_timer.Elapsed()};
}

Result Session::NotSent(std::string reason) const
{
    if (m_state == State::Over)
        return m_end;
    return {.outcome = Outcome::NotSent, .message = std::move(reason), .text = {}, .exit_code = std::nullopt};
}

std::string Session::CountRefusal()
{
    ++m_counts.refused;
    return "the helper refused " + m_request.Description() +
           (m_request.IsCall() ? ", a function that the library doesn't have" : ", for a reason that its log may show");
}

Result Session::Refused()
{
    const std::string message = CountRefusal();
    return {.outcome = Outcome::Refused,
            .message = message + LogTail(),
            .text = {},
            .exit_code = std::nullopt,
            .elapsed = m_timer.Elapsed()};
}

Result Session::EndRefused()
{
    return End({Outcome::Refused, CountRefusal() + ", and took the arguments for requests, so it was ended"});
}

Result Session::EndRefusedOrDead()
{
    if (m_process.WaitForExit(exit_limit) != exit_code_of_unknown_request)
        return EndDead({});
    return EndRefused();
}

Result Session::EndByPipe(PipeStatus status)
{
    switch (status) {
    case PipeStatus::TimedOut:
        return End({Outcome::Hung, "the helper hung in " + m_request.Description() + ": no answer within " +
                                       Printed(m_timer.Limit().kill_after) + ", so it was killed"});
    case PipeStatus::Failed:
        return EndDead("its pipe failed: " + SystemText(platform::LastError()));
    default:
        return EndDead({});
    }
}

Result Session::EndDead(const std::string &reason)
{
    std::string message =
        "the helper died in " + m_request.Description() + ", " + Printed(m_timer.Elapsed()) + " after the request, ";
    const std::optional<std::uint32_t> code = m_process.WaitForExit(exit_limit);
    message +=
        code ? "exit code " + std::to_string(*code) : "its pipe closed and the process still running, so it was killed";
    if (code == 0U && m_request.IsCall())
        message += " (an exception or a fault inside the library ends it so)";
    if (!reason.empty())
        message += "; " + reason;
    return End({Outcome::Died, std::move(message), code});
}

Result Session::EndBroken(const std::string &sent)
{
    return End({Outcome::BrokenProtocol,
                "the helper broke the protocol in " + m_request.Description() + " and was killed: it sent " + sent});
}

Result Session::EndByResults(std::string_view reason)
{
    if (!Running())
        return NotSent(not_running);
    m_timer.Start({});
    return End({Outcome::BrokenProtocol, "the helper broke the protocol and was killed: " + std::string(reason)});
}

// Ends the helper and releases everything kept for it.
Result Session::End(Ending ending)
{
    const auto elapsed = m_timer.Elapsed();
    if (m_process.Started()) {
        m_process.Kill();
        m_process.WaitForExit(exit_limit);
    }
    m_connection.Close();
    m_section.Release();

    if (m_cancelled && ending.outcome != Outcome::Answered)
        ending = {Outcome::Cancelled, "cancelled: " + ending.message};
    if (ending.outcome != Outcome::Answered)
        ending.message += LogTail();
    m_state = State::Over;
    m_end = {.outcome = ending.outcome,
             .message = std::move(ending.message),
             .text = {},
             .exit_code = ending.exit_code,
             .elapsed = elapsed};
    return m_end;
}

std::string Session::LogTail() const
{
    const std::string tail = m_log.Tail();
    return tail.empty() ? tail : "; the last lines of its log " + Printed(m_log.Path()) + ':' + tail;
}

std::u16string_view Session::AdapterName() const
{
    return m_adapters.empty() ? std::u16string_view() : std::u16string_view(*m_adapters.begin());
}

Statistics Session::Figures() const
{
    Statistics figures = m_counts;
    figures.section_size = m_section.Memory().Size();
    figures.result_bytes = m_section.Results().BytesRead();
    figures.pipe_bytes_sent = m_connection.BytesSent();
    figures.pipe_bytes_received = m_connection.BytesReceived();
    return figures;
}

} // namespace kessil::parent
