#include "channel/format_system_error.h"

#include "platform/last_error.h"

namespace kessil {

WideString FormatSystemError(std::uint32_t code)
{
    return platform::ErrorText(code);
}

WideString FormatSystemError(std::uint32_t code, const WideString &suffix)
{
    return FormatSystemError(code) + u" (" + suffix + u")";
}

bool Refused(std::uint32_t code, const char16_t *suffix, WideString &error)
{
    error = FormatSystemError(code, suffix);
    return false;
}

} // namespace kessil
