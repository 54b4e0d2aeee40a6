#pragma once

#include "rows/adapter_row.h"

namespace kessil::test {

/// Credentials and inventory, with the arguments in the section.
const std::vector<AdapterRow> &InventoryRows();

/// The same by command, with bare values on the pipe.
const std::vector<CommandRow> &InventoryCommands();

} // namespace kessil::test
