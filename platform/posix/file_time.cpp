#include "platform/file_time.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace kessil::platform {

bool ReadFileTime(const std::filesystem::path &path, FileTime &time)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0)
        return false;
    time = {status.st_mtim.tv_sec, static_cast<std::uint32_t>(status.st_mtim.tv_nsec)};
    return true;
}

bool WriteFileTime(const std::filesystem::path &path, const FileTime &time)
{
    const timespec times[2] = {{0, UTIME_OMIT}, {time.seconds, static_cast<long>(time.nanoseconds)}};
    return utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0;
}

} // namespace kessil::platform
