#include "fakes/fake_process.h"

#include "platform/last_error.h"
#include "platform/process.h"

#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>

namespace kessil {

test::FakeProcess test::fake_process;

namespace platform {

using test::fake_process;

struct Process
{
    std::uint32_t id;
    test::FakeRun run;
};

namespace {

std::mutex mutex;
std::condition_variable ended;

bool IsDirectory(const WideString &path)
{
    std::error_code ignored;
    return std::filesystem::is_directory(std::filesystem::path(path), ignored);
}

} // namespace

Process *StartProcess(const WideString &program, const std::vector<WideString> &arguments,
                      const WideString &working_directory)
{
    const auto found = fake_process.programs.find(program);
    std::uint32_t code = fake_process.start_code;
    if (code == 0 &&
        (found == fake_process.programs.end() || (!working_directory.empty() && !IsDirectory(working_directory))))
        code = fake_process.missing_code;
    fake_process.starts.push_back({fake_process.next_id++, arguments, working_directory});
    if (code != 0) {
        SetLastError(code);
        return nullptr;
    }
    ++fake_process.held;
    const test::FakeStart &start = fake_process.starts.back();
    return new Process{start.process_id, found->second(start)};
}

std::uint32_t ProcessId(const Process &process)
{
    return process.id;
}

bool WaitForProcess(Process &process, Deadline deadline, std::uint32_t &exit_code)
{
    std::unique_lock lock(mutex);
    const auto longest = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    const auto has_ended = [&process] { return process.run.exit_code.has_value(); };
    if (fake_process.waits && !ended.wait_until(lock, std::min(deadline, longest), has_ended) && longest < deadline)
        std::abort();
    if (has_ended())
        exit_code = *process.run.exit_code;
    return has_ended();
}

void KillProcess(Process &process)
{
    std::function<void()> on_death;
    {
        const std::lock_guard lock(mutex);
        if (process.run.exit_code)
            return;
        ++fake_process.kills;
        if (!process.run.dies)
            return;
        process.run.exit_code = fake_process.killed_code;
        on_death = std::move(process.run.on_death);
        ended.notify_all();
    }
    if (on_death)
        on_death();
}

void ReleaseProcess(Process *process)
{
    if (process == nullptr)
        return;
    KillProcess(*process);
    --fake_process.held;
    delete process;
}

} // namespace platform
} // namespace kessil
