#pragma once

#include "platform/text.h"

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace kessil::kessilctl {

enum class Task
{
    List,
    Backup,
    Restore,
    ErrorText,
    Hosts,
    DataStores,
    Folders,
    Machines,
    ReadDisk,
    WriteDisk
};

/// Whether it is one of those from Hosts on.
inline bool IsOfAdapter(Task task)
{
    return task >= Task::Hosts;
}

inline bool IsInventory(Task task)
{
    return IsOfAdapter(task) && task < Task::ReadDisk;
}

/// The user that the helper is to log on as.
struct Logon
{
    std::string user;
    std::string domain;            ///< may be empty
    bool credentials_only = false; ///< for outgoing connections alone
};

/// What the tasks of an adapter ask for besides. Texts for the adapter are UTF-8.
struct AdapterCommand
{
    std::optional<std::string> credentials; ///< the first text of them; none: the adapter gets no credentials
    std::string first;                      ///< of a listing: its path, in general
    std::string second;                     ///< of the data stores
    std::string config;
    std::string lib;
    std::string machine;
    std::string disk;
    std::uint64_t start = 0; ///< in sectors
    std::uint64_t sectors = 0;
    bool verify = false;
};

/// What the command line asks for. Paths are as ToText writes them.
struct Command
{
    Task task = Task::List;
    std::string library;
    std::string helper;    ///< the helper's program
    std::string log;       ///< the helper's log file; empty: a temporary one
    std::string path;      ///< the directory within the library's tree
    std::string directory; ///< the backup, to write or to read
    std::string file;      ///< whose message is wanted, or that takes or has a disk's sectors
    std::uint32_t message = 0;
    std::string search_path; ///< directories, separated as in PATH, to search before all others; empty: none
    std::optional<Logon> logon;
    std::optional<int> password_descriptor; ///< that passwords are read from; none: the terminal is asked
    AdapterCommand adapter;
    std::chrono::milliseconds time_limit{0};
    bool recursive = false;
    bool json = false;
    bool debug = false;
};

/// Reads the arguments (the program's own name first). None, with `exit_code` set, when there is nothing more to do:
/// help was asked for and is on `out`, or the arguments make no sense and `err` says why.
std::optional<Command> ParseCommandLine(const std::vector<WideString> &arguments, std::ostream &out, std::ostream &err,
                                        int &exit_code);

} // namespace kessil::kessilctl
