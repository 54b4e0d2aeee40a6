#include "parent/session/helper_process.h"

#include <thread>

namespace kessil::parent {

HelperProcess::~HelperProcess()
{
    platform::Process *process = m_process.exchange(nullptr);
    while (m_killers != 0)
        std::this_thread::yield();
    platform::ReleaseProcess(process);
}

bool HelperProcess::Start(const WideString &program, const std::vector<WideString> &arguments,
                          const WideString &working_directory)
{
    m_process = platform::StartProcess(program, arguments, working_directory);
    return Started();
}

std::uint32_t HelperProcess::Id() const
{
    const platform::Process *process = m_process;
    return process == nullptr ? 0 : platform::ProcessId(*process);
}

std::optional<std::uint32_t> HelperProcess::WaitForExit(platform::Deadline deadline)
{
    std::uint32_t code = 0;
    if (!platform::WaitForProcess(*m_process, deadline, code))
        return std::nullopt;
    return code;
}

std::optional<std::uint32_t> HelperProcess::WaitForExit(std::chrono::milliseconds limit)
{
    return WaitForExit(std::chrono::steady_clock::now() + limit);
}

void HelperProcess::Kill() noexcept
{
    ++m_killers;
    if (platform::Process *process = m_process)
        platform::KillProcess(*process);
    --m_killers;
}

} // namespace kessil::parent
