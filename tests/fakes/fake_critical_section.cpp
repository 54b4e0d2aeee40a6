#include "fakes/fake_critical_section.h"

#include "platform/critical_section.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>

namespace kessil {

test::FakeCriticalSection test::fake_critical_section;

namespace platform {

using test::fake_critical_section;

namespace {

struct Lock
{
    std::mutex mutex;
    std::atomic<bool> held = false;
};

Lock &In(unsigned char *storage)
{
    return *std::launder(reinterpret_cast<Lock *>(storage));
}

} // namespace

CriticalSection::CriticalSection(std::uint32_t spin_count) : m_storage{}, m_usable(fake_critical_section.usable)
{
    static_assert(sizeof(Lock) <= sizeof m_storage && alignof(Lock) <= 8);
    ::new (m_storage) Lock;
    fake_critical_section.spin_counts.push_back(spin_count);
}

CriticalSection::~CriticalSection()
{
    m_usable = false;
    In(m_storage).~Lock();
}

void CriticalSection::lock()
{
    if (!m_usable)
        return;
    In(m_storage).mutex.lock();
    In(m_storage).held = true;
    ++std::atomic_ref(fake_critical_section.held);
    ++std::atomic_ref(fake_critical_section.entered);
}

void CriticalSection::unlock()
{
    if (!m_usable)
        return;
    if (!In(m_storage).held.exchange(false))
        std::abort();
    --std::atomic_ref(fake_critical_section.held);
    In(m_storage).mutex.unlock();
}

} // namespace platform
} // namespace kessil
