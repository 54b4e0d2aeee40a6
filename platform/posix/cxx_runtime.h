#pragma once

#include <string>

namespace kessil::platform::posix {

/// Loads the C++ run-time library that a library needs, itself or through others, into a scope of its own, ahead of the
/// library; it stays for the life of the process. Without this, the library that brings the run-time library in is
/// first in the scope in which that is bound: the run-time library takes inline functions and templates from it
/// instead of its own, and since the run-time library is never unloaded, neither is the other.
///
/// `library` is a path with a '/', or a name for the dynamic linker to find. For one that needs no C++ run-time
/// library, nothing is loaded. A failure has no effect: loading the library itself will report it. Clears the text of
/// dlerror; keeps errno.
void LoadCxxRuntimeFor(const std::string &library);

} // namespace kessil::platform::posix
