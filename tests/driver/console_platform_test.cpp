#include "driver_run.h"

#include "platform/file_time.h"
#include "platform/program_path.h"
#include "platform/terminal.h"

namespace kessil::test {
namespace {

class ConsolePlatformTest : public DriverTest
{};

TEST_F(ConsolePlatformTest, FileTimesComeBackAsTheyWereWritten)
{
    WriteFile(source / "file", "x");
    std::filesystem::create_directory(source / "directory");
    for (const platform::FileTime &time :
         {platform::FileTime{0, 0}, {-1, 999999900}, {981173106, 700}, {0x180000000, 100}})
        for (const char *name : {"file", "directory"}) {
            platform::FileTime kept{1, 1};
            ASSERT_TRUE(platform::WriteFileTime(source / name, time)) << time.seconds;
            ASSERT_TRUE(platform::ReadFileTime(source / name, kept));
            EXPECT_EQ(kept.seconds, time.seconds);
            EXPECT_EQ(kept.nanoseconds, time.nanoseconds);
        }
}

TEST_F(ConsolePlatformTest, WhatIsNotThereHasNoTime)
{
    platform::FileTime untouched{5, 6};
    EXPECT_FALSE(platform::ReadFileTime(source / "missing", untouched));
    EXPECT_EQ(untouched.seconds, 5);
    EXPECT_EQ(untouched.nanoseconds, 6u);
    EXPECT_FALSE(platform::WriteFileTime(source / "missing", {0, 0}));
}

TEST_F(ConsolePlatformTest, TheProgramKnowsItsFile)
{
    const std::filesystem::path program = platform::ProgramPath();
    EXPECT_TRUE(program.is_absolute()) << program;
    EXPECT_EQ(program.stem(), "driver_test");
    EXPECT_TRUE(std::filesystem::exists(program));
}

TEST_F(ConsolePlatformTest, OnlyATerminalHasColumns)
{
    for (const auto stream : {platform::StandardStream::Output, platform::StandardStream::Error})
        if (!platform::IsTerminal(stream)) {
            EXPECT_EQ(platform::TerminalColumns(stream), 0u);
        }
}

} // namespace
} // namespace kessil::test
