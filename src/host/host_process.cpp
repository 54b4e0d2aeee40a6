#include "host/host_process.h"

#include "callers/library_caller.h"
#include "callers/library_caller_alt.h"
#include "channel/ipc_communication.h"
#include "host/logon.h"
#include "host/report.h"
#include "host/request_loop.h"
#include "logging/log_manager.h"
#include "platform/guard.h"
#include "platform/system_version.h"

#include <cstdio>

namespace kessil {
namespace {

constexpr int exception_exit_code = 0;
constexpr std::uint32_t release_milliseconds = 2000;

// A log file that can't be opened is not reported: the process works without one.
void StartLog(const CHostOptions &options)
{
    GetLogManager()->Config().level = options.log_level;
    static_cast<void>(std::freopen(options.out_file.c_str(), "a", stdout));
    static_cast<void>(std::freopen(options.out_file.c_str(), "a", stderr));
    KESSIL_LOG(log_debug, host_component,
               "Ready for logging:  log_file==" << options.out_file << ", log_level==" << options.log_level);
}

// Runs code of hosted libraries; false when an exception or a fault ended it. A fault leaves the library's locks held.
// Releasing the libraries may wait for one of them, so the end of the process gets a time limit.
template <class Body>
bool Guarded(Body body)
{
    try {
        if (platform::GuardedRun([](void *run) { (*static_cast<Body *>(run))(); }, &body))
            return true;
        platform::EndWithin(release_milliseconds, exception_exit_code);
    } catch (...) {
        // No log line and no reply: the parent sees the pipe close.
    }
    return false;
}

// What must be released in order is owned outside the guard: a fault drops the frames inside it without unwinding.
int ServeParent(CIPCCommunication &channel, const HostTables &tables, WideString &error)
{
    CLibraryCaller caller(tables.signatures, tables.after_load);
    CLibraryCallerAlt caller_alt(tables.signatures, tables.after_load);
    RequestLoop loop(channel, caller, caller_alt, tables.commands, error);
    platform::PrepareGuard();

    int exit_code = exception_exit_code;
    if (!Guarded([&] { exit_code = loop.Run(); }))
        exit_code = exception_exit_code;
    const auto release = [&] {
        caller_alt.ReleaseLibraries();
        caller.ReleaseLibraries();
    };
    while (!Guarded(release))
        exit_code = exception_exit_code;
    return exit_code;
}

int AttachAndServe(const CHostOptions &options, const HostTables &tables)
{
    platform::ReadSystemVersion(os_major_version);
    WideString error;
    CIPCCommunication channel;
    if (!channel.Attach(options.pipe_name, error)) {
        PrintError(error);
        return 1;
    }
    KESSIL_LOG(log_debug, host_component, "Attached to comm");
    return ServeParent(channel, tables, error);
}

} // namespace

int RunHost(const CHostOptions &options, const HostTables &tables)
{
    StartLog(options);
    try {
        return AttachAndServe(options, tables);
    } catch (...) {
        return exception_exit_code;
    }
}

} // namespace kessil
