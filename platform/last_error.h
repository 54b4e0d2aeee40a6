#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil::platform {

/// The calling thread's last error: GetLastError on Windows, errno on Linux. Every platform function that reports
/// failure leaves its reason here, and every closer leaves it untouched.
std::uint32_t LastError();

void SetLastError(std::uint32_t code);

/// The system's text for an error code, with the line end that the system appends, if any. For an unknown code it is
/// empty on Windows and "Unknown error N" on Linux.
WideString ErrorText(std::uint32_t code);

} // namespace kessil::platform
