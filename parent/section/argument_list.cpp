#include "parent/section/argument_list.h"

#include "parent/wire/big_endian.h"

namespace kessil::parent {
namespace {

constexpr const char *zero_in_text = "a text of the argument list holds a zero";

} // namespace

void ArgumentList::Begin()
{
    m_begun = true;
    m_position = 0;
    m_needed = 0;
    m_failure.clear();
    m_shared_terminators.clear();
}

void ArgumentList::Fail(std::string reason)
{
    if (Good())
        m_failure = std::move(reason);
}

// The next `size` bytes of the section, behind `padding` bytes.
unsigned char *ArgumentList::Place(std::uint32_t padding, std::uint64_t size)
{
    if (!Good())
        return nullptr;
    const std::uint64_t end = std::uint64_t{m_position} + padding + size;
    if (end > m_section.Size()) {
        m_needed = end;
        return nullptr;
    }
    unsigned char *place = m_section.View() + m_position + padding;
    m_position = static_cast<std::uint32_t>(end);
    return place;
}

bool ArgumentList::Number(std::uint64_t value, int width)
{
    unsigned char *place = Place(0, static_cast<std::uint64_t>(width));
    if (place != nullptr)
        PutBigEndian(place, value, width);
    return place != nullptr;
}

bool ArgumentList::Narrow(std::string_view text)
{
    if (text.find('\0') != text.npos)
        Fail(zero_in_text);
    unsigned char *place = Place(0, std::uint64_t{text.size()} + 1);
    if (place == nullptr)
        return false;
    text.copy(reinterpret_cast<char *>(place), text.size());
    place[text.size()] = 0;
    return true;
}

bool ArgumentList::Wide(std::u16string_view text)
{
    if (text.find(u'\0') != text.npos)
        Fail(zero_in_text);
    const std::uint32_t padding = PaddingTo(wide_alignment, m_position);
    unsigned char *place = Place(padding, 2 * (std::uint64_t{text.size()} + 1));
    if (place == nullptr)
        return false;
    for (const char16_t unit : text) {
        *place++ = static_cast<unsigned char>(unit);
        *place++ = static_cast<unsigned char>(unit >> 8);
    }
    place[0] = 0;
    place[1] = 0;
    if (padding != 0) {
        m_position -= 2 * padding;
        m_shared_terminators.push_back(m_position);
    }
    return true;
}

unsigned char *ArgumentList::Buffer(std::uint64_t size)
{
    // The length and the data at once, so that a list without room for the data doesn't end in a lone length.
    const std::uint32_t padding = PaddingTo(buffer_alignment, m_position + buffer_length_size);
    unsigned char *place = Place(0, buffer_length_size + padding + size);
    if (place == nullptr)
        return nullptr;
    PutBigEndian(place, size, buffer_length_size);
    return place + buffer_length_size + padding;
}

bool ArgumentList::Finish()
{
    m_begun = false;
    for (const std::uint32_t terminator : m_shared_terminators) {
        const unsigned char *bytes = m_section.View() + terminator;
        if (Good() && m_position > terminator && (bytes[0] != 0 || (m_position > terminator + 1 && bytes[1] != 0)))
            Fail("the element behind a wide string at an odd place doesn't begin with two zero bytes");
    }
    return Good();
}

} // namespace kessil::parent
