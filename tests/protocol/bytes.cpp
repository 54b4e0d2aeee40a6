#include "protocol/bytes.h"

#include <cctype>
#include <stdexcept>

namespace kessil::test {
namespace {

unsigned Digit(char digit)
{
    const std::size_t value = std::string_view("0123456789abcdef").find(static_cast<char>(std::tolower(digit)));
    if (value == std::string_view::npos)
        throw std::invalid_argument("not a hexadecimal digit");
    return static_cast<unsigned>(value);
}

} // namespace

Bytes Hex(std::string_view digits)
{
    Bytes bytes;
    unsigned pending = 0;
    bool half = false;
    for (const char digit : digits) {
        if (digit == ' ')
            continue;
        pending = pending * 16 + Digit(digit);
        if (half)
            bytes += static_cast<char>(pending & 0xFF);
        half = !half;
    }
    if (half)
        throw std::invalid_argument("half a byte");
    return bytes;
}

std::string Show(const Bytes &bytes)
{
    std::string text;
    for (const char byte : bytes) {
        text += "0123456789ABCDEF"[(byte >> 4) & 15];
        text += "0123456789ABCDEF"[byte & 15];
        text += ' ';
    }
    return text;
}

Bytes Be32(std::uint32_t value)
{
    Bytes bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>((value >> shift) & 0xFF);
    return bytes;
}

Bytes Be64(std::uint64_t value)
{
    return Be32(static_cast<std::uint32_t>(value >> 32)).append(Be32(static_cast<std::uint32_t>(value)));
}

Bytes Narrow(std::string_view text)
{
    return Bytes(text) + '\0';
}

Bytes Wide(std::u16string_view text)
{
    Bytes bytes;
    for (const char16_t unit : WideString(text) + u'\0') {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

Bytes Frame(char type, const Bytes &payload)
{
    return Bytes(1, type).append(Be32(static_cast<std::uint32_t>(payload.size()))).append(payload);
}

Bytes LoadFrame(const WideString &library)
{
    return Frame('L', Wide(library));
}

Bytes CallFrame(const WideString &library, std::string_view function, std::string_view signature)
{
    return Frame('F', Wide(library).append(Narrow(function)).append(Narrow(signature)));
}

Bytes SectionFrame(const WideString &name, std::uint64_t size)
{
    return Frame('R', Wide(name).append(Be64(size)));
}

Bytes ErrorFrame(std::uint32_t return_code, std::uint32_t system_error, std::u16string_view text)
{
    return Frame('E', Be32(return_code).append(Be32(system_error)).append(Wide(text)));
}

Bytes CountUp(std::size_t count)
{
    Bytes bytes;
    while (bytes.size() < count)
        bytes += static_cast<char>(bytes.size() & 0xFF);
    return bytes;
}

} // namespace kessil::test
