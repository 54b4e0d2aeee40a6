#include "platform/critical_section.h"

#include <new>
#include <pthread.h>

namespace kessil::platform {
namespace {

pthread_mutex_t *Mutex(unsigned char *storage)
{
    return std::launder(reinterpret_cast<pthread_mutex_t *>(storage));
}

} // namespace

// The C library decides how long an adaptive mutex spins.
CriticalSection::CriticalSection(std::uint32_t /*spin_count*/)
{
    static_assert(sizeof(pthread_mutex_t) <= sizeof m_storage && alignof(pthread_mutex_t) <= 8);
    auto *const mutex = ::new (m_storage) pthread_mutex_t;
    pthread_mutexattr_t attributes;
    m_usable = pthread_mutexattr_init(&attributes) == 0;
    if (!m_usable)
        return;
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ADAPTIVE_NP);
    m_usable = pthread_mutex_init(mutex, &attributes) == 0;
    pthread_mutexattr_destroy(&attributes);
}

CriticalSection::~CriticalSection()
{
    if (m_usable)
        pthread_mutex_destroy(Mutex(m_storage));
}

void CriticalSection::lock()
{
    if (m_usable)
        pthread_mutex_lock(Mutex(m_storage));
}

void CriticalSection::unlock()
{
    if (m_usable)
        pthread_mutex_unlock(Mutex(m_storage));
}

} // namespace kessil::platform
