#pragma once

namespace kessil::platform {

/// Where EndWithin was called: runs the program's own exit functions and ends the process with `exit_code`. A plain
/// return from `wmain` would first end the thread that keeps the time and then run the libraries' end-of-life code,
/// which may wait forever. Returns, with nothing done, where EndWithin wasn't called.
void EndBounded(int exit_code);

} // namespace kessil::platform
