#include "platform/system_version.h"

#include "platform/windows/native.h"

namespace kessil::platform {

bool ReadSystemVersion(std::uint32_t &major)
{
    OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    if (!GetVersionExW(reinterpret_cast<OSVERSIONINFOW *>(&version)))
        return false;
    major = version.dwMajorVersion;
    return true;
}

} // namespace kessil::platform
