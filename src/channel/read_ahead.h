#pragma once

#include "platform/pipe.h"

#include <array>
#include <cstdint>

namespace kessil {

/// Reads from a pipe ahead of what is requested, so that a frame that arrives whole costs one system call, however many
/// pieces it is read in. All readers of a pipe share one of these.
class ReadAhead
{
public:
    /// Like platform::ReadPipe: blocks until at least one byte is available, and delivers at most `size` of them. While
    /// the buffer is empty, a read at least as large as the buffer goes directly to its destination.
    bool Read(platform::PipeHandle pipe, unsigned char *buffer, std::uint32_t size, std::uint32_t &count);

    /// Overwrites everything in the buffer that was delivered already.
    void WipeDelivered();

    /// Discards what was read but not requested yet.
    void Clear() { m_begin = m_end = 0; }

private:
    std::array<unsigned char, 4096> m_bytes;
    std::uint32_t m_begin = 0;
    std::uint32_t m_end = 0;
};

} // namespace kessil
