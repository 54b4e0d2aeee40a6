#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

// What the measured processes agree on beside the calls themselves.

namespace kessil::bench {

/// What GetBackupType answers.
inline constexpr std::uint32_t backup_type = 7;

/// What a read delivers, over and over.
inline constexpr unsigned char source_byte = 0xA5;

/// The size of the success reply, a frame without payload.
inline constexpr std::uint32_t answer_size = 5;

/// The size of a section that holds the lists of a call with a block of `block_size` bytes.
constexpr std::uint32_t SectionSize(std::uint32_t block_size)
{
    return std::max<std::uint32_t>(block_size + 64, 4096);
}

/// The block that reads copy from: `size` bytes of source_byte, for the rest of the process's life; null when there is
/// no memory. It begins in the middle of a page: copies from a page's first bytes are several times slower on some
/// processors, and would measure that instead.
inline const unsigned char *MakeSource(std::size_t size)
{
    constexpr std::size_t page = 4096;
    auto *const memory = static_cast<unsigned char *>(std::malloc(size + 2 * page));
    if (memory == nullptr)
        return nullptr;
    std::memset(memory, source_byte, size + 2 * page);
    return memory + ((page / 2 - reinterpret_cast<std::uintptr_t>(memory)) & (page - 1));
}

} // namespace kessil::bench
