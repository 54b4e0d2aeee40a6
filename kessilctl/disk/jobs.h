#pragma once

#include "kessilctl/console/console.h"
#include "kessilctl/console/password.h"
#include "kessilctl/console/report.h"
#include "kessilctl/helper/running_helper.h"

/// The jobs with an adapter. Each loads the adapter that its options name, passes it the credentials if there are any,
/// clears their password, and fills the report as it proceeds. Throws Failure.
namespace kessil::kessilctl {

/// `kessilctl adapter hosts`, `datastores`, `folders` and `machines`
void ListInventory(const InventoryOptions &options, const RunningHelper &running, Password &password, Console &console,
                   AdapterReport &report);

/// `kessilctl adapter read-disk`
void ReadDisk(const ReadDiskOptions &options, const RunningHelper &running, Password &password, Console &console,
              AdapterReport &report);

/// `kessilctl adapter write-disk`
void WriteDisk(const WriteDiskOptions &options, const RunningHelper &running, Password &password, Console &console,
               AdapterReport &report);

} // namespace kessil::kessilctl
