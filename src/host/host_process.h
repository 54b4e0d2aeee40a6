#pragma once

#include "callers/command_table.h"
#include "callers/loaded_libraries.h"
#include "callers/signature_table.h"
#include "host/host_options.h"

#include <cstdint>
#include <span>

namespace kessil {

/// The operating system's major version; 0 until start-up has read it, or when the system doesn't tell.
extern std::uint32_t os_major_version;

/// What the process works with: the signatures and the commands that it serves, and what follows a load.
struct HostTables
{
    std::span<const SignatureRow> signatures;
    std::span<const CommandRow> commands;
    AfterLoadHook after_load;
};

/// The whole run behind the command line: log, pipe, requests, release. Returns the exit code: 0 after an orderly
/// stop, an end of stream between two requests, an exception or a fault in a library; 1 after a reported failure.
int RunHost(const CHostOptions &options, const HostTables &tables);

} // namespace kessil
