#pragma once

#include <cstdint>

namespace kessil::platform {

/// A lock within this process that spins before it waits. Where the platform could not initialise it, lock and unlock
/// do nothing, and the work goes on unlocked. Its members have the names that std::lock_guard expects.
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
