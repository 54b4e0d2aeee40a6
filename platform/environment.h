#pragma once

#include "platform/text.h"

#include <optional>

namespace kessil::platform {

/// What stands between two directories of a search path: `;` on Windows, `:` on Linux.
extern const char16_t search_path_separator;

/// The value of an environment variable of this process; nothing when it isn't set. The last error is then ENOENT on
/// Linux, and on Windows whatever it was before.
std::optional<WideString> ReadEnvironment(const WideString &name);

/// Takes "NAME=value" into this process's environment. False when the system refuses.
bool PutEnvironment(const WideString &assignment);

} // namespace kessil::platform
