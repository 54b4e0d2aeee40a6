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

/// Look a command up in `rows`. False when it isn't there; `name` is then as it was.
bool FunctionNameOf(std::span<const CommandRow> rows, std::uint32_t command, std::string &name);
bool SignatureNameOf(std::span<const CommandRow> rows, std::uint32_t command, std::string &name);

} // namespace kessil
