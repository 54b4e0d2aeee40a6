#include "support/wire.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace kessil::test {
namespace {

unsigned Digit(char digit)
{
    if (digit >= '0' && digit <= '9')
        return static_cast<unsigned>(digit - '0');
    if (digit >= 'A' && digit <= 'F')
        return static_cast<unsigned>(digit - 'A' + 10);
    if (digit >= 'a' && digit <= 'f')
        return static_cast<unsigned>(digit - 'a' + 10);
    throw std::invalid_argument("not a hexadecimal digit");
}

} // namespace

Bytes operator+(Bytes left, const Bytes &right)
{
    left += right;
    return left;
}

Bytes &operator+=(Bytes &left, const Bytes &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes Hex(std::string_view digits)
{
    Bytes bytes;
    bool half = false;
    for (const char digit : digits) {
        if (digit == ' ')
            continue;
        if (half)
            bytes.back() = static_cast<unsigned char>(bytes.back() * 16 + Digit(digit));
        else
            bytes.push_back(static_cast<unsigned char>(Digit(digit)));
        half = !half;
    }
    if (half)
        throw std::invalid_argument("half a byte");
    return bytes;
}

std::string Show(const Bytes &bytes)
{
    std::string text;
    for (const unsigned char byte : bytes)
        text += {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15], ' '};
    return text;
}

Bytes Repeat(unsigned char byte, std::size_t count)
{
    return Bytes(count, byte);
}

Bytes CountUp(std::size_t count)
{
    Bytes bytes(count);
    unsigned next = 0;
    for (unsigned char &byte : bytes)
        byte = static_cast<unsigned char>(next++);
    return bytes;
}

Bytes First(std::size_t count, const Bytes &bytes)
{
    return {bytes.begin(), std::next(bytes.begin(), static_cast<std::ptrdiff_t>(std::min(count, bytes.size())))};
}

Bytes Behind(std::size_t count, const Bytes &bytes)
{
    return {std::next(bytes.begin(), static_cast<std::ptrdiff_t>(std::min(count, bytes.size()))), bytes.end()};
}

Bytes Last(std::size_t count, const Bytes &bytes)
{
    return Behind(bytes.size() - std::min(count, bytes.size()), bytes);
}

Bytes FlipBit(Bytes bytes, std::size_t bit)
{
    bytes.at(bit / 8) = static_cast<unsigned char>(bytes[bit / 8] ^ (1U << (bit % 8)));
    return bytes;
}

Bytes Be32(std::uint32_t value)
{
    return {static_cast<unsigned char>(value >> 24), static_cast<unsigned char>(value >> 16),
            static_cast<unsigned char>(value >> 8), static_cast<unsigned char>(value)};
}

Bytes Be64(std::uint64_t value)
{
    return Be32(static_cast<std::uint32_t>(value >> 32)) + Be32(static_cast<std::uint32_t>(value));
}

Bytes Plain(std::string_view text)
{
    return {text.begin(), text.end()};
}

Bytes Narrow(std::string_view text)
{
    return Plain(text) + Bytes{0};
}

Bytes Wide(std::u16string_view text)
{
    Bytes bytes;
    for (const char16_t unit : text)
        bytes += {static_cast<unsigned char>(unit & 0xFF), static_cast<unsigned char>(unit >> 8)};
    return bytes + Bytes{0, 0};
}

Bytes Frame(char type, const Bytes &payload)
{
    return Bytes{static_cast<unsigned char>(type)} + Be32(static_cast<std::uint32_t>(payload.size())) + payload;
}

Bytes LogonFrame(std::u16string_view user, std::u16string_view domain, std::u16string_view password, std::uint32_t flag)
{
    return Frame('A', Wide(user) + Wide(domain) + Wide(password) + Wide(u"") + Be32(flag));
}

Bytes PathFrame(std::u16string_view directories)
{
    return Frame('P', Wide(directories));
}

Bytes ErrorTextFrame(std::uint32_t code, std::u16string_view file)
{
    return Frame('X', Be32(code) + Wide(file));
}

Bytes LoadFrame(std::u16string_view library)
{
    return Frame('L', Wide(library));
}

Bytes LoadAltFrame(std::string_view library)
{
    return Frame('l', Plain(library));
}

Bytes CallFrame(std::u16string_view library, std::string_view function, std::string_view signature)
{
    return Frame('F', Wide(library) + Narrow(function) + Narrow(signature));
}

Bytes CommandRequest(std::uint8_t command, const Bytes &values)
{
    return Bytes{'f', command} + values;
}

Bytes OrderlyStop()
{
    return CommandRequest(1);
}

Bytes ResizeFrame(std::u16string_view name, std::uint64_t size)
{
    return Frame('R', Wide(name) + Be64(size));
}

Bytes SuccessFrame()
{
    return Frame('S', {});
}

Bytes ErrorFrame(std::uint32_t return_code, std::uint32_t system_error, std::u16string_view text)
{
    return Frame('E', Be32(return_code) + Be32(system_error) + Wide(text));
}

Bytes FailureFrame(std::u16string_view text)
{
    return ErrorFrame(0xFFFFFFFF, 0xFFFFFFFF, text);
}

} // namespace kessil::test
