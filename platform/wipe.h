#pragma once

#include <cstddef>

namespace kessil::platform {

/// Overwrites memory that held a secret with zeros, also where the compiler sees that nobody reads it afterwards.
inline void Wipe(void *memory, std::size_t size)
{
    auto *const bytes = static_cast<volatile unsigned char *>(memory);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = 0;
}

} // namespace kessil::platform
