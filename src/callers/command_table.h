#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace kessil {

/// What the command byte of an 'f' request stands for.
struct CommandRow
{
    std::uint32_t command;
    const char *signature;
    const char *function; ///< the export's name
};

/// Every command that names a call, all of them of the virtual-machine adapter; command 1, the orderly stop, is the
/// request loop's. Numbers and strings are a contract with the parents, gaps and odd spellings included.
std::span<const CommandRow> CommandTable();

/// Look a command up in `table`. False when it isn't there; the name is then as it was.
bool FunctionNameOf(std::span<const CommandRow> table, std::uint32_t command, std::string &name);
bool SignatureNameOf(std::span<const CommandRow> table, std::uint32_t command, std::string &name);

} // namespace kessil
