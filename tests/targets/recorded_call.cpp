#include "recorded_call.h"

#include "record.h"

#include <cstdio>
#include <cstring>

namespace {

std::string Format(const char *format, unsigned long long number)
{
    char text[32];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

bool IsPlain(unsigned unit)
{
    return unit >= 0x20 && unit <= 0x7E && unit != '"' && unit != '\\';
}

template <class Unit>
std::string Quoted(const Unit *text, const char *escape)
{
    if (text == nullptr)
        return "null";
    std::string quoted = "\"";
    for (; *text != 0; ++text) {
        const auto unit = static_cast<unsigned>(*text);
        quoted += IsPlain(unit) ? std::string(1, static_cast<char>(unit)) : Format(escape, unit);
    }
    return quoted + "\"";
}

} // namespace

RecordedCall &RecordedCall::Word(const char *name, const std::string &value)
{
    m_line.append(" ").append(name).append("=").append(value);
    return *this;
}

RecordedCall &RecordedCall::Number(const char *name, std::uint64_t value)
{
    return Word(name, Format("%llu", value));
}

RecordedCall &RecordedCall::Handle(const char *name, std::uint64_t value)
{
    return Word(name, Format("0x%llx", value));
}

RecordedCall &RecordedCall::Pointer(const char *name, const void *value)
{
    return Word(name, value == nullptr ? "null" : "some");
}

RecordedCall &RecordedCall::Text(const char *name, const char *value)
{
    return Word(name, Quoted(reinterpret_cast<const unsigned char *>(value), "\\x%02llX"));
}

RecordedCall &RecordedCall::WideText(const char *name, const char16_t *value)
{
    return Word(name, Quoted(value, "\\u%04llX"));
}

RecordedCall &RecordedCall::Data(const char *name, const void *data, std::size_t size)
{
    if (data == nullptr)
        return Word(name, "null");
    std::string digits;
    for (std::size_t at = 0; at < size; ++at)
        digits += Format("%02llX", static_cast<const unsigned char *>(data)[at]);
    return Word(name, digits);
}

RecordedCall &RecordedCall::Done()
{
    Record(m_line);
    return *this;
}

void RecordedCall::Fill(const char *name, void *data) const
{
    const auto bytes = m_behaviour.BytesOf(name);
    if (bytes && !bytes->empty())
        std::memcpy(data, bytes->data(), bytes->size());
}
