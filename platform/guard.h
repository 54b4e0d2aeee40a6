#pragma once

#include <cstdint>

namespace kessil::platform {

/// Makes ready what GuardedRun and EndWithin need, so that neither has to allocate after a fault. Called once, on the
/// main thread, before the first GuardedRun. False when the system refuses; a fault then ends the process its own way.
bool PrepareGuard();

/// Runs `body(argument)` and returns true when it returned. A hardware fault on this thread while it runs (access
/// violation, division by zero, illegal instruction, stack overflow; on Windows any structured exception but
/// this compiler's own throw and a mere note to a debugger) abandons it and returns false. Frames between the fault and
/// this call are not unwound, so nothing that lives in them may matter afterwards. C++ exceptions pass through. One
/// guarded run at a time.
bool GuardedRun(void (*body)(void *), void *argument);

/// From now on the process has `milliseconds` to end by itself; then it is ended with `exit_code`, whatever its
/// threads wait for. A later call changes nothing. May be called after a fault.
void EndWithin(std::uint32_t milliseconds, int exit_code);

} // namespace kessil::platform
