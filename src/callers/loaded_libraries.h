#pragma once

#include "platform/module.h"
#include "platform/text.h"

#include <map>

namespace kessil {

class CIPCCommunication;

/// Runs after every successful load, with the name as the parent sent it.
using AfterLoadHook = void (*)(CIPCCommunication &channel, const WideString &name, platform::ModuleHandle module);

/// The libraries that a caller owns, each under exactly the name that the parent gave. Names are ordered by their
/// 16-bit units, and a prefix comes first. The destructor releases what is left.
class LoadedLibraries
{
public:
    LoadedLibraries() = default;
    ~LoadedLibraries() { ReleaseAll(); }
    LoadedLibraries(const LoadedLibraries &) = delete;
    LoadedLibraries &operator=(const LoadedLibraries &) = delete;

    /// Releases the library of that name, if there is one, and loads it again. Null on failure, with the reason as the
    /// thread's last error. The user of this class reports the outcome and then enters the module.
    platform::ModuleHandle Replace(const WideString &name);

    /// Takes ownership of a module that Replace returned.
    void Enter(const WideString &name, platform::ModuleHandle module) { m_modules.emplace(name, module); }

    /// The library of that name, for an empty name the first; null when there is none.
    platform::ModuleHandle Find(const WideString &name) const;

    /// Releases all, in the order of their names. A library leaves the table before its own code runs, so after a fault
    /// in that code another call releases the rest. May be called after a fault.
    void ReleaseAll();

private:
    using Modules = std::map<WideString, platform::ModuleHandle>;
    void Release(Modules::iterator library);

    Modules m_modules;
};

} // namespace kessil
