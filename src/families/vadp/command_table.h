#pragma once

#include "marshal/command_row.h"

#include <span>

namespace kessil {

/// Every command that names a call; command 1, the orderly stop, is served by the request loop. Numbers and strings are
/// a contract with the parents, gaps and odd spellings included.
std::span<const CommandRow> CommandTable();

} // namespace kessil
