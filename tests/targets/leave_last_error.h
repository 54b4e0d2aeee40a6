#pragma once

#include <cstdint>

/// Sets the thread's last error, as a call that goes wrong does: GetLastError on Windows, errno on Linux.
void LeaveLastError(std::uint32_t code);
