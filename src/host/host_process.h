#pragma once

#include "callers/loaded_libraries.h"
#include "host/host_options.h"
#include "marshal/command_row.h"
#include "marshal/signature_row.h"

#include <span>

namespace kessil {

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
