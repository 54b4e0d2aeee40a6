#pragma once

#include "platform/text.h"

namespace kessil {

/// The entry point's name in the log.
inline constexpr const char *host_component = "kessil";

/// Prints "ERROR: '<text>'" and a line end on standard output, as UTF-8.
void PrintError(const WideString &text);

/// Prints "ERROR: Invalid request type - '<type>'" and a line end on standard output, the byte unchanged.
void PrintInvalidType(char type);

} // namespace kessil
