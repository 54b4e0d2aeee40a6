#pragma once

#include "platform/text.h"

#include <vector>

namespace kessil::platform {

/// What a program of this project supplies: the work of the process, given its command line with the program's own
/// name first. The result is the exit code. The platform's `main` or `wmain` calls it; a program links the library
/// `kessil_entry_point` to get that.
int Main(const std::vector<WideString> &arguments);

} // namespace kessil::platform
