#include "channel/read_ahead.h"

#include "platform/wipe.h"

#include <algorithm>
#include <cstring>

namespace kessil {

bool ReadAhead::Read(platform::PipeHandle pipe, unsigned char *buffer, std::uint32_t size, std::uint32_t &count)
{
    if (m_begin == m_end) {
        if (size >= m_bytes.size())
            return platform::ReadPipe(pipe, buffer, size, count);
        Clear();
        if (!platform::ReadPipe(pipe, m_bytes.data(), static_cast<std::uint32_t>(m_bytes.size()), m_end))
            return false;
    }
    count = std::min(size, m_end - m_begin);
    std::memcpy(buffer, m_bytes.data() + m_begin, count);
    m_begin += count;
    return true;
}

void ReadAhead::WipeDelivered()
{
    platform::Wipe(m_bytes.data(), m_begin);
    platform::Wipe(m_bytes.data() + m_end, m_bytes.size() - m_end);
}

} // namespace kessil
