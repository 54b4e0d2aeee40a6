#include "platform/file_time.h"

#include "platform/windows/handle.h"

namespace kessil::platform {
namespace {

constexpr std::int64_t seconds_from_1601_to_1970 = 11'644'473'600;
constexpr std::int64_t latest_second = 900'000'000'000;
constexpr std::uint64_t ticks_per_second = 10'000'000;
constexpr DWORD all_shares = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

Handle Open(const std::filesystem::path &path, DWORD access)
{
    return Handle(CreateFileW(path.c_str(), access, all_shares, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

} // namespace

bool ReadFileTime(const std::filesystem::path &path, FileTime &time)
{
    const Handle file = Open(path, FILE_READ_ATTRIBUTES);
    FILETIME native = {};
    if (!file || !GetFileTime(file.Get(), nullptr, nullptr, &native))
        return false;
    const std::uint64_t ticks = (static_cast<std::uint64_t>(native.dwHighDateTime) << 32) | native.dwLowDateTime;
    time = {static_cast<std::int64_t>(ticks / ticks_per_second) - seconds_from_1601_to_1970,
            static_cast<std::uint32_t>(ticks % ticks_per_second * 100)};
    return true;
}

bool WriteFileTime(const std::filesystem::path &path, const FileTime &time)
{
    if (time.seconds < -seconds_from_1601_to_1970 || time.seconds > latest_second) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    const std::uint64_t ticks =
        static_cast<std::uint64_t>(time.seconds + seconds_from_1601_to_1970) * ticks_per_second +
        time.nanoseconds / 100;
    const FILETIME native = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    const Handle file = Open(path, FILE_WRITE_ATTRIBUTES);
    return file && SetFileTime(file.Get(), nullptr, nullptr, &native);
}

} // namespace kessil::platform
