#pragma once

#include "kessilctl/console/command_line.h"

#include <functional>

namespace CLI {
class App;
}

namespace kessil::kessilctl {

/// Adds the subcommand `adapter`, with one of its own for each task of an adapter, which is set in `command` when it is
/// named. `add_common` adds to each what all of the program's tasks have.
void AddAdapterTasks(CLI::App &app, Command &command, const std::function<void(CLI::App &)> &add_common);

} // namespace kessil::kessilctl
