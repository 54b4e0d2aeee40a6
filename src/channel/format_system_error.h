#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil {

/// The system's message for an error code, with the line end that the system puts behind it, if any.
WideString FormatSystemError(std::uint32_t code);

/// The same with " (", the suffix and ")" behind it.
WideString FormatSystemError(std::uint32_t code, const WideString &suffix);

/// Puts that into `error`. Always false: what an operation that the system refused returns. Nothing is allocated before
/// the call, so that `code` may be the last error itself.
bool Refused(std::uint32_t code, const char16_t *suffix, WideString &error);

} // namespace kessil
