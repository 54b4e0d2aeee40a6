#include "kessilctl/disk/adapter_job.h"

#include "kessilctl/console/local_path.h"
#include "kessilctl/helper/helper_requests.h"
#include "platform/wipe.h"

#include <ostream>

namespace kessil::kessilctl {

using parent::Adapter;

AdapterJob::AdapterJob(const Command &asked, parent::Helper &helper, const Interruption &interruption, Report &filled,
                       const Screen &shown)
    : command(asked), report(filled), result(filled.adapter.value()), screen(shown), m_helper(helper),
      m_interruption(interruption),
      m_adapter(helper, {LimitOf(asked), [this](std::uint8_t level, std::string_view text) { TakeLine(level, text); }})
{
    Require(m_adapter.Load(LibraryName(command.library)));
}

void AdapterJob::GiveCredentials(Password &password)
{
    if (!command.adapter.credentials)
        return;
    Ask([&](Adapter &adapter) {
        std::string second = platform::ToUtf8(password.Text());
        password.Forget();
        parent::Answer answer = adapter.CreateCredentials(*command.adapter.credentials, second);
        platform::Wipe(second.data(), second.size());
        return answer;
    });
}

void AdapterJob::Check(const parent::Answer &answer)
{
    Require(answer.result);
    if (!answer)
        throw Failure(ExitCode::LibraryFailed, answer.message);
}

void AdapterJob::TakeLine(std::uint8_t level, std::string_view text)
{
    // A long task may log for hours.
    if (command.json)
        result.log.push_back({level, std::string(text)});
    if (progress)
        progress->MakeRoom();
    screen.err << "adapter, level " << +level << ": " << Printable(text) << '\n';
}

DiskAccess::DiskAccess(AdapterJob &job) : m_job(job)
{
    const AdapterCommand &asked = job.command.adapter;
    m_job.Ask([&](Adapter &adapter) { return adapter.InitVixDiskLib(asked.config, asked.lib); });
    m_begun = true;
}

DiskAccess::~DiskAccess()
{
    if (m_begun)
        m_job.CloseAnyway([](Adapter &adapter) { adapter.ExitVixDiskLib(); });
}

void DiskAccess::End()
{
    m_begun = false;
    m_job.AskUninterrupted([](Adapter &adapter) { return adapter.ExitVixDiskLib(); });
}

OpenDisk::OpenDisk(AdapterJob &job, bool read_only) : m_job(job)
{
    const AdapterCommand &asked = job.command.adapter;
    m_job.Ask([&](Adapter &adapter) { return adapter.OpenDisk(asked.machine, asked.disk, read_only); });
    m_open = true;
}

OpenDisk::~OpenDisk()
{
    if (m_open)
        m_job.CloseAnyway([](Adapter &adapter) { adapter.CloseDisk(); });
}

void OpenDisk::Read(std::uint64_t start, std::span<std::byte> sectors)
{
    m_job.Ask([&](Adapter &adapter) { return adapter.ReadSectors(start, sectors); });
}

void OpenDisk::Write(std::uint64_t start, std::span<const std::byte> sectors)
{
    m_job.Ask([&](Adapter &adapter) { return adapter.WriteSectors(start, sectors); });
}

void OpenDisk::Close()
{
    m_open = false;
    m_job.AskUninterrupted([](Adapter &adapter) { return adapter.CloseDisk(); });
}

void PerformAdapterTask(AdapterJob &job)
{
    if (job.command.task == Task::ReadDisk)
        ReadDisk(job);
    else if (job.command.task == Task::WriteDisk)
        WriteDisk(job);
    else
        ListInventory(job);
}

} // namespace kessil::kessilctl
