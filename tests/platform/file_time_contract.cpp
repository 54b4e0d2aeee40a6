#include "platform/file_time.h"

#include "platform/last_error.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kessil::test {

using platform::FileTime;

namespace {

std::filesystem::path MakeFile(const TemporaryDirectory &directory)
{
    std::filesystem::path path = directory.Path() / "file";
    std::ofstream(path) << "content";
    return path;
}

void ExpectKept(const std::filesystem::path &path, const FileTime &time)
{
    FileTime read = {};
    EXPECT_TRUE(platform::WriteFileTime(path, time));
    EXPECT_TRUE(platform::ReadFileTime(path, read));
    EXPECT_EQ(read.seconds, time.seconds);
    EXPECT_EQ(read.nanoseconds, time.nanoseconds);
}

} // namespace

TEST(FileTime, IsKeptToAHundredNanoseconds)
{
    const TemporaryDirectory directory;
    const std::filesystem::path path = MakeFile(directory);
    ExpectKept(path, {1560946576, 123456700});
    ExpectKept(path, {0, 0});
    ExpectKept(path, {1, 999999900});
}

TEST(FileTime, MayBeBefore1970AndFarAway)
{
    const TemporaryDirectory directory;
    const std::filesystem::path path = MakeFile(directory);
    ExpectKept(path, {-2, 500000000});
    ExpectKept(path, {-1, 999999900});
    ExpectKept(path, {4102444800, 0});
    ExpectKept(path, {0x180000000, 100});
}

TEST(FileTime, BelongsToDirectoriesToo)
{
    const TemporaryDirectory directory;
    ExpectKept(directory.Path(), {1560946576, 0});
}

TEST(FileTime, FailsForAFileThatDoesNotExist)
{
    const TemporaryDirectory directory;
    FileTime time = {5, 6};
    EXPECT_FALSE(platform::ReadFileTime(directory.Path() / "not", time));
    EXPECT_EQ(platform::LastError(), 2u);
    EXPECT_EQ(time.seconds, 5);
    EXPECT_EQ(time.nanoseconds, 6u);
    EXPECT_FALSE(platform::WriteFileTime(directory.Path() / "not", time));
    EXPECT_EQ(platform::LastError(), 2u);
}

} // namespace kessil::test
