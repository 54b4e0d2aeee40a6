#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kessil::parent {

/// Writes the low `width` bytes of a number to `place`, the most significant one first.
inline void PutBigEndian(unsigned char *place, std::uint64_t value, int width)
{
    for (int i = 0; i < width; ++i)
        place[i] = static_cast<unsigned char>(value >> 8 * (width - 1 - i));
}

/// The same at the end of `bytes`.
inline void AppendBigEndian(std::vector<unsigned char> &bytes, std::uint64_t value, int width)
{
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        bytes.push_back(static_cast<unsigned char>(value >> shift));
}

/// A number from its big-endian bytes, at most 8.
inline std::uint64_t FromBigEndian(std::span<const unsigned char> bytes)
{
    std::uint64_t value = 0;
    for (const unsigned char byte : bytes)
        value = value << 8 | byte;
    return value;
}

} // namespace kessil::parent
