#include "kessilctl/disk/hosted_adapter.h"

#include "kessilctl/console/local_path.h"
#include "platform/wipe.h"

#include <string>

namespace kessil::kessilctl {

using parent::Adapter;

HostedAdapter::HostedAdapter(const AdapterOptions &options, const RunningHelper &running, Password &password,
                             Console &console, AdapterReport &report)
    : m_running(running), m_console(console), m_report(report),
      m_adapter(running.helper,
                {running.limit, [this](std::uint8_t level, std::string_view text) { TakeLogLine(level, text); }})
{
    Require(m_adapter.Load(LibraryName(options.library)));
    if (options.credentials)
        PassCredentials(*options.credentials, password);
}

void HostedAdapter::PassCredentials(const std::string &first, Password &password)
{
    Call([&](Adapter &adapter) {
        std::string second = platform::ToUtf8(password.Text());
        password.Clear();
        parent::Answer answer = adapter.CreateCredentials(first, second);
        platform::Wipe(second.data(), second.size());
        return answer;
    });
}

void HostedAdapter::Check(const parent::Answer &answer)
{
    Require(answer.result);
    if (!answer)
        throw Failure(ExitCode::LibraryFailed, answer.message);
}

void HostedAdapter::TakeLogLine(std::uint8_t level, std::string_view text)
{
    if (m_report.log)
        m_report.log->push_back({level, std::string(text)});
    m_console.WriteLine("adapter, level " + std::to_string(level) + ": " + Printable(text));
}

} // namespace kessil::kessilctl
