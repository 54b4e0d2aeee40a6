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

    /// Bytes without a terminator.
    FrameWriter &Raw(std::string_view bytes);

    /// The whole frame, its length filled in; valid until the next Begin.
    std::span<const unsigned char> Finish();

    /// Allocates room for a payload of `size` bytes. A frame that stays within it isn't moved, so that no copy of a
    /// secret stays behind in released memory.
    FrameWriter &Reserve(std::size_t size);

    /// Overwrites a frame that held a secret, and leaves it empty.
    void Wipe();

    /// Whether a text of this frame has a zero inside. The helper would take it for the text's end.
    bool HasZeroInText() const { return m_has_zero_in_text; }

private:
    std::vector<unsigned char> m_bytes;
    bool m_has_zero_in_text = false;
};

/// Reads a payload field by field. A field that the payload doesn't hold whole is empty.
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

} // namespace kessil::parent
