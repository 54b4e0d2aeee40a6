#include "parent/section/lists.h"

#include <cstring>

namespace kessil::parent {
void InList::State::Begin()
{
    begun = true;
    position = 0;
    fault.clear();
    shared_terminators.clear();
}

unsigned char *InList::State::Take(std::uint32_t padding, std::uint64_t size)
{
    if (!fault.empty())
        return nullptr;
    const std::uint64_t end = std::uint64_t{position} + padding + size;
    if (end > keeper.Size() && !keeper.Grow(end, position, fault))
        return nullptr;
    unsigned char *place = keeper.View() + position + padding;
    position = static_cast<std::uint32_t>(end);
    return place;
}

void InList::State::Number(std::uint64_t value, int width)
{
    unsigned char *place = Take(0, static_cast<std::uint64_t>(width));
    for (int i = 0; place != nullptr && i < width; ++i)
        place[i] = static_cast<unsigned char>(value >> 8 * (width - 1 - i));
}

unsigned char *InList::State::Buffer(std::uint64_t size)
{
    // Room for all of it at once, so that a list that can't take the data doesn't end in a lone length.
    const std::uint32_t padding = PaddingTo(8, position + buffer_length_size);
    unsigned char *place = Take(0, buffer_length_size + padding + size);
    if (place == nullptr)
        return nullptr;
    for (int i = 0; i < 4; ++i)
        place[i] = static_cast<unsigned char>(size >> (24 - 8 * i));
    return place + buffer_length_size + padding;
}

bool InList::State::Finish()
{
    begun = false;
    for (const std::uint32_t terminator : shared_terminators) {
        const unsigned char *bytes = keeper.View() + terminator;
        if (fault.empty() && position > terminator && (bytes[0] != 0 || (position > terminator + 1 && bytes[1] != 0)))
            fault = "the element behind a wide string at an odd place doesn't begin with two zero bytes";
    }
    return fault.empty();
}

InList &InList::U8(std::uint8_t value)
{
    m_state.Number(value, 1);
    return *this;
}

InList &InList::U16(std::uint16_t value)
{
    m_state.Number(value, 2);
    return *this;
}

InList &InList::U32(std::uint32_t value)
{
    m_state.Number(value, 4);
    return *this;
}

InList &InList::U64(std::uint64_t value)
{
    m_state.Number(value, 8);
    return *this;
}

InList &InList::Str(std::string_view text)
{
    if (text.find('\0') != text.npos && Good())
        m_state.fault = "a text of the argument list holds a zero";
    if (unsigned char *place = m_state.Take(0, std::uint64_t{text.size()} + 1)) {
        std::memcpy(place, text.data(), text.size());
        place[text.size()] = 0;
    }
    return *this;
}

InList &InList::WStr(std::u16string_view text)
{
    if (text.find(u'\0') != text.npos && Good())
        m_state.fault = "a text of the argument list holds a zero";
    const std::uint32_t padding = PaddingTo(2, m_state.position);
    unsigned char *place = m_state.Take(padding, 2 * (std::uint64_t{text.size()} + 1));
    if (place == nullptr)
        return *this;
    for (const char16_t unit : text) {
        *place++ = static_cast<unsigned char>(unit);
        *place++ = static_cast<unsigned char>(unit >> 8);
    }
    place[0] = 0;
    place[1] = 0;
    if (padding != 0) {
        m_state.position -= 2 * padding;
        m_state.shared_terminators.push_back(m_state.position);
    }
    return *this;
}

InList &InList::Room(std::uint32_t size)
{
    m_state.Buffer(size);
    return *this;
}

InList &InList::Bytes(std::span<const std::byte> bytes)
{
    if (unsigned char *place = m_state.Buffer(bytes.size()); place != nullptr && !bytes.empty())
        std::memcpy(place, bytes.data(), bytes.size());
    return *this;
}

std::span<std::byte> InList::Block(std::uint32_t size)
{
    auto *place = reinterpret_cast<std::byte *>(m_state.Buffer(size));
    return {place, place == nullptr ? 0 : size};
}

std::uint32_t InList::Size() const
{
    return m_state.position;
}

bool InList::Good() const
{
    return m_state.fault.empty();
}

} // namespace kessil::parent
