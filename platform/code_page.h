#pragma once

#include "platform/text.h"

#include <string_view>

namespace kessil::platform {

/// Converts 8-bit text to wide text: from the calling thread's ANSI code page on Windows, from UTF-8 on Linux. A byte
/// that is invalid there becomes the system's replacement on Windows, and a lone surrogate as in FromUtf8 on Linux.
/// Empty on failure.
WideString FromThreadCodePage(std::string_view text);

} // namespace kessil::platform
