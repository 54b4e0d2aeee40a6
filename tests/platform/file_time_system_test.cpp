#include "platform/file_time.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

namespace kessil::test {

using platform::FileTime;

TEST(FileTimeSystem, IsThatOfTheClock)
{
    const TemporaryDirectory directory;
    const std::filesystem::path path = directory.Path() / "file";
    std::ofstream(path) << "content";
    FileTime time = {};
    ASSERT_TRUE(platform::ReadFileTime(path, time));
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_NEAR(static_cast<double>(time.seconds),
                static_cast<double>(std::chrono::duration_cast<std::chrono::seconds>(now).count()), 60.0);
}

} // namespace kessil::test
