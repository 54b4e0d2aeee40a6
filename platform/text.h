#pragma once

#include <string>
#include <string_view>

namespace kessil {

/// Wide text: 16-bit units on every platform, in the host's byte order. Units that form no character are kept.
using WideString = std::u16string;

namespace platform {

/// Wide text as UTF-8. A lone surrogate U+DC80 to U+DCFF becomes the one byte that it stands for (see FromUtf8);
/// any other lone surrogate becomes its three-byte form.
std::string ToUtf8(std::u16string_view text);

/// UTF-8 as wide text. Each byte that isn't part of well-formed UTF-8 becomes the lone surrogate U+DC00 plus the
/// byte, so ToUtf8 gives back exactly the bytes that went in.
WideString FromUtf8(std::string_view text);

} // namespace platform
} // namespace kessil
