#include "kessilctl/disk/open_disk.h"

namespace kessil::kessilctl {

using parent::Adapter;

DiskLibrary::DiskLibrary(HostedAdapter &adapter, const DiskOptions &options) : m_adapter(adapter)
{
    m_adapter.Call([&](Adapter &called) { return called.InitVixDiskLib(options.config, options.lib); });
    m_begun = true;
}

DiskLibrary::~DiskLibrary()
{
    if (m_begun)
        m_adapter.CloseAfterError([](Adapter &called) { called.ExitVixDiskLib(); });
}

void DiskLibrary::End()
{
    m_begun = false;
    m_adapter.CallUninterrupted([](Adapter &called) { return called.ExitVixDiskLib(); });
}

OpenDisk::OpenDisk(HostedAdapter &adapter, const DiskOptions &options, bool flag) : m_adapter(adapter)
{
    m_adapter.Call([&](Adapter &called) { return called.OpenDisk(options.machine, options.disk, flag); });
    m_open = true;
}

OpenDisk::~OpenDisk()
{
    if (m_open)
        m_adapter.CloseAfterError([](Adapter &called) { called.CloseDisk(); });
}

void OpenDisk::Read(std::uint64_t start, std::span<std::byte> sectors)
{
    m_adapter.Call([&](Adapter &called) { return called.ReadSectors(start, sectors); });
}

void OpenDisk::Write(std::uint64_t start, std::span<const std::byte> sectors)
{
    m_adapter.Call([&](Adapter &called) { return called.WriteSectors(start, sectors); });
}

void OpenDisk::Close()
{
    m_open = false;
    m_adapter.CallUninterrupted([](Adapter &called) { return called.CloseDisk(); });
}

} // namespace kessil::kessilctl
