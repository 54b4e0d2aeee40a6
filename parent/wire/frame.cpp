#include "parent/wire/frame.h"

#include "parent/wire/big_endian.h"
#include "platform/wipe.h"

namespace kessil::parent {
FrameWriter &FrameWriter::Begin(char type)
{
    m_bytes.assign(frame_header_size, 0);
    m_bytes[0] = static_cast<unsigned char>(type);
    m_has_zero_in_text = false;
    return *this;
}

FrameWriter &FrameWriter::U32(std::uint32_t value)
{
    AppendBigEndian(m_bytes, value, 4);
    return *this;
}

FrameWriter &FrameWriter::U64(std::uint64_t value)
{
    AppendBigEndian(m_bytes, value, 8);
    return *this;
}

FrameWriter &FrameWriter::Wide(std::u16string_view text)
{
    for (const char16_t unit : text) {
        m_bytes.push_back(static_cast<unsigned char>(unit));
        m_bytes.push_back(static_cast<unsigned char>(unit >> 8));
    }
    m_bytes.insert(m_bytes.end(), 2, 0);
    m_has_zero_in_text = m_has_zero_in_text || text.find(u'\0') != text.npos;
    return *this;
}

FrameWriter &FrameWriter::Narrow(std::string_view text)
{
    m_bytes.insert(m_bytes.end(), text.begin(), text.end());
    m_bytes.push_back(0);
    m_has_zero_in_text = m_has_zero_in_text || text.find('\0') != text.npos;
    return *this;
}

FrameWriter &FrameWriter::Raw(std::string_view bytes)
{
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    return *this;
}

FrameWriter &FrameWriter::Reserve(std::size_t size)
{
    m_bytes.reserve(frame_header_size + size);
    return *this;
}

void FrameWriter::Wipe()
{
    platform::Wipe(m_bytes.data(), m_bytes.size());
    m_bytes.clear();
}

std::span<const unsigned char> FrameWriter::Finish()
{
    PutBigEndian(m_bytes.data() + 1, m_bytes.size() - frame_header_size, 4);
    return m_bytes;
}

std::optional<std::uint32_t> PayloadReader::U32()
{
    if (m_left.size() < 4)
        return std::nullopt;
    const auto value = static_cast<std::uint32_t>(FromBigEndian(m_left.first(4)));
    m_left = m_left.subspan(4);
    return value;
}

std::optional<std::uint64_t> PayloadReader::U64()
{
    if (m_left.size() < 8)
        return std::nullopt;
    const std::uint64_t value = FromBigEndian(m_left.first(8));
    m_left = m_left.subspan(8);
    return value;
}

std::optional<WideString> PayloadReader::Wide()
{
    WideString text;
    while (m_left.size() >= 2) {
        const auto unit = static_cast<char16_t>(m_left[0] | m_left[1] << 8);
        m_left = m_left.subspan(2);
        if (unit == 0)
            return text;
        text += unit;
    }
    return std::nullopt;
}

} // namespace kessil::parent
