#pragma once

#include "platform/pipe.h"

#include <array>
#include <cstdint>

namespace kessil {

/// Reads from a pipe ahead of what is asked for, so that a frame that arrives whole costs one system call however
/// many pieces it is taken in. Every reader of one pipe shares one of these.
class ReadAhead
{
public:
    /// As platform::ReadPipe: blocks until at least one byte is there, and delivers at most `size` of them. While
    /// nothing is held, a request at least as large as the buffer is read straight into its place.
    bool Read(platform::PipeHandle pipe, unsigned char *buffer, std::uint32_t size, std::uint32_t &count);

    /// Overwrites everything here that was delivered already.
    void WipeDelivered();

    /// Forgets what was read and not asked for yet.
    void Clear() { m_begin = m_end = 0; }

private:
    std::array<unsigned char, 4096> m_bytes;
    std::uint32_t m_begin = 0;
    std::uint32_t m_end = 0;
};

} // namespace kessil
