#include "platform/last_error.h"

#include "platform/windows/native.h"

#include <memory>

namespace kessil::platform {

namespace {

struct LocalDeleter
{
    void operator()(wchar_t *text) const { LocalFree(text); }
};

constexpr DWORD message_flags =
    FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;

} // namespace

std::uint32_t LastError()
{
    return GetLastError();
}

void SetLastError(std::uint32_t code)
{
    ::SetLastError(code);
}

WideString ErrorText(std::uint32_t code)
{
    wchar_t *buffer = nullptr;
    // With the first flag the system takes the place for a text as the place for a pointer to one.
    const DWORD length =
        FormatMessageW(message_flags, nullptr, code, 0, reinterpret_cast<wchar_t *>(&buffer), 0, nullptr);
    const std::unique_ptr<wchar_t, LocalDeleter> text(buffer);
    if (length == 0 || !text)
        return {};
    return {reinterpret_cast<const char16_t *>(text.get()), length};
}

} // namespace kessil::platform
