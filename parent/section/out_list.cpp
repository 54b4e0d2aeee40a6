#include "parent/section/lists.h"

#include "parent/wire/frame.h"

namespace kessil::parent {
void OutList::State::Begin()
{
    good = present;
    position = 0;
    element = 0;
}

const unsigned char *OutList::State::Take(std::uint32_t padding, std::uint64_t size)
{
    if (!good)
        return nullptr;
    ++element;
    const std::uint64_t end = std::uint64_t{position} + padding + size;
    good = end <= keeper.Size();
    if (!good)
        return nullptr;
    const unsigned char *place = keeper.View() + position + padding;
    bytes_read += end - position;
    position = static_cast<std::uint32_t>(end);
    return place;
}

bool OutList::State::Number(std::uint64_t &value, int width)
{
    const auto size = static_cast<std::size_t>(width);
    const unsigned char *place = Take(0, size);
    if (place != nullptr)
        value = FromBigEndian({place, size});
    return place != nullptr;
}

std::uint32_t OutList::State::Measure(std::uint32_t padding, std::uint32_t unit)
{
    const std::uint64_t start = std::uint64_t{position} + padding;
    for (std::uint64_t at = start; good && at + unit <= keeper.Size(); at += unit) {
        const unsigned char *place = keeper.View() + at;
        if (place[0] == 0 && place[unit - 1] == 0)
            return static_cast<std::uint32_t>(at + unit - start);
    }
    return 0;
}

OutList &OutList::U8(std::uint8_t &value)
{
    if (std::uint64_t number = 0; m_state.Number(number, 1))
        value = static_cast<std::uint8_t>(number);
    return *this;
}

OutList &OutList::U16(std::uint16_t &value)
{
    if (std::uint64_t number = 0; m_state.Number(number, 2))
        value = static_cast<std::uint16_t>(number);
    return *this;
}

OutList &OutList::U32(std::uint32_t &value)
{
    if (std::uint64_t number = 0; m_state.Number(number, 4))
        value = static_cast<std::uint32_t>(number);
    return *this;
}

OutList &OutList::U64(std::uint64_t &value)
{
    m_state.Number(value, 8);
    return *this;
}

OutList &OutList::Str(std::string &text)
{
    const std::uint32_t size = m_state.Measure(0, 1);
    const unsigned char *place = m_state.Take(0, size);
    m_state.good = m_state.good && size != 0;
    if (m_state.good)
        text.assign(reinterpret_cast<const char *>(place), size - 1);
    return *this;
}

OutList &OutList::WStr(WideString &text)
{
    const std::uint32_t padding = PaddingTo(2, m_state.position);
    const std::uint32_t size = m_state.Measure(padding, 2);
    const unsigned char *place = m_state.Take(padding, size);
    m_state.good = m_state.good && size != 0;
    if (!m_state.good)
        return *this;
    text.clear();
    for (std::uint32_t at = 0; at + 2 < size; at += 2)
        text += static_cast<char16_t>(place[at] | place[at + 1] << 8);
    m_state.position -= 2 * padding;
    return *this;
}

OutList &OutList::Buffer(std::span<const std::byte> &bytes)
{
    const unsigned char *length = m_state.Take(0, buffer_length_size);
    if (length == nullptr)
        return *this;
    const auto size = static_cast<std::uint32_t>(FromBigEndian({length, buffer_length_size}));
    --m_state.element;
    if (const unsigned char *place = m_state.Take(PaddingTo(8, m_state.position), size))
        bytes = {reinterpret_cast<const std::byte *>(place), size};
    return *this;
}

Result OutList::Complete()
{
    if (!m_state.present)
        return m_state.keeper.NoResults();
    if (m_state.good)
        return {};
    return m_state.keeper.ImpossibleResults("result " + std::to_string(m_state.element) +
                                            " doesn't lie within the section");
}

} // namespace kessil::parent
