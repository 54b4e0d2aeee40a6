#pragma once

#include "platform/module.h"

namespace kessil::test {

/// Whether the tests run as a Windows program under Wine. Where Wine differs from Windows, a test asks this to expect
/// what Wine does; it never skips for it.
inline bool UnderWine()
{
#ifdef _WIN32
    static const bool under_wine = [] {
        const platform::ModuleHandle system = platform::LoadModule(u"ntdll.dll");
        return system != nullptr && platform::FindExport(system, "wine_get_version") != nullptr;
    }();
    return under_wine;
#else
    return false;
#endif
}

} // namespace kessil::test
