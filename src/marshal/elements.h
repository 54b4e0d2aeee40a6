#pragma once

#include "channel/byte_buffer.h"

#include <cstdint>
#include <string>
#include <utility>

// How one value lies in the section, behind the one before it:
//   U8 U16 U32 U64   1, 2, 4 or 8 bytes, most significant first, not aligned
//   Handle           4 bytes, most significant first, not aligned
//   STR              the bytes of the string and one zero byte
//   WSTR             0 or 1 byte of padding to an even address; the units, least significant byte first; a zero unit
//   BUF IN           length, 4 bytes, most significant first; 0 to 7 bytes of padding to a multiple of 8; the data
// Padding is skipped and never written.

namespace kessil {

/// One value on its way into or out of the section. Keeps no position: the caller holds the running pointer and the
/// bytes left. What a target gets of an element that was read, the element returns as its Argument.
class CDataElement
{
public:
    CDataElement() = default;
    virtual ~CDataElement() = default;
    CDataElement(const CDataElement &) = default;
    CDataElement &operator=(const CDataElement &) = default;

    /// Takes the value from `buffer`, where `size` bytes are left. Returns how many bytes to step forward, 0 when the
    /// value doesn't lie there whole.
    virtual std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t size) = 0;

    /// Puts the value to `buffer`, where `size` bytes are left. Returns how many bytes to step forward, 0 when there
    /// is no room.
    virtual std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t size) = 0;

    /// Upper bound of the bytes that WriteToBuffer uses; 0 means failure.
    virtual std::uint32_t GetBufferSize() = 0;
};

/// An unsigned integer of 8, 16, 32 or 64 bits.
template <class T>
class CBasicElement final : public CDataElement
{
public:
    CBasicElement() = default;
    explicit CBasicElement(T initial) : value(initial) {}

    std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t GetBufferSize() override { return sizeof(T); }

    T Argument() const { return value; }

    T value = 0;
};

extern template class CBasicElement<std::uint8_t>;
extern template class CBasicElement<std::uint16_t>;
extern template class CBasicElement<std::uint32_t>;
extern template class CBasicElement<std::uint64_t>;

/// A handle: 64 bits wide for the library, and 32 in the section. The upper half is lost on the way out.
class Handle final : public CDataElement
{
public:
    Handle() = default;
    explicit Handle(std::uint64_t initial) : value(initial) {}

    std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t GetBufferSize() override { return 4; }

    std::uint64_t Argument() const { return value; }

    std::uint64_t value = 0;
};

/// A zero-terminated string of 8-bit or 16-bit characters. Owns its characters.
template <class C>
class CNullTermString final : public CDataElement
{
public:
    CNullTermString() = default;
    explicit CNullTermString(std::basic_string<C> initial) : text(std::move(initial)) {}

    /// Wide strings give back less than they took when padding was skipped, by the number of bytes skipped, and so the
    /// next element begins inside the terminator. Parents lay their lists out by this rule.
    std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t size) override;
    std::uint32_t GetBufferSize() override;

    const C *Text() const { return text.c_str(); }
    const C *Argument() const { return Text(); }

    std::basic_string<C> text;
};

template <>
std::uint32_t CNullTermString<char>::ReadFromBuffer(unsigned char *buffer, std::uint32_t size);
template <>
std::uint32_t CNullTermString<char>::WriteToBuffer(unsigned char *buffer, std::uint32_t size);
template <>
std::uint32_t CNullTermString<char>::GetBufferSize();
template <>
std::uint32_t CNullTermString<char16_t>::ReadFromBuffer(unsigned char *buffer, std::uint32_t size);
template <>
std::uint32_t CNullTermString<char16_t>::WriteToBuffer(unsigned char *buffer, std::uint32_t size);
template <>
std::uint32_t CNullTermString<char16_t>::GetBufferSize();

/// Data that stays in the section: the target gets a pointer to it and nothing is copied, in either direction.
/// Writing moves nothing either, and so the bytes reach the parent only if the data comes to lie where it was read.
class CBufferElement final : public CDataElement
{
public:
    CBufferElement() = default;
    explicit CBufferElement(std::uint32_t length) : size(length) {}

    std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t left) override;
    std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t left) override;
    std::uint32_t GetBufferSize() override { return size + 12; }

    std::uint32_t Size() const { return size; }
    void *Argument() const { return data; }

    std::uint32_t size = 0;
    unsigned char *data = nullptr; ///< in the section; null until the element was read or written
};

/// Data in a private block: taken out of the section when read, copied back if written. A block that can't be
/// allocated raises std::bad_alloc.
class CInputElement final : public CDataElement
{
public:
    CInputElement() : m_buffer(1024) {}

    std::uint32_t ReadFromBuffer(unsigned char *buffer, std::uint32_t left) override;
    std::uint32_t WriteToBuffer(unsigned char *buffer, std::uint32_t left) override;
    std::uint32_t GetBufferSize() override { return m_buffer.Size() + 12; }

    std::uint32_t Size() const { return m_buffer.Size(); }

    /// The private block, never null.
    unsigned char *Data() { return m_buffer.Data(); }
    void *Argument() { return Data(); }

private:
    CByteBuffer m_buffer;
};

using U8 = CBasicElement<std::uint8_t>;
using U16 = CBasicElement<std::uint16_t>;
using U32 = CBasicElement<std::uint32_t>;
using U64 = CBasicElement<std::uint64_t>;
using STR = CNullTermString<char>;
using WSTR = CNullTermString<char16_t>;
using BUF = CBufferElement;
using IN = CInputElement;

} // namespace kessil
