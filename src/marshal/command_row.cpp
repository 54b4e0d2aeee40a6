#include "marshal/command_row.h"

#include <algorithm>

namespace kessil {
namespace {

bool NameOf(std::span<const CommandRow> rows, std::uint32_t command, const char *CommandRow::*column, std::string &name)
{
    const auto row = std::ranges::find(rows, command, &CommandRow::command);
    if (row == rows.end())
        return false;
    name = (*row).*column;
    return true;
}

} // namespace

bool FunctionNameOf(std::span<const CommandRow> rows, std::uint32_t command, std::string &name)
{
    return NameOf(rows, command, &CommandRow::function, name);
}

bool SignatureNameOf(std::span<const CommandRow> rows, std::uint32_t command, std::string &name)
{
    return NameOf(rows, command, &CommandRow::signature, name);
}

} // namespace kessil
