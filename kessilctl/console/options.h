#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

/// What the command line asks for: the helper that every job needs, and one record for each job.
/// Paths on this side are as ToText writes them; texts for a library or an adapter are its own bytes, or UTF-8.
namespace kessil::kessilctl {

/// The user that the helper logs on as.
struct Logon
{
    std::string user;
    std::string domain;            ///< may be empty
    bool credentials_only = false; ///< for outgoing connections alone
};

struct HelperOptions
{
    std::string program;
    std::string log; ///< its log file; empty: a temporary one
    bool debug = false;
    std::string search_path; ///< directories, separated as in PATH, to search before all others; empty: none
    std::optional<Logon> logon;
    std::chrono::milliseconds time_limit{0}; ///< for one call; 0: none
};

/// `kessilctl ls`
struct ListOptions
{
    std::string library;
    std::string subtree; ///< the directory in the library's tree; empty: the topmost
    bool recursive = false;
};

/// `kessilctl backup`
struct BackupOptions
{
    std::string library;
    std::string subtree;
    std::string directory; ///< the backup, to be made
};

/// `kessilctl restore`
struct RestoreOptions
{
    std::string library;
    std::string subtree;
    std::string directory; ///< the backup
};

/// `kessilctl errtext`
struct ErrorTextOptions
{
    std::string file; ///< that has the messages
    std::uint32_t message = 0;
};

/// What all jobs with an adapter have.
struct AdapterOptions
{
    std::string library;
    std::optional<std::string> credentials; ///< their first text; none: the adapter gets no credentials
};

enum class Inventory
{
    Hosts,
    DataStores,
    Folders,
    Machines
};

/// `kessilctl adapter hosts`, `datastores`, `folders` and `machines`
struct InventoryOptions
{
    Inventory inventory = Inventory::Hosts;
    AdapterOptions adapter;
    std::string path;
    std::string second; ///< the second text that the data stores take
};

/// A place on a disk of an adapter.
struct DiskOptions
{
    AdapterOptions adapter;
    std::string config; ///< first text of the adapter's disk library
    std::string lib;    ///< second text
    std::string machine;
    std::string disk;
    std::uint64_t start = 0; ///< the first sector
};

/// `kessilctl adapter read-disk`
struct ReadDiskOptions : DiskOptions
{
    std::uint64_t sectors = 0;
    std::string file; ///< to be made
};

/// `kessilctl adapter write-disk`
struct WriteDiskOptions : DiskOptions
{
    std::string file;
    bool verify = false;
};

using JobOptions = std::variant<ListOptions, BackupOptions, RestoreOptions, ErrorTextOptions, InventoryOptions,
                                ReadDiskOptions, WriteDiskOptions>;

/// The job's options if it is one with an adapter, otherwise null.
inline const AdapterOptions *AdapterOf(const JobOptions &job)
{
    return std::visit(
        [](const auto &options) -> const AdapterOptions * {
            if constexpr (requires { options.adapter; })
                return &options.adapter;
            else
                return nullptr;
        },
        job);
}

} // namespace kessil::kessilctl
