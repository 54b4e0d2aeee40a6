#include "platform/system_version.h"

#include <gtest/gtest.h>

namespace kessil::test {

TEST(SystemVersion, IsThatOfARealSystem)
{
    std::uint32_t major = 0;
    ASSERT_TRUE(platform::ReadSystemVersion(major));
    EXPECT_GE(major, 3u);
    EXPECT_LE(major, 99u);
}

} // namespace kessil::test
