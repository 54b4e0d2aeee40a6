#pragma once

#include <cstdint>

namespace kessil::platform {

/// The operating system's id of the calling thread.
std::uint32_t CurrentThreadId();

} // namespace kessil::platform
