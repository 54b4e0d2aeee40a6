#include "platform/critical_section.h"

#include "platform/windows/native.h"

#include <new>

namespace kessil::platform {

namespace {

CRITICAL_SECTION *Native(unsigned char *storage)
{
    return std::launder(reinterpret_cast<CRITICAL_SECTION *>(storage));
}

} // namespace

CriticalSection::CriticalSection(std::uint32_t spin_count)
{
    static_assert(sizeof(CRITICAL_SECTION) <= sizeof(m_storage) && alignof(CRITICAL_SECTION) <= 8);
    m_usable = InitializeCriticalSectionAndSpinCount(::new (m_storage) CRITICAL_SECTION, spin_count) != 0;
}

CriticalSection::~CriticalSection()
{
    if (m_usable)
        DeleteCriticalSection(Native(m_storage));
}

void CriticalSection::lock()
{
    if (m_usable)
        EnterCriticalSection(Native(m_storage));
}

void CriticalSection::unlock()
{
    if (m_usable)
        LeaveCriticalSection(Native(m_storage));
}

} // namespace kessil::platform
