#include "platform/program_path.h"

#include "surroundings.h"

#include <gtest/gtest.h>

namespace kessil::test {

TEST(ProgramPath, IsTheFileThatRuns)
{
    const std::filesystem::path path = platform::ProgramPath();
    EXPECT_TRUE(path.is_absolute()) << path;
    EXPECT_TRUE(std::filesystem::is_regular_file(path)) << path;
    EXPECT_TRUE(std::filesystem::equivalent(path, OwnProgram())) << path;
}

} // namespace kessil::test
