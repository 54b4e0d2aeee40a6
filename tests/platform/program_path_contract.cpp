#include "platform/program_path.h"

#include <gtest/gtest.h>

namespace kessil::test {

TEST(ProgramPath, IsTheFileThatRuns)
{
    const std::filesystem::path path = platform::ProgramPath();
    EXPECT_TRUE(path.is_absolute());
    EXPECT_EQ(path.stem(), "platform_contract");
    EXPECT_TRUE(std::filesystem::is_regular_file(path));
}

} // namespace kessil::test
