#pragma once

#include "kessilctl/console/options.h"
#include "kessilctl/disk/hosted_adapter.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kessil::kessilctl {

/// The adapter's disk library, initialised. The destructor ends it after an error.
class DiskLibrary
{
public:
    DiskLibrary(HostedAdapter &adapter, const DiskOptions &options);
    ~DiskLibrary();
    DiskLibrary(const DiskLibrary &) = delete;
    DiskLibrary &operator=(const DiskLibrary &) = delete;

    /// Ends it. Throws Failure if that fails.
    void End();

private:
    HostedAdapter &m_adapter;
    bool m_begun = false;
};

/// A disk that is open in the adapter. The destructor closes it after an error.
class OpenDisk
{
public:
    /// `flag` is passed on to the adapter. `adapter` outlives the object.
    OpenDisk(HostedAdapter &adapter, const DiskOptions &options, bool flag);
    ~OpenDisk();
    OpenDisk(const OpenDisk &) = delete;
    OpenDisk &operator=(const OpenDisk &) = delete;

    /// Both move whole sectors, from sector `start` on.
    void Read(std::uint64_t start, std::span<std::byte> sectors);
    void Write(std::uint64_t start, std::span<const std::byte> sectors);

    /// Throws Failure if that fails.
    void Close();

private:
    HostedAdapter &m_adapter;
    bool m_open = false;
};

} // namespace kessil::kessilctl
