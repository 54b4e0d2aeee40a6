#pragma once

#include <cstdint>

namespace kessil::platform {

/// The operating system's major version. False, with `major` unchanged, when the system doesn't report it.
bool ReadSystemVersion(std::uint32_t &major);

} // namespace kessil::platform
