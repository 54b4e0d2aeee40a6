#include "platform/last_error.h"

#include <cerrno>
#include <cstring>

namespace kessil::platform {

std::uint32_t LastError()
{
    return static_cast<std::uint32_t>(errno);
}

void SetLastError(std::uint32_t code)
{
    errno = static_cast<int>(code);
}

WideString ErrorText(std::uint32_t code)
{
    return FromUtf8(std::strerror(static_cast<int>(code)));
}

} // namespace kessil::platform
