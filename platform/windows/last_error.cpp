#include "platform/last_error.h"

#include "platform/windows/format_message.h"

namespace kessil::platform {

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
    return FormatMessageText(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code).value_or(WideString());
}

} // namespace kessil::platform
