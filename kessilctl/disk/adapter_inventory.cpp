#include "kessilctl/disk/adapter_job.h"

namespace kessil::kessilctl {

void ListInventory(AdapterJob &job)
{
    const AdapterCommand &asked = job.command.adapter;
    auto &items = job.result.items.value();
    job.Ask([&](parent::Adapter &adapter) {
        switch (job.command.task) {
        case Task::Hosts:
            return adapter.ListHosts(asked.first, items);
        case Task::DataStores:
            return adapter.ListDataStores(asked.first, asked.second, items);
        case Task::Folders:
            return adapter.ListFolders(asked.first, items);
        default:
            return adapter.ListMachines(asked.first, items);
        }
    });
}

} // namespace kessil::kessilctl
