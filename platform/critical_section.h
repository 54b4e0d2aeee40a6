#pragma once

#include <cstdint>

namespace kessil::platform {

/// A lock between the threads of this process; it spins before it waits. If the system couldn't set it up, lock and
/// unlock do nothing and the work continues unlocked. Named as a standard lockable, for std::lock_guard.
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
