#include "kessilctl/console/job_parser.h"

namespace kessil::kessilctl {
namespace {

constexpr const char *adapter_footer = R"(
The library is an adapter: its file name contains tarnlink_windows_x64.dll. samples/image_adapter is one; it serves the
directory that its credentials name.

With --credentials the adapter gets that text and a password. The password is asked for on the terminal, or is the next
line of --password-fd, after that of --logon if there is one. The helper doesn't report whether the adapter accepted
them; the calls that need them fail if it didn't.

A listing has one line for each item: its number, its value, for folders a second number, and its name. The adapter
defines what they mean. Its log goes to standard error.

read-disk opens the disk with the adapter's flag set, write-disk with the flag not set. read-disk writes to a file with
.partial behind the name, and renames it when it is complete; neither file may exist. `kessilctl --help` lists the exit
codes.)";

const std::string prefix = "adapter ";

/// As many as have a size in bytes in 64 bits.
constexpr std::uint64_t most_sectors = std::uint64_t{1} << 54;

void AddAdapter(CLI::App &app, AdapterOptions &adapter, const AddCommonOptions &add_common)
{
    app.add_option("--credentials", adapter.credentials,
                   "The first text of the adapter's credentials; the second is a password");
    AddLibrary(app, adapter.library);
    add_common(app);
}

void AddDisk(CLI::App &app, DiskOptions &options)
{
    app.add_option("-m,--machine", options.machine, "The machine, as the adapter names it")->required();
    app.add_option("-d,--disk", options.disk, "The disk, as the adapter names it")->required();
    app.add_option("--start", options.start, "The first sector (default: 0)")
        ->check(CLI::Range(std::uint64_t{0}, most_sectors));
    app.add_option("--config", options.config, "The first text of the adapter's disk library (default: empty)");
    app.add_option("--lib", options.lib, "The second text of the adapter's disk library (default: empty)");
}

void AddInventory(CLI::App &adapter, CommandLine &command, const AddCommonOptions &add_common, Inventory inventory,
                  const char *name, const char *description)
{
    const auto [app, options] = AddJob<InventoryOptions>(adapter, command, prefix, name, description);
    options.inventory = inventory;
    AddAdapter(app, options.adapter, add_common);
    const bool two = inventory == Inventory::DataStores;
    app.add_option(two ? "first" : "path", options.path, "What to list, as the adapter names it (default: empty)");
    if (two)
        app.add_option("second", options.second, "A second text for the adapter (default: empty)");
}

} // namespace

void AddAdapterJobs(CLI::App &app, CommandLine &command, const AddCommonOptions &add_common)
{
    CLI::App &adapter = *app.add_subcommand(
        "adapter", "Lists an inventory of virtual machines, and reads and writes their disks, through an adapter");
    adapter.require_subcommand(1);
    adapter.footer(adapter_footer);
    AddInventory(adapter, command, add_common, Inventory::Hosts, "hosts", "List the hosts");
    AddInventory(adapter, command, add_common, Inventory::DataStores, "datastores", "List the data stores");
    AddInventory(adapter, command, add_common, Inventory::Folders, "folders", "List the folders");
    AddInventory(adapter, command, add_common, Inventory::Machines, "machines", "List the machines");

    const auto read =
        AddJob<ReadDiskOptions>(adapter, command, prefix, "read-disk", "Read a disk's sectors into a new file");
    AddAdapter(read.app, read.options.adapter, add_common);
    AddDisk(read.app, read.options);
    read.app.add_option("--sectors", read.options.sectors, "How many sectors, of 512 bytes")
        ->check(CLI::Range(std::uint64_t{0}, most_sectors))
        ->required();
    read.app.add_option("--to", read.options.file, "The file, which must not exist")->required();

    const auto write =
        AddJob<WriteDiskOptions>(adapter, command, prefix, "write-disk", "Write a file to a disk's sectors");
    AddAdapter(write.app, write.options.adapter, add_common);
    AddDisk(write.app, write.options);
    write.app.add_option("--from", write.options.file, "The file; its size is a multiple of 512")->required();
    write.app.add_flag("--verify", write.options.verify, "Read back what was written, and compare");
}

} // namespace kessil::kessilctl
