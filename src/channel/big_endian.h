#pragma once

#include <cstddef>

namespace kessil {

/// Stores an unsigned number as `sizeof(T)` bytes, most significant first.
template <class T>
void StoreBigEndian(unsigned char *bytes, T value)
{
    for (std::size_t i = sizeof(T); i-- > 0;) {
        bytes[i] = static_cast<unsigned char>(value & 0xFF);
        if constexpr (sizeof(T) > 1)
            value = static_cast<T>(value >> 8);
    }
}

/// Loads the number that StoreBigEndian stored.
template <class T>
T LoadBigEndian(const unsigned char *bytes)
{
    T value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        if constexpr (sizeof(T) > 1)
            value = static_cast<T>(value << 8);
        value = static_cast<T>(value | bytes[i]);
    }
    return value;
}

} // namespace kessil
