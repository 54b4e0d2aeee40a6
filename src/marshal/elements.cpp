#include "marshal/elements.h"

#include "channel/big_endian.h"

#include <cstring>
#include <new>

namespace kessil {
namespace {

// Bytes to skip from an address to the next multiple of `alignment`, a power of 2.
std::uint32_t Padding(const unsigned char *address, std::uint32_t alignment)
{
    return static_cast<std::uint32_t>(-reinterpret_cast<std::uintptr_t>(address) & (alignment - 1));
}

// Where the data of a buffer element lies behind its length, counted from the element's start; 0 when `length` bytes
// of data don't fit into `left`.
std::uint32_t DataOffset(const unsigned char *buffer, std::uint32_t left, std::uint32_t length)
{
    constexpr std::uint32_t prefix = 4;
    const std::uint32_t offset = prefix + Padding(buffer + prefix, 8);
    return left >= offset && left - offset >= length ? offset : 0;
}

// A unit of a wide string lies at an even address, but nothing says so to the compiler, and its bytes have an order.
char16_t LoadUnit(const unsigned char *bytes)
{
    return static_cast<char16_t>(bytes[0] | (bytes[1] << 8));
}

void StoreUnit(unsigned char *bytes, char16_t unit)
{
    bytes[0] = static_cast<unsigned char>(unit & 0xFF);
    bytes[1] = static_cast<unsigned char>(unit >> 8);
}

template <class C>
std::uint32_t LengthToZero(const std::basic_string<C> &text)
{
    return static_cast<std::uint32_t>(std::char_traits<C>::length(text.c_str()));
}

} // namespace

template <class T>
std::uint32_t CBasicElement<T>::ReadFromBuffer(unsigned char *buffer, std::uint32_t size)
{
    if (size < sizeof(T))
        return 0;
    value = LoadBigEndian<T>(buffer);
    return sizeof(T);
}

template <class T>
std::uint32_t CBasicElement<T>::WriteToBuffer(unsigned char *buffer, std::uint32_t size)
{
    if (size < sizeof(T))
        return 0;
    StoreBigEndian(buffer, value);
    return sizeof(T);
}

template class CBasicElement<std::uint8_t>;
template class CBasicElement<std::uint16_t>;
template class CBasicElement<std::uint32_t>;
template class CBasicElement<std::uint64_t>;

std::uint32_t Handle::ReadFromBuffer(unsigned char *buffer, std::uint32_t size)
{
    U32 low;
    const std::uint32_t taken = low.ReadFromBuffer(buffer, size);
    if (taken != 0)
        value = low.value;
    return taken;
}

std::uint32_t Handle::WriteToBuffer(unsigned char *buffer, std::uint32_t size)
{
    return U32(static_cast<std::uint32_t>(value)).WriteToBuffer(buffer, size);
}

template <>
std::uint32_t CNullTermString<char>::ReadFromBuffer(unsigned char *buffer, std::uint32_t size)
{
    text.clear();
    const void *const end = size == 0 ? nullptr : std::memchr(buffer, 0, size);
    if (end == nullptr) {
        text.assign(reinterpret_cast<const char *>(buffer), size);
        return 0;
    }
    const auto length = static_cast<std::uint32_t>(static_cast<const unsigned char *>(end) - buffer);
    text.assign(reinterpret_cast<const char *>(buffer), length);
    return length + 1;
}

template <>
std::uint32_t CNullTermString<char>::WriteToBuffer(unsigned char *buffer, std::uint32_t size)
{
    const std::uint32_t length = LengthToZero(text);
    if (size < length + 1)
        return 0;
    std::memcpy(buffer, text.c_str(), length + 1);
    return length + 1;
}

// One byte more than is written; it counts when the section's size is decided.
template <>
std::uint32_t CNullTermString<char>::GetBufferSize()
{
    return static_cast<std::uint32_t>(text.size()) + 2;
}

template <>
std::uint32_t CNullTermString<char16_t>::ReadFromBuffer(unsigned char *buffer, std::uint32_t size)
{
    const std::uint32_t padding = Padding(buffer, 2);
    if (padding > size)
        return 0;
    text.clear();
    const std::uint32_t units = (size - padding) / 2;
    for (std::uint32_t i = 0; i < units; ++i) {
        const char16_t unit = LoadUnit(buffer + padding + 2 * i);
        if (unit == 0)
            return 2 * (i + 1) - padding;
        text.push_back(unit);
    }
    return 0;
}

template <>
std::uint32_t CNullTermString<char16_t>::WriteToBuffer(unsigned char *buffer, std::uint32_t size)
{
    const std::uint32_t padding = Padding(buffer, 2);
    if (padding > size)
        return 0;
    const std::uint32_t length = LengthToZero(text);
    const std::uint32_t needed = 2 * length + 2;
    if (size - padding < needed)
        return 0 - padding;
    for (std::uint32_t i = 0; i <= length; ++i)
        StoreUnit(buffer + padding + 2 * i, text.c_str()[i]);
    return needed - padding;
}

template <>
std::uint32_t CNullTermString<char16_t>::GetBufferSize()
{
    return 2 * static_cast<std::uint32_t>(text.size()) + 4;
}

std::uint32_t CBufferElement::ReadFromBuffer(unsigned char *buffer, std::uint32_t left)
{
    if (left < sizeof size)
        return 0;
    size = LoadBigEndian<std::uint32_t>(buffer);
    const std::uint32_t offset = DataOffset(buffer, left, size);
    if (offset == 0)
        return 0;
    data = buffer + offset;
    return offset + size;
}

std::uint32_t CBufferElement::WriteToBuffer(unsigned char *buffer, std::uint32_t left)
{
    if (left < sizeof size)
        return 0;
    StoreBigEndian(buffer, size);
    const std::uint32_t offset = DataOffset(buffer, left, size);
    if (offset == 0)
        return 0;
    data = buffer + offset;
    return offset + size;
}

std::uint32_t CInputElement::ReadFromBuffer(unsigned char *buffer, std::uint32_t left)
{
    CBufferElement source;
    const std::uint32_t taken = source.ReadFromBuffer(buffer, left);
    if (taken == 0)
        return 0;
    if (m_buffer.SetSize(source.size) != 0)
        throw std::bad_alloc();
    std::memcpy(m_buffer.Data(), source.data, source.size);
    return taken;
}

std::uint32_t CInputElement::WriteToBuffer(unsigned char *buffer, std::uint32_t left)
{
    CBufferElement target(m_buffer.Size());
    const std::uint32_t taken = target.WriteToBuffer(buffer, left);
    if (taken != 0)
        std::memcpy(target.data, m_buffer.Data(), target.size);
    return taken;
}

} // namespace kessil
