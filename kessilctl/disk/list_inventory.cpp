#include "kessilctl/disk/hosted_adapter.h"
#include "kessilctl/disk/jobs.h"

namespace kessil::kessilctl {

void ListInventory(const InventoryOptions &options, const RunningHelper &running, Password &password, Console &console,
                   AdapterReport &report)
{
    HostedAdapter adapter(options.adapter, running, password, console, report);
    auto &items = report.items.value();
    adapter.Call([&](parent::Adapter &called) {
        switch (options.inventory) {
        case Inventory::Hosts:
            return called.ListHosts(options.path, items);
        case Inventory::DataStores:
            return called.ListDataStores(options.path, options.second, items);
        case Inventory::Folders:
            return called.ListFolders(options.path, items);
        case Inventory::Machines:
            break;
        }
        return called.ListMachines(options.path, items);
    });
}

} // namespace kessil::kessilctl
