#pragma once

#include <cstdint>

namespace kessil::platform {

/// The operating system's major version. False, with `major` untouched, when the system doesn't tell.
bool ReadSystemVersion(std::uint32_t &major);

} // namespace kessil::platform
