#pragma once

#include <string>

namespace kessil::platform::posix {

/// Loads the C++ run-time library that a library needs, directly or through others, into a scope of its own before the
/// library is loaded; it stays loaded until the process ends. Without this, the library that causes the run-time
/// library to be loaded is first in the scope in which the run-time library is bound. The run-time library then uses
/// inline functions and templates of that library instead of its own. Since the run-time library is never unloaded, the
/// other library isn't either.
///
/// `library` is a path with a '/', or a name for the dynamic linker to find. For one that needs no C++ run-time
/// library, nothing is loaded. A failure has no effect: loading the library itself will report it. Clears the text of
/// dlerror; keeps errno.
void LoadCxxRuntimeFor(const std::string &library);

} // namespace kessil::platform::posix
