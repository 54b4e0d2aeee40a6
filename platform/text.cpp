#include "platform/text.h"

#include <cstdint>

namespace kessil::platform {
namespace {

constexpr char32_t first_byte_surrogate = 0xDC00;

void AppendUtf8(std::string &out, char32_t code)
{
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | (code >> 6));
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | (code >> 12));
        put(0x80 | ((code >> 6) & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | (code >> 18));
        put(0x80 | ((code >> 12) & 0x3F));
        put(0x80 | ((code >> 6) & 0x3F));
        put(0x80 | (code & 0x3F));
    }
}

bool IsHighSurrogate(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char16_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// The length of the well-formed sequence at the front of `text` and its code point, or 0.
std::size_t DecodeUtf8(std::string_view text, char32_t &code)
{
    const auto byte = [text](std::size_t i) -> char32_t { return static_cast<unsigned char>(text[i]); };
    const char32_t lead = byte(0);
    if (lead < 0x80) {
        code = lead;
        return 1;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length)
        return 0;
    code = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
        code = (code << 6) | (byte(i) & 0x3F);
    }
    const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return overlong || surrogate || code > 0x10FFFF ? 0 : length;
}

} // namespace

std::string ToUtf8(std::u16string_view text)
{
    std::string out;
    // The largest possible size: growing would leave a copy of the text behind, and the text may be a secret.
    out.reserve(3 * text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            const char32_t high = unit - 0xD800u;
            const char32_t low = text[++i] - 0xDC00u;
            AppendUtf8(out, 0x10000 + (high << 10) + low);
        } else if (unit >= first_byte_surrogate + 0x80 && unit <= first_byte_surrogate + 0xFF) {
            out.push_back(static_cast<char>(unit - first_byte_surrogate));
        } else {
            AppendUtf8(out, unit);
        }
    }
    return out;
}

WideString FromUtf8(std::string_view text)
{
    WideString out;
    out.reserve(text.size());
    while (!text.empty()) {
        char32_t code = 0;
        const std::size_t length = DecodeUtf8(text, code);
        if (length == 0) {
            out.push_back(static_cast<char16_t>(first_byte_surrogate + static_cast<unsigned char>(text[0])));
            text.remove_prefix(1);
            continue;
        }
        if (code >= 0x10000) {
            out.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(code));
        }
        text.remove_prefix(length);
    }
    return out;
}

} // namespace kessil::platform
