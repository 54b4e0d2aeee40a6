#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

// What the measured processes agree on besides the calls themselves.

namespace kessil::bench {

/// The answer of GetBackupType.
inline constexpr std::uint32_t backup_type = 7;

/// The byte that a read delivers, over and over.
inline constexpr unsigned char source_byte = 0xA5;

/// The byte that the parent fills a block with before its first call, and that a write delivers.
inline constexpr unsigned char written_byte = 0x5A;

/// The size of a disk's sector in bytes.
inline constexpr std::uint32_t sector_size = 512;

/// The size of the success reply, a frame without payload.
inline constexpr std::uint32_t answer_size = 5;

/// The size of a section that holds the lists of a call with a block of `block_size` bytes.
constexpr std::uint32_t SectionSize(std::uint32_t block_size)
{
    return std::max<std::uint32_t>(block_size + 64, 4096);
}

inline constexpr std::size_t page_size = 4096;

/// The first address in `memory` from which a block `offset` bytes on begins in the middle of a page; it is less than a
/// page away. Copies from a page's first bytes are several times slower on some processors, and would be measured
/// instead.
inline unsigned char *BeforeMidPage(unsigned char *memory, std::size_t offset = 0)
{
    const std::uintptr_t block = reinterpret_cast<std::uintptr_t>(memory) + offset;
    return memory + ((page_size / 2 - block) & (page_size - 1));
}

/// The block that reads copy from: `size` bytes of source_byte, for the rest of the process's life; null when there is
/// no memory. It begins in the middle of a page.
inline const unsigned char *MakeSource(std::size_t size)
{
    auto *const memory = static_cast<unsigned char *>(std::malloc(size + 2 * page_size));
    if (memory == nullptr)
        return nullptr;
    std::memset(memory, source_byte, size + 2 * page_size);
    return BeforeMidPage(memory);
}

} // namespace kessil::bench
