#pragma once

#include <cstdint>

namespace kessil::platform {

/// Sets up what GuardedRun and EndWithin need, so that neither has to allocate after a fault. Called once, on the main
/// thread, before the first GuardedRun. False when the system refuses; a fault then has the system's default effect.
bool PrepareGuard();

/// Runs `body(argument)` and returns true when it returned. A hardware fault on this thread during the run (access
/// violation, division by zero, illegal instruction, stack overflow; on Windows any structured exception except this
/// compiler's own throws and notifications to a debugger) abandons the run and returns false. Frames between the fault
/// and this call are not unwound, so nothing that lives in them may matter afterwards. C++ exceptions pass through. One
/// guarded run at a time.
bool GuardedRun(void (*body)(void *), void *argument);

/// Gives the process `milliseconds` to end by itself; after that it is ended with `exit_code`, whatever its threads are
/// waiting for. Later calls have no effect. May be called after a fault.
void EndWithin(std::uint32_t milliseconds, int exit_code);

} // namespace kessil::platform
