#pragma once

#include <cstdint>

namespace kessil::parent {

/// The elements of an argument list or a result list, one behind the other from the section's first byte on:
///
///     U8, U16, U32, U64   big-endian, no alignment
///     STR                 the bytes, and a zero byte
///     WSTR                padding to an even address, UTF-16 little-endian units, and a zero unit. Behind one that
///                         needed padding the next element begins two bytes early, inside the zero unit
///     BUF, IN             4 bytes length (big-endian), padding to a multiple of 8, the bytes
///
/// Elements carry no tags. A section starts on a page boundary, so a position in it is aligned where its address is.
constexpr std::uint32_t buffer_length_size = 4;
constexpr std::uint32_t buffer_alignment = 8;
constexpr std::uint32_t wide_alignment = 2;

/// How many bytes are skipped so that an element starts at a multiple of `alignment`.
constexpr std::uint32_t PaddingTo(std::uint32_t alignment, std::uint32_t position)
{
    return (0U - position) % alignment;
}

} // namespace kessil::parent
