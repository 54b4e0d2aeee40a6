#include "platform/environment.h"

#include "surroundings.h"

#include <gtest/gtest.h>

namespace kessil::test {

using platform::PutEnvironment;
using platform::ReadEnvironment;

TEST(Environment, HasWhatWasPutIntoIt)
{
    ASSERT_TRUE(PutEnvironment(u"KESSIL_TEST=first"));
    EXPECT_EQ(ReadEnvironment(u"KESSIL_TEST"), u"first");
    ASSERT_TRUE(PutEnvironment(u"KESSIL_TEST=the second"));
    EXPECT_EQ(ReadEnvironment(u"KESSIL_TEST"), u"the second");
}

TEST(Environment, HasNoOtherVariables)
{
    EXPECT_EQ(ReadEnvironment(u"KESSIL_NO_SUCH_VARIABLE"), std::nullopt);
}

TEST(Environment, KeepsEverythingBehindTheFirstEqualsSign)
{
    ASSERT_TRUE(PutEnvironment(u"KESSIL_TEST==a=b; :c="));
    EXPECT_EQ(ReadEnvironment(u"KESSIL_TEST"), u"=a=b; :c=");
}

TEST(Environment, KeepsTextOutsideAscii)
{
    ASSERT_TRUE(PutEnvironment(u"KESSIL_TEST=\u00E9\u20AC\U0001F33E"));
    EXPECT_EQ(ReadEnvironment(u"KESSIL_TEST"), u"\u00E9\u20AC\U0001F33E");
}

TEST(Environment, KeepsLongValues)
{
    const WideString value(20000, u'x');
    ASSERT_TRUE(PutEnvironment(u"KESSIL_TEST=" + value));
    EXPECT_EQ(ReadEnvironment(u"KESSIL_TEST"), value);
}

TEST(Environment, SeparatesDirectoriesAsTheSystemDoes)
{
    EXPECT_EQ(platform::search_path_separator, on_windows ? u';' : u':');
}

} // namespace kessil::test
