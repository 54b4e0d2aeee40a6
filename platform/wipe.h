#pragma once

#include <cstddef>

namespace kessil::platform {

/// Overwrites memory that held a secret with zeros, even where the compiler could prove that it isn't read again.
inline void Wipe(void *memory, std::size_t size)
{
    auto *const bytes = static_cast<volatile unsigned char *>(memory);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = 0;
}

} // namespace kessil::platform
