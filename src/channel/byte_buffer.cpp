#include "channel/byte_buffer.h"

#include <cstdlib>
#include <limits>
#include <optional>

namespace kessil {
namespace {

// The next multiple of the step, if 32 bits can hold it.
std::optional<std::uint32_t> RoundUp(std::uint32_t size, std::uint32_t granularity)
{
    if (granularity == 0 || size % granularity == 0)
        return size;
    const std::uint32_t missing = granularity - size % granularity;
    if (size > std::numeric_limits<std::uint32_t>::max() - missing)
        return std::nullopt;
    return size + missing;
}

// Some C libraries return null for a request of zero bytes, which would look like a failure.
std::size_t BlockSize(std::uint32_t capacity)
{
    return capacity == 0 ? 1 : capacity;
}

} // namespace

CByteBuffer::~CByteBuffer()
{
    std::free(m_data);
}

int CByteBuffer::SetSize(std::uint32_t size)
{
    m_size = size;
    if (m_capacity >= size && m_data != nullptr)
        return 0;
    std::free(m_data);
    m_data = nullptr;
    if (const auto capacity = RoundUp(size, m_granularity)) {
        m_capacity = *capacity;
        m_data = static_cast<unsigned char *>(std::malloc(BlockSize(m_capacity)));
    }
    if (m_data != nullptr)
        return 0;
    m_size = 0;
    m_capacity = 0;
    return 1;
}

int CByteBuffer::Resize(std::uint32_t size)
{
    if (m_capacity >= size && m_data != nullptr) {
        m_size = size;
        return 0;
    }
    const auto capacity = RoundUp(size, m_granularity);
    void *const grown = capacity ? std::realloc(m_data, BlockSize(*capacity)) : nullptr;
    if (grown == nullptr)
        return 1;
    m_data = static_cast<unsigned char *>(grown);
    m_capacity = *capacity;
    m_size = size;
    return 0;
}

} // namespace kessil
