#include "fakes/fake_file_time.h"

#include "platform/last_error.h"

namespace kessil {

test::FakeFileTime test::fake_file_time;

namespace platform {
namespace {

using test::fake_file_time;

bool IsUsable(const std::filesystem::path &path, std::uint32_t code)
{
    if (code == 0 && !std::filesystem::exists(std::filesystem::symlink_status(path)))
        code = fake_file_time.missing_code;
    if (code != 0)
        SetLastError(code);
    return code == 0;
}

} // namespace

bool ReadFileTime(const std::filesystem::path &path, FileTime &time)
{
    if (!IsUsable(path, fake_file_time.read_code))
        return false;
    const auto written = fake_file_time.times.find(path);
    time = written == fake_file_time.times.end() ? fake_file_time.untouched : written->second;
    return true;
}

bool WriteFileTime(const std::filesystem::path &path, const FileTime &time)
{
    if (!IsUsable(path, fake_file_time.write_code))
        return false;
    fake_file_time.times[path] = time;
    return true;
}

} // namespace platform
} // namespace kessil
