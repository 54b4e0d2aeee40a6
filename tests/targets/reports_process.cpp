#include "target.h"

#include <cstdlib>
#include <string>

#ifndef _WIN32
#include <unistd.h>
#endif

/// A library that reports on the process that it runs in: VornGetErrorText gives, for code 0, the value of PATH
/// that its own run-time library sees, and for code 1, on Linux, the effective user, group and supplementary groups of
/// the calling thread, with a blank between each.
namespace {

std::string Path()
{
    const char *const path = std::getenv("PATH");
    return path != nullptr ? path : "none";
}

std::string Identity()
{
    std::string numbers;
#ifndef _WIN32
    numbers.append(std::to_string(geteuid())).append(" ").append(std::to_string(getegid()));
    gid_t groups[64];
    const int count = getgroups(64, groups);
    for (int i = 0; i < count; ++i)
        numbers.append(" ").append(std::to_string(groups[i]));
#endif
    return numbers;
}

} // namespace

TARGET_EXPORT const char *VornGetErrorText(std::uint64_t /*session*/, std::uint64_t /*object*/, std::uint32_t code)
{
    static std::string text;
    text = code == 0 ? Path() : Identity();
    return text.c_str();
}
