#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil {

/// The system's message for an error code, with the line end that the system appends, if any.
WideString FormatSystemError(std::uint32_t code);

/// The same, followed by " (", the suffix and ")".
WideString FormatSystemError(std::uint32_t code, const WideString &suffix);

/// Stores that text in `error` and returns false, the result of an operation that the system refused. Allocates nothing
/// before the call, so that `code` may be the last error itself.
bool Refused(std::uint32_t code, const char16_t *suffix, WideString &error);

} // namespace kessil
