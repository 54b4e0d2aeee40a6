#pragma once

#include "kessilctl/console/console.h"
#include "platform/text.h"

#include <vector>

namespace kessil::kessilctl {

/// The whole program: does what the arguments say (the program's own name first) and returns the exit code.
int Run(const std::vector<WideString> &arguments, Console &console);

} // namespace kessil::kessilctl
