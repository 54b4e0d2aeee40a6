#include "callers/loaded_libraries.h"

namespace kessil {

platform::ModuleHandle LoadedLibraries::Replace(const WideString &name)
{
    if (const auto loaded = m_modules.find(name); loaded != m_modules.end())
        Release(loaded);
    return platform::LoadModule(name);
}

platform::ModuleHandle LoadedLibraries::Find(const WideString &name) const
{
    const auto library = name.empty() ? m_modules.begin() : m_modules.find(name);
    return library == m_modules.end() ? nullptr : library->second;
}

void LoadedLibraries::ReleaseAll()
{
    while (!m_modules.empty())
        Release(m_modules.begin());
}

void LoadedLibraries::Release(Modules::iterator library)
{
    platform::ModuleHandle const module = library->second;
    m_modules.erase(library);
    platform::FreeModule(module);
}

} // namespace kessil
