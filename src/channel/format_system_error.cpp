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

} // namespace kessil
