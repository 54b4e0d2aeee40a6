#include "parent/session/session.h"

namespace kessil::parent {
namespace {

template <class Integer>
void ReadNumber(Session &session, Integer &value)
{
    std::uint64_t number = 0;
    if (session.Section().Results().Number(number, sizeof value))
        value = static_cast<Integer>(number);
}

} // namespace

OutList &OutList::U8(std::uint8_t &value)
{
    ReadNumber(m_session, value);
    return *this;
}

OutList &OutList::U16(std::uint16_t &value)
{
    ReadNumber(m_session, value);
    return *this;
}

OutList &OutList::U32(std::uint32_t &value)
{
    ReadNumber(m_session, value);
    return *this;
}

OutList &OutList::U64(std::uint64_t &value)
{
    ReadNumber(m_session, value);
    return *this;
}

OutList &OutList::Str(std::string &text)
{
    m_session.Section().Results().Narrow(text);
    return *this;
}

OutList &OutList::WStr(WideString &text)
{
    m_session.Section().Results().Wide(text);
    return *this;
}

OutList &OutList::Buffer(std::span<const std::byte> &bytes)
{
    m_session.Section().Results().Buffer(bytes);
    return *this;
}

Result OutList::Complete()
{
    const ResultList &results = m_session.Section().Results();
    if (!results.Present())
        return m_session.NotSent("there are no results: no call has been answered");
    if (results.Good())
        return {};
    return m_session.EndByResults("result " + std::to_string(results.Element()) + " doesn't lie within the section");
}

} // namespace kessil::parent
