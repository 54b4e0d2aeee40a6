#include "parent/wire/bare_values.h"

#include "platform/wipe.h"

namespace kessil::parent {
namespace {

constexpr unsigned char command_follows = 0x66;
constexpr std::size_t command_size = 2;

} // namespace

BareWriter &BareWriter::Begin(int command)
{
    m_bytes.assign({command_follows, static_cast<unsigned char>(command)});
    return *this;
}

BareWriter &BareWriter::U32(std::uint32_t value)
{
    AppendBigEndian(m_bytes, value, 4);
    return *this;
}

BareWriter &BareWriter::U64(std::uint64_t value)
{
    AppendBigEndian(m_bytes, value, 8);
    return *this;
}

BareWriter &BareWriter::Text(std::string_view text)
{
    U32(static_cast<std::uint32_t>(text.size()));
    m_bytes.insert(m_bytes.end(), text.begin(), text.end());
    return *this;
}

BareWriter &BareWriter::Raw(std::span<const unsigned char> bytes)
{
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    return *this;
}

bool BareWriter::HasArguments() const
{
    return m_bytes.size() > command_size;
}

void BareWriter::Reserve(std::size_t size)
{
    m_bytes.reserve(command_size + size);
}

void BareWriter::Wipe()
{
    platform::Wipe(m_bytes.data(), m_bytes.size());
    m_bytes.clear();
}

} // namespace kessil::parent
