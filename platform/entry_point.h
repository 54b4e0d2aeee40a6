#pragma once

#include "platform/text.h"

#include <vector>

namespace kessil::platform {

/// The work of a process, which each program defines. `arguments` is the command line with the program's own name
/// first; the result is the exit code. The platform's `main` or `wmain` calls it, which a program gets by linking the
/// library `kessil_entry_point`.
int Main(const std::vector<WideString> &arguments);

} // namespace kessil::platform
