#include "fakes/fake_critical_section.h"

#include "platform/critical_section.h"

#include <cstdlib>

namespace kessil {

test::FakeCriticalSection test::fake_critical_section;

namespace platform {

using test::fake_critical_section;

CriticalSection::CriticalSection(std::uint32_t spin_count) : m_storage{}, m_usable(fake_critical_section.usable)
{
    fake_critical_section.spin_counts.push_back(spin_count);
}

CriticalSection::~CriticalSection()
{
    m_usable = false;
}

void CriticalSection::lock()
{
    if (!m_usable)
        return;
    ++m_storage[0];
    ++fake_critical_section.held;
    ++fake_critical_section.entered;
}

void CriticalSection::unlock()
{
    if (!m_usable)
        return;
    if (m_storage[0]-- == 0)
        std::abort();
    --fake_critical_section.held;
}

} // namespace platform
} // namespace kessil
