#include "kessilctl/console/adapter_options.h"

#include <CLI/CLI.hpp>

namespace kessil::kessilctl {
namespace {

constexpr const char *footer = R"(
The library is an adapter: its file name has tarnlink_windows_x64.dll in it. samples/image_adapter is one, which serves
the directory that its credentials name.

With --credentials the adapter gets that text and a password, which is asked for on the terminal, or is the next line of
--password-fd, behind that of --logon if there is one. The helper doesn't tell whether the adapter took them: the calls
that need them do.

A listing has one line an item: its number, its value, for folders a second number, and its name. What they stand for is
the adapter's affair. Its log goes to the standard error.

A disk is opened with the adapter's flag set for read-disk, and not set for write-disk. What is read stands under the
file's name and .partial until it is whole; no file may have that name. `kessilctl --help` has the exit codes.)";

/// The most that can be told in bytes.
constexpr std::uint64_t most_sectors = std::uint64_t{1} << 54;

CLI::App &AddTask(CLI::App &adapter, Command &command, const char *name, const char *description, Task task)
{
    CLI::App &app = *adapter.add_subcommand(name, description);
    app.callback([&command, task] { command.task = task; });
    app.add_option("--credentials", command.adapter.credentials,
                   "The first text of the adapter's credentials; the second is a password");
    return app;
}

void AddDisk(CLI::App &app, Command &command)
{
    AdapterCommand &asked = command.adapter;
    app.add_option("-m,--machine", asked.machine, "The machine, as the adapter names it")->required();
    app.add_option("-d,--disk", asked.disk, "The disk, as the adapter names it")->required();
    app.add_option("--start", asked.start, "The first sector (default: 0)")
        ->check(CLI::Range(std::uint64_t{0}, most_sectors));
    app.add_option("--config", asked.config, "The first text of the adapter's disk library (default: empty)");
    app.add_option("--lib", asked.lib, "The second text of the adapter's disk library (default: empty)");
}

} // namespace

void AddAdapterTasks(CLI::App &app, Command &command, const std::function<void(CLI::App &)> &add_common)
{
    CLI::App &adapter = *app.add_subcommand(
        "adapter", "Lists an inventory of virtual machines, and reads and writes their disks, through an adapter");
    adapter.require_subcommand(1);
    adapter.footer(footer);
    AdapterCommand &asked = command.adapter;
    CLI::App &hosts = AddTask(adapter, command, "hosts", "List the hosts", Task::Hosts);
    CLI::App &stores = AddTask(adapter, command, "datastores", "List the data stores", Task::DataStores);
    CLI::App &folders = AddTask(adapter, command, "folders", "List the folders", Task::Folders);
    CLI::App &machines = AddTask(adapter, command, "machines", "List the machines", Task::Machines);
    CLI::App &read = AddTask(adapter, command, "read-disk", "Read a disk's sectors into a new file", Task::ReadDisk);
    CLI::App &write = AddTask(adapter, command, "write-disk", "Write a file onto a disk's sectors", Task::WriteDisk);
    for (CLI::App *task : {&hosts, &stores, &folders, &machines, &read, &write})
        add_common(*task);
    for (CLI::App *task : {&hosts, &folders, &machines})
        task->add_option("path", asked.first, "Where, as the adapter names it (default: empty)");
    stores.add_option("first", asked.first, "Where, as the adapter names it (default: empty)");
    stores.add_option("second", asked.second, "What else the adapter takes (default: empty)");
    for (CLI::App *task : {&read, &write})
        AddDisk(*task, command);
    read.add_option("--sectors", asked.sectors, "How many sectors, of 512 bytes")
        ->check(CLI::Range(std::uint64_t{0}, most_sectors))
        ->required();
    read.add_option("--to", command.file, "The file, which doesn't exist yet")->required();
    write.add_option("--from", command.file, "The file, whose size is a multiple of 512")->required();
    write.add_flag("--verify", asked.verify, "Read back what was written, and compare");
}

} // namespace kessil::kessilctl
