#pragma once

#include "bench/work.h"

#include <cstdint>
#include <vector>

namespace kessil::bench {

/// Bytes at a fixed address: a head of `head` bytes, followed by a block that begins in the middle of a page.
class PlacedBytes
{
public:
    /// `size` is the size of both together. All bytes are `written_byte`.
    PlacedBytes(std::uint32_t head, std::uint32_t size)
        : m_memory(size + page_size, written_byte), m_data(BeforeMidPage(m_memory.data(), head)), m_size(size)
    {}
    PlacedBytes(const PlacedBytes &) = delete;
    PlacedBytes &operator=(const PlacedBytes &) = delete;

    unsigned char *Data() { return m_data; }
    const unsigned char *Data() const { return m_data; }
    std::uint32_t Size() const { return m_size; }

private:
    std::vector<unsigned char> m_memory;
    unsigned char *m_data;
    std::uint32_t m_size;
};

} // namespace kessil::bench
