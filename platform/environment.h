#pragma once

#include "platform/text.h"

#include <optional>

namespace kessil::platform {

/// Separates the directories of a search path: `;` on Windows, `:` on Linux.
extern const char16_t search_path_separator;

/// The value of an environment variable of this process; none when it isn't set. The last error is then ENOENT on
/// Linux, and unchanged on Windows.
std::optional<WideString> ReadEnvironment(const WideString &name);

/// Sets a variable of this process's environment, given as "NAME=value". False on failure.
bool PutEnvironment(const WideString &assignment);

} // namespace kessil::platform
