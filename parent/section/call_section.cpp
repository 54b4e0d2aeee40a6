#include "parent/section/call_section.h"

#include <utility>

namespace kessil::parent {

void CallSection::Use(SharedSection section, const WideString &name)
{
    m_memory = std::move(section);
    m_name = name;
}

bool CallSection::IsNextName(const WideString &name) const
{
    return name == ToggledName(m_name);
}

bool CallSection::Open(const WideString &name, std::uint32_t size)
{
    m_name = name;
    SharedSection opened = SharedSection::Open(name, size);
    platform::RemoveSectionName(name);
    m_memory = std::move(opened);
    return m_memory.View() != nullptr;
}

// A helper that was killed while it replaced the section may have left the name that it had just made.
void CallSection::Release()
{
    m_memory = {};
    m_arguments.Discard();
    m_results.SetPresent(false);
    if (m_name.empty())
        return;
    platform::RemoveSectionName(m_name);
    platform::RemoveSectionName(ToggledName(m_name));
    m_name.clear();
}

} // namespace kessil::parent
