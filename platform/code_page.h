#pragma once

#include "platform/text.h"

#include <string_view>

namespace kessil::platform {

/// 8-bit text in the code page that the calling thread takes for "ANSI" on Windows, in UTF-8 on Linux, as wide text. A
/// byte that means nothing there becomes what the system puts in its place; on Linux it becomes a lone surrogate as in
/// FromUtf8. Empty when the system refuses.
WideString FromThreadCodePage(std::string_view text);

} // namespace kessil::platform
