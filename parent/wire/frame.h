#pragma once

#include "platform/text.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace kessil::parent {

/// A frame on the pipe, in both directions:
///
///     offset 0   1 byte    type, one ASCII letter
///     offset 1   4 bytes   number of payload bytes, big-endian
///     offset 5             payload
///
/// Numbers in payloads are big-endian. A wide string is UTF-16 little-endian units and one zero unit; an 8-bit string
/// is bytes and one zero byte. Neither can hold a zero.
constexpr std::size_t frame_header_size = 5;

/// Builds one frame after another in the same memory.
class FrameWriter
{
public:
    FrameWriter &Begin(char type);
    FrameWriter &U32(std::uint32_t value);
    FrameWriter &U64(std::uint64_t value);
    FrameWriter &Wide(std::u16string_view text);
    FrameWriter &Narrow(std::string_view text);

    /// Bytes as they are, without an end mark.
    FrameWriter &Raw(std::string_view bytes);

    /// The whole frame, its length filled in; valid until the next Begin.
    std::span<const unsigned char> Finish();

    /// Makes room for a payload of `size` bytes. A frame that stays within leaves no copy of itself behind in memory
    /// that was given back.
    FrameWriter &Reserve(std::size_t size);

    /// Overwrites the frame, which held a secret, and is empty then.
    void Wipe();

    /// Whether a text held a zero, so that the frame would say something else than was meant.
    bool Spoiled() const { return m_spoiled; }

private:
    std::vector<unsigned char> m_bytes;
    bool m_spoiled = false;
};

/// Takes a payload apart, field by field.
class PayloadReader
{
public:
    explicit PayloadReader(std::span<const unsigned char> payload) : m_left(payload) {}

    std::optional<std::uint32_t> U32();
    std::optional<std::uint64_t> U64();

    /// Empty when no zero unit ends the text within the payload.
    std::optional<WideString> Wide();

private:
    std::span<const unsigned char> m_left;
};

/// A number out of its big-endian bytes.
std::uint64_t FromBigEndian(std::span<const unsigned char> bytes);

} // namespace kessil::parent
