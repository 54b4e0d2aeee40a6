#include "parent/section/result_list.h"

#include "parent/wire/big_endian.h"

namespace kessil::parent {

void ResultList::Rewind()
{
    m_good = m_present;
    m_position = 0;
    m_element = 0;
}

// The next `size` bytes behind `padding`; null when they don't lie within the section.
const unsigned char *ResultList::Take(std::uint32_t padding, std::uint64_t size)
{
    if (!m_good)
        return nullptr;
    ++m_element;
    const std::uint64_t end = std::uint64_t{m_position} + padding + size;
    m_good = end <= m_section.Size();
    if (!m_good)
        return nullptr;
    const unsigned char *place = m_section.View() + m_position + padding;
    m_bytes_read += end - m_position;
    m_position = static_cast<std::uint32_t>(end);
    return place;
}

// How many bytes a text has, its terminator of `unit` bytes included; 0 when no terminator lies within the section.
std::uint32_t ResultList::Measure(std::uint32_t padding, std::uint32_t unit) const
{
    const std::uint64_t start = std::uint64_t{m_position} + padding;
    for (std::uint64_t at = start; m_good && at + unit <= m_section.Size(); at += unit) {
        const unsigned char *place = m_section.View() + at;
        if (place[0] == 0 && place[unit - 1] == 0)
            return static_cast<std::uint32_t>(at + unit - start);
    }
    return 0;
}

bool ResultList::Number(std::uint64_t &value, int width)
{
    const auto size = static_cast<std::size_t>(width);
    const unsigned char *place = Take(0, size);
    if (place != nullptr)
        value = FromBigEndian({place, size});
    return place != nullptr;
}

void ResultList::Narrow(std::string &text)
{
    const std::uint32_t size = Measure(0, 1);
    const unsigned char *place = Take(0, size);
    m_good = m_good && size != 0;
    if (m_good)
        text.assign(reinterpret_cast<const char *>(place), size - 1);
}

void ResultList::Wide(WideString &text)
{
    const std::uint32_t padding = PaddingTo(wide_alignment, m_position);
    const std::uint32_t size = Measure(padding, 2);
    const unsigned char *place = Take(padding, size);
    m_good = m_good && size != 0;
    if (!m_good)
        return;
    text.clear();
    for (std::uint32_t at = 0; at + 2 < size; at += 2)
        text += static_cast<char16_t>(place[at] | place[at + 1] << 8);
    m_position -= 2 * padding;
}

void ResultList::Buffer(std::span<const std::byte> &bytes)
{
    const unsigned char *length = Take(0, buffer_length_size);
    if (length == nullptr)
        return;
    const auto size = static_cast<std::uint32_t>(FromBigEndian({length, buffer_length_size}));
    // Length and data are one element.
    --m_element;
    if (const unsigned char *place = Take(PaddingTo(buffer_alignment, m_position), size))
        bytes = {reinterpret_cast<const std::byte *>(place), size};
}

} // namespace kessil::parent
