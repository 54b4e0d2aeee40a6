#include "channel/format_system_error.h"

#include "unit/channel_fixture.h"

namespace kessil::test {
namespace {

TEST_F(FakesTest, SystemErrorKeepsItsLineEnd)
{
    EXPECT_EQ(FormatSystemError(2), u"text of 2\r\n");
}

TEST_F(FakesTest, SystemErrorWithASuffix)
{
    EXPECT_EQ(FormatSystemError(2, u"pipe"), u"text of 2\r\n (pipe)");
    EXPECT_EQ(FormatSystemError(2, u""), u"text of 2\r\n ()");
}

} // namespace
} // namespace kessil::test
