#pragma once

#include <cstdint>

namespace kessil {

/// A block of bytes from the C allocator that grows in whole steps and never shrinks.
class CByteBuffer
{
public:
    /// `granularity` is the step in bytes in which the block grows; 0 means exact sizes.
    explicit CByteBuffer(std::uint32_t granularity) : m_granularity(granularity) {}
    ~CByteBuffer();
    CByteBuffer(const CByteBuffer &) = delete;
    CByteBuffer &operator=(const CByteBuffer &) = delete;

    /// Makes the buffer `size` bytes long; a block that has to grow loses its content. Returns 0, or 1 when there is no
    /// memory or the rounded size exceeds 32 bits; the buffer is then empty.
    [[nodiscard]] int SetSize(std::uint32_t size);

    /// The same, but keeps the content. When it returns 1, the buffer is unchanged.
    [[nodiscard]] int Resize(std::uint32_t size);

    /// The first byte. While the size is 0 this is a spare byte, so that it can always be read and written.
    unsigned char *Data() { return m_size == 0 ? &m_spare : m_data; }
    const unsigned char *Data() const { return m_size == 0 ? &m_spare : m_data; }

    std::uint32_t Size() const { return m_size; }
    std::uint32_t Capacity() const { return m_capacity; }

private:
    unsigned char *m_data = nullptr;
    std::uint32_t m_size = 0;
    std::uint32_t m_capacity = 0;
    std::uint32_t m_granularity;
    unsigned char m_spare = 0;
};

} // namespace kessil
