#pragma once

#include <cstdint>
#include <filesystem>

namespace kessil::platform {

/// When a file's content last changed: seconds since 1970-01-01 UTC, plus nanoseconds (0 to 999999999).
struct FileTime
{
    std::int64_t seconds = 0;
    std::uint32_t nanoseconds = 0;
};

/// Reads the time of a file or a directory; links aren't followed. False on failure, with the reason in the last error.
bool ReadFileTime(const std::filesystem::path &path, FileTime &time);

/// Sets it; links aren't followed. Windows stores units of 100 nanoseconds and drops the rest. False when the system
/// refuses or can't represent the time.
bool WriteFileTime(const std::filesystem::path &path, const FileTime &time);

} // namespace kessil::platform
