#pragma once

#include "platform/text.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kessil::test {

/// Replaces platform/module.h: libraries are tables of exports. Each load has a handle of its own. Misuse, such as
/// freeing a module twice, aborts. `fake_module = FakeModule()` resets it.
class FakeModule
{
public:
    using Exports = std::map<std::string, void *>;

    /// Adds a library that can be loaded under that name from now on.
    void Add(const WideString &name, Exports exports) { m_libraries[name] = std::move(exports); }

    /// Removes it, so that it can't be loaded any more; existing loads stay.
    void Remove(const WideString &name) { m_libraries.erase(name); }

    std::uint32_t load_code = 126; ///< the last error after a load that failed
    WideString load_text = u"no such library\r\n";
    std::function<void(const WideString &name)> on_free; ///< the library's own termination code
    std::size_t loaded = 0;                              ///< loads not released yet

    // What platform/module.h calls.
    void *Load(const WideString &name);
    void *Find(void *module, const char *name);
    WideString Free(void *module);

private:
    struct Loaded
    {
        WideString name;
        Exports exports;
        bool in_use;
    };
    Loaded &Held(void *module);

    std::map<WideString, Exports> m_libraries;
    std::vector<Loaded> m_loads;
};

/// The handle of the n-th successful load, from 0 on.
inline void *FakeModuleHandle(std::size_t n)
{
    return reinterpret_cast<void *>(std::uintptr_t{0x3000} + n);
}

extern FakeModule fake_module;

} // namespace kessil::test
