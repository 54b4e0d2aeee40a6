#pragma once

#include "platform/pipe_server.h"
#include "platform/text.h"

#include <cstdint>
#include <vector>

namespace kessil::platform {

/// A child process that doesn't outlive this one, however this one ends. Owned by whoever called StartProcess.
struct Process;

/// Starts `program` (a path) with `arguments` (without the program's own name), which arrive exactly as given. The
/// child inherits the standard streams and nothing else, opens no console window and no error dialog, and is killed by
/// the system when this process ends. An interrupt typed at the terminal doesn't reach the child, which has a process
/// group of its own: this process decides whether the child goes on. On Linux the child is therefore not in the
/// terminal's foreground, and reading the terminal fails there with EIO. An empty `working_directory` means this
/// process's own. Null on failure, with the reason in the last error.
Process *StartProcess(const WideString &program, const std::vector<WideString> &arguments,
                      const WideString &working_directory);

std::uint32_t ProcessId(const Process &process);

/// Waits until the process has ended. True when it has; `exit_code` then holds its exit code, or, where a signal
/// ended it, 128 plus the signal's number.
bool WaitForProcess(Process &process, Deadline deadline, std::uint32_t &exit_code);

/// Ends the process at once. No effect when it has ended already.
void KillProcess(Process &process);

/// Releases the handle; a process that still runs is killed first. Accepts null.
void ReleaseProcess(Process *process);

} // namespace kessil::platform
