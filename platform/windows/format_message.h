#pragma once

#include "platform/windows/native.h"

#include <memory>
#include <optional>

namespace kessil::platform {

/// The text of a message, from the system's table, or from the table of `module` when `source_flags` contains
/// FORMAT_MESSAGE_FROM_HMODULE. Inserts are not expanded, and the system chooses the language. None on failure.
inline std::optional<WideString> FormatMessageText(DWORD source_flags, HMODULE module, DWORD number)
{
    struct LocalDeleter
    {
        void operator()(wchar_t *text) const { LocalFree(text); }
    };
    constexpr DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS;
    wchar_t *buffer = nullptr;
    // FORMAT_MESSAGE_ALLOCATE_BUFFER makes the buffer argument the address of a pointer to the text.
    const DWORD length =
        FormatMessageW(flags | source_flags, module, number, 0, reinterpret_cast<wchar_t *>(&buffer), 0, nullptr);
    const std::unique_ptr<wchar_t, LocalDeleter> text(buffer);
    if (length == 0 || !text)
        return std::nullopt;
    return WideString(reinterpret_cast<const char16_t *>(text.get()), length);
}

} // namespace kessil::platform
