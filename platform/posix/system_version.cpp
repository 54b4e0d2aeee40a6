#include "platform/system_version.h"

#include <charconv>
#include <cstring>
#include <sys/utsname.h>

namespace kessil::platform {

bool ReadSystemVersion(std::uint32_t &major)
{
    utsname system = {};
    if (uname(&system) != 0)
        return false;
    const char *const end = system.release + std::strlen(system.release);
    return std::from_chars(system.release, end, major).ec == std::errc();
}

} // namespace kessil::platform
