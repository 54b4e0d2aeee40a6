#pragma once

#include "platform/process.h"

#include <atomic>
#include <chrono>
#include <optional>

namespace kessil::parent {

/// The helper's process. For one thread, except Kill. The destructor kills a process that still runs.
class HelperProcess
{
public:
    HelperProcess() = default;
    ~HelperProcess();
    HelperProcess(const HelperProcess &) = delete;
    HelperProcess &operator=(const HelperProcess &) = delete;

    /// Once only. False on failure, with the reason in the last error.
    bool Start(const WideString &program, const std::vector<WideString> &arguments,
               const WideString &working_directory);

    bool Started() const { return m_process != nullptr; }

    /// 0 before Start.
    std::uint32_t Id() const;

    /// Waits for the process, which has been started, to end. Its exit code; empty when it still runs at the deadline.
    std::optional<std::uint32_t> WaitForExit(platform::Deadline deadline);
    std::optional<std::uint32_t> WaitForExit(std::chrono::milliseconds limit);

    /// Ends the process at once; does nothing when there is none. May be called from any thread, and on Linux from a
    /// signal handler.
    void Kill() noexcept;

private:
    std::atomic<platform::Process *> m_process{nullptr};
    std::atomic<int> m_killers{0};
};

} // namespace kessil::parent
