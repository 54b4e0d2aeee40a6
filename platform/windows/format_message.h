#pragma once

#include "platform/windows/native.h"

#include <memory>
#include <optional>

namespace kessil::platform {

/// The text of a message, out of the system's own table, or of that of `module` with FORMAT_MESSAGE_FROM_HMODULE among
/// the `source_flags`. Inserts stay as they are, and the platform chooses the language. None on failure.
inline std::optional<WideString> FormatMessageText(DWORD source_flags, HMODULE module, DWORD number)
{
    struct LocalDeleter
    {
        void operator()(wchar_t *text) const { LocalFree(text); }
    };
    constexpr DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS;
    wchar_t *buffer = nullptr;
    // With the first flag the system takes the place for a text as the place for a pointer to one.
    const DWORD length =
        FormatMessageW(flags | source_flags, module, number, 0, reinterpret_cast<wchar_t *>(&buffer), 0, nullptr);
    const std::unique_ptr<wchar_t, LocalDeleter> text(buffer);
    if (length == 0 || !text)
        return std::nullopt;
    return WideString(reinterpret_cast<const char16_t *>(text.get()), length);
}

} // namespace kessil::platform
