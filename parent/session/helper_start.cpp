#include "parent/session/helper_start.h"

#include "parent/session/message_text.h"
#include "parent/session/native_path.h"
#include "platform/last_error.h"

#include <algorithm>

namespace kessil::parent {
namespace {

using platform::Deadline;
using platform::PipeStatus;
using Clock = std::chrono::steady_clock;

// How often the process is checked for having ended, while it is waited for to connect.
constexpr std::chrono::milliseconds attach_slice(20);

// The helper takes the low byte of each unit of its log file's name. On a system whose file names are bytes each byte
// is passed as one unit.
[[maybe_unused]] WideString LogArgument(const std::string &native)
{
    WideString argument;
    for (const char byte : native)
        argument += static_cast<unsigned char>(byte);
    return argument;
}

[[maybe_unused]] WideString LogArgument(const std::wstring &native)
{
    return WideFrom(native);
}

} // namespace

HelperStart::HelperStart(const Options &options, const std::filesystem::path &log, Connection &connection,
                         HelperProcess &process, const std::atomic<bool> &cancelled)
    : m_options(options), m_log(log), m_connection(connection), m_process(process), m_cancelled(cancelled)
{}

std::optional<Ending> HelperStart::Run()
{
    const Deadline limit = Clock::now() + m_options.attach_limit;
    if (m_cancelled)
        return Ending{Outcome::Cancelled, "the start was cancelled"};
    m_description = "the helper " + Quoted(Printed(m_options.program));
    if (!m_connection.Create())
        return Ending{Outcome::NeverStarted, m_description + " was not started: no pipe could be made for it: " +
                                                 SystemText(platform::LastError())};

    const std::vector<WideString> arguments = Arguments();
    m_description += " (arguments:";
    for (const WideString &argument : arguments)
        m_description += ' ' + Quoted(platform::ToUtf8(argument));
    m_description += ')';

    std::error_code ignored;
    const auto program = std::filesystem::absolute(m_options.program, ignored);
    if (!m_process.Start(WideFrom(program.native()), arguments, WideFrom(m_options.working_directory.native())))
        return Ending{Outcome::NeverStarted,
                      m_description + " could not be started: " + SystemText(platform::LastError())};
    return Attach(limit);
}

std::vector<WideString> HelperStart::Arguments() const
{
    return {m_connection.Name(), u"--log_level", m_options.log_level == LogLevel::Debug ? u"debug" : u"error",
            u"--out_file", LogArgument(m_log.native())};
}

std::optional<Ending> HelperStart::Attach(Deadline limit)
{
    std::optional<std::uint32_t> exit_code;
    for (;;) {
        // A process that has ended may have connected before.
        const auto slice = Clock::now() + attach_slice;
        const PipeStatus status = m_connection.Accept(m_process.Id(), exit_code ? slice : std::min(slice, limit));
        if (status == PipeStatus::Done)
            return std::nullopt;
        if (status == PipeStatus::WrongClient) {
            ++m_rejected_clients;
            continue;
        }
        if (status == PipeStatus::Interrupted || m_cancelled)
            return Ending{Outcome::Cancelled, "the start of " + m_description + " was cancelled"};
        if (status != PipeStatus::TimedOut)
            return Ending{Outcome::NeverAttached,
                          m_description + " could not be waited for: " + SystemText(platform::LastError())};
        if (exit_code)
            return Ending{Outcome::ExitedAtOnce,
                          m_description + " ended with exit code " + std::to_string(*exit_code) +
                              " without having connected",
                          exit_code};
        exit_code = m_process.WaitForExit(Clock::now());
        if (!exit_code && Clock::now() >= limit)
            return Ending{Outcome::NeverAttached, m_description + " did not connect within " +
                                                      Printed(m_options.attach_limit) + " and was killed"};
    }
}

} // namespace kessil::parent
