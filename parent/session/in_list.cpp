#include "parent/session/calls.h"

#include <algorithm>

namespace kessil::parent {
namespace {

// Adds an element by `add`; where the section is too small for it, in a larger section.
template <class Add>
auto AddElement(Session &session, Add add)
{
    ArgumentList &list = session.Section().Arguments();
    auto added = add(list);
    if (!added && list.Good() && GrowSection(session, list.Needed()))
        added = add(list);
    return added;
}

void AddNumber(Session &session, std::uint64_t value, int width)
{
    AddElement(session, [&](ArgumentList &list) { return list.Number(value, width); });
}

unsigned char *AddBuffer(Session &session, std::uint64_t size)
{
    return AddElement(session, [&](ArgumentList &list) { return list.Buffer(size); });
}

} // namespace

InList &InList::U8(std::uint8_t value)
{
    AddNumber(m_session, value, 1);
    return *this;
}

InList &InList::U16(std::uint16_t value)
{
    AddNumber(m_session, value, 2);
    return *this;
}

InList &InList::U32(std::uint32_t value)
{
    AddNumber(m_session, value, 4);
    return *this;
}

InList &InList::U64(std::uint64_t value)
{
    AddNumber(m_session, value, 8);
    return *this;
}

InList &InList::Str(std::string_view text)
{
    AddElement(m_session, [&](ArgumentList &list) { return list.Narrow(text); });
    return *this;
}

InList &InList::WStr(std::u16string_view text)
{
    AddElement(m_session, [&](ArgumentList &list) { return list.Wide(text); });
    return *this;
}

InList &InList::Room(std::uint32_t size)
{
    AddBuffer(m_session, size);
    return *this;
}

InList &InList::Bytes(std::span<const std::byte> bytes)
{
    if (unsigned char *place = AddBuffer(m_session, bytes.size()))
        std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::byte *>(place));
    return *this;
}

std::span<std::byte> InList::Block(std::uint32_t size)
{
    auto *place = reinterpret_cast<std::byte *>(AddBuffer(m_session, size));
    return {place, place == nullptr ? 0 : size};
}

std::uint32_t InList::Size() const
{
    return m_session.Section().Arguments().Size();
}

bool InList::Good() const
{
    return m_session.Section().Arguments().Good();
}

} // namespace kessil::parent
