#pragma once

#include <cstdint>
#include <filesystem>

namespace kessil::platform {

/// When a file's content last changed: seconds from 1970-01-01 UTC, and nanoseconds added to them (0 to 999999999).
struct FileTime
{
    std::int64_t seconds = 0;
    std::uint32_t nanoseconds = 0;
};

/// Of a file or directory; links aren't followed on Linux. False on failure, with the reason in the last error.
bool ReadFileTime(const std::filesystem::path &path, FileTime &time);

/// Windows keeps steps of 100 nanoseconds, other fractions are cut. False when the system refuses, or can't hold the
/// time.
bool WriteFileTime(const std::filesystem::path &path, const FileTime &time);

} // namespace kessil::platform
