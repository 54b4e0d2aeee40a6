#pragma once

#include <cstddef>

namespace kessil::test {

/// A block of bytes whose last byte is the last one before a page that can't be touched: reading or writing one byte
/// too many ends the test program. All bytes start as 0xEE.
class GuardedBlock
{
public:
    explicit GuardedBlock(std::size_t size);
    ~GuardedBlock();
    GuardedBlock(const GuardedBlock &) = delete;
    GuardedBlock &operator=(const GuardedBlock &) = delete;

    unsigned char *Data() const { return m_end - m_size; }
    std::size_t Size() const { return m_size; }

private:
    void *m_pages;
    std::size_t m_length; // of everything at m_pages, the untouchable page included
    unsigned char *m_end;
    std::size_t m_size;
};

} // namespace kessil::test
