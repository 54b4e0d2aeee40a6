#pragma once

namespace kessil::platform {

/// If EndWithin was called: runs the program's own exit functions and ends the process with `exit_code`. A plain return
/// from `wmain` would first end the watchdog thread and then run the libraries' termination code, which may wait
/// forever. If EndWithin wasn't called, returns without doing anything.
void EndBounded(int exit_code);

} // namespace kessil::platform
