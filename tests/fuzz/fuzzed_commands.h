#pragma once

#include "rows/adapter_backup_rows.h"
#include "rows/adapter_inventory_rows.h"
#include "rows/adapter_machines_rows.h"
#include "rows/adapter_restore_rows.h"

#include <algorithm>
#include <string>
#include <vector>

namespace kessil::test {

/// One handler that the adapter target calls.
struct FuzzedCommand
{
    std::string signature;
    std::string function; ///< what it is given
    bool in_section;      ///< whether its arguments lie in the section, and it is the first of the signature's two

    /// Whether it writes bare values although its arguments lie in the section.
    bool MixesBareValues() const { return in_section && function == "GetDiskChangeIDS"; }

    /// Whether it sends listings whole, so that the adapter has to hand out true ones.
    bool DeletesListings() const { return !in_section || MixesBareValues(); }
};

/// The tables of the family.
inline std::vector<AdapterRow> AllAdapterRows()
{
    std::vector<AdapterRow> all;
    for (const auto &rows : {InventoryRows(), BackupRows(), RestoreRows(), MachinesRows()})
        all.insert(all.end(), rows.begin(), rows.end());
    return all;
}
inline std::vector<CommandRow> AllCommandRows()
{
    std::vector<CommandRow> all;
    for (const auto &rows : {InventoryCommands(), BackupCommands(), RestoreCommands(), MachinesCommands()})
        all.insert(all.end(), rows.begin(), rows.end());
    return all;
}

/// Where the handler stands among those that are fuzzed; as many as there are when it doesn't.
inline std::size_t PlaceOf(const std::vector<FuzzedCommand> &commands, const std::string &signature, bool in_section)
{
    const auto found = std::ranges::find_if(commands, [&](const FuzzedCommand &command) {
        return command.signature == signature && command.in_section == in_section;
    });
    return static_cast<std::size_t>(found - commands.begin());
}

/// The handlers of the family that are fuzzed, in the order in which an input counts them.
inline const std::vector<FuzzedCommand> &FuzzedCommands()
{
    static const std::vector<FuzzedCommand> commands = [] {
        std::vector<FuzzedCommand> all;
        const auto add = [&all](const auto &row, bool in_section) {
            if (PlaceOf(all, row.signature, in_section) == all.size())
                all.push_back({row.signature, row.function, in_section});
        };
        for (const AdapterRow &row : AllAdapterRows())
            add(row, true);
        for (const CommandRow &row : AllCommandRows()) {
            // This one reads as many pairs as the input says, however many.
            if (row.function != "CreateVM")
                add(row, false);
        }
        return all;
    }();
    return commands;
}

} // namespace kessil::test
