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
/// the system when this process ends. What a person types at the terminal to interrupt this process doesn't reach the
/// child: it has a process group of its own, and whether it goes on is for this process to say. On Linux it is then
/// not in the terminal's foreground: reading the terminal fails there with EIO. `working_directory` empty means this
/// process's own. Null on failure, with the reason in the last error.
Process *StartProcess(const WideString &program, const std::vector<WideString> &arguments,
                      const WideString &working_directory);

std::uint32_t ProcessId(const Process &process);

/// Waits until the process has ended. True when it has; `exit_code` then holds its exit code, or, where a signal
/// ended it, 128 plus the signal's number.
bool WaitForProcess(Process &process, Deadline deadline, std::uint32_t &exit_code);

/// Ends the process at once. Harmless when it has ended already.
void KillProcess(Process &process);

/// Gives up the handle; a process that still runs is killed first. Null is fine.
void ReleaseProcess(Process *process);

} // namespace kessil::platform
