#pragma once

#include "parent/adapter/command_context.h"

namespace kessil::parent {

struct Adapter::State : CommandContext
{
    /// The library that was loaded for the calls that have no command.
    WideString listed{};
};

} // namespace kessil::parent
