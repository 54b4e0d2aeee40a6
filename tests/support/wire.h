#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

// What crosses the pipe and the section, put together by the tests' own hands: nothing here comes from src/ or parent/.

namespace kessil::test {

using Bytes = std::vector<unsigned char>;

inline Bytes operator+(Bytes left, const Bytes &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// Pairs of hexadecimal digits, with blanks where they help the eye: "53 0000001A" as five bytes.
inline Bytes Hex(const std::string &text)
{
    Bytes bytes;
    std::string pair;
    for (const char digit : text) {
        if (digit == ' ')
            continue;
        pair += digit;
        if (pair.size() < 2)
            continue;
        char *end = nullptr;
        bytes.push_back(static_cast<unsigned char>(std::strtoul(pair.c_str(), &end, 16)));
        if (*end != '\0')
            std::abort();
        pair.clear();
    }
    if (!pair.empty())
        std::abort();
    return bytes;
}

inline Bytes Repeat(unsigned char byte, std::size_t count)
{
    return Bytes(count, byte);
}

/// 4 and 8 bytes, most significant first.
inline Bytes Be32(std::uint32_t value)
{
    return {static_cast<unsigned char>(value >> 24), static_cast<unsigned char>(value >> 16),
            static_cast<unsigned char>(value >> 8), static_cast<unsigned char>(value)};
}
inline Bytes Be64(std::uint64_t value)
{
    return Be32(static_cast<std::uint32_t>(value >> 32)) + Be32(static_cast<std::uint32_t>(value));
}

/// The characters alone.
inline Bytes Plain(std::string_view text)
{
    return {text.begin(), text.end()};
}

/// The characters and a zero byte.
inline Bytes Narrow(std::string_view text)
{
    return Plain(text) + Bytes{0};
}

/// The units, least significant byte first, and a zero unit.
inline Bytes Wide(std::u16string_view text)
{
    Bytes bytes;
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<unsigned char>(unit & 0xFF));
        bytes.push_back(static_cast<unsigned char>(unit >> 8));
    }
    return bytes + Bytes{0, 0};
}

inline Bytes Frame(char type, const Bytes &payload)
{
    return Bytes{static_cast<unsigned char>(type)} + Be32(static_cast<std::uint32_t>(payload.size())) + payload;
}

inline Bytes SuccessFrame()
{
    return Frame('S', {});
}

inline Bytes ErrorFrame(std::uint32_t return_code, std::uint32_t system_error, std::u16string_view text)
{
    return Frame('E', Be32(return_code) + Be32(system_error) + Wide(text));
}

/// A failure of marshalling: both codes -1.
inline Bytes FailureFrame(std::u16string_view text)
{
    return ErrorFrame(0xFFFFFFFF, 0xFFFFFFFF, text);
}

inline Bytes ResizeFrame(std::u16string_view name, std::uint64_t size)
{
    return Frame('R', Wide(name) + Be64(size));
}

inline Bytes CallFrame(std::u16string_view library, std::string_view function, std::string_view signature)
{
    return Frame('F', Wide(library) + Narrow(function) + Narrow(signature));
}

} // namespace kessil::test
