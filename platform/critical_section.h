#pragma once

#include <cstdint>

namespace kessil::platform {

/// A lock of this process that spins before it waits. Where the platform could not set it up, Enter and Leave do
/// nothing, so that the work goes on unlocked. Has the names of a standard lockable, for std::lock_guard.
class CriticalSection
{
public:
    explicit CriticalSection(std::uint32_t spin_count);
    ~CriticalSection();
    CriticalSection(const CriticalSection &) = delete;
    CriticalSection &operator=(const CriticalSection &) = delete;

    void lock();
    void unlock();

private:
    alignas(8) unsigned char m_storage[64];
    bool m_usable;
};

} // namespace kessil::platform
