#include "host/search_path.h"

#include "fakes/fake_environment.h"
#include "platform/environment.h"
#include "platform/last_error.h"
#include "unit/channel_fixture.h"

namespace kessil::test {
namespace {

using ::testing::IsEmpty;

const WideString separator(1, platform::search_path_separator);

class SearchPathTest : public FakesTest
{
protected:
    SearchPathTest() { fake_environment.variables[u"PATH"] = u"C:\\old"; }

    const WideString &Path() const { return fake_environment.variables.at(u"PATH"); }

    WideString error = u"untouched";
};

TEST_F(SearchPathTest, DirectoriesComeFirst)
{
    EXPECT_TRUE(AddPath(u"C:\\a", error));
    EXPECT_EQ(Path(), u"C:\\a" + separator + u"C:\\old");
    EXPECT_EQ(error, u"untouched");
}

TEST_F(SearchPathTest, LaterOnesComeBeforeEarlierOnes)
{
    EXPECT_TRUE(AddPath(u"first", error));
    EXPECT_TRUE(AddPath(u"second", error));
    EXPECT_TRUE(AddPath(u"second", error));
    EXPECT_EQ(Path(), u"second" + separator + u"second" + separator + u"first" + separator + u"C:\\old");
}

TEST_F(SearchPathTest, ListIsTakenAsItStands)
{
    EXPECT_TRUE(AddPath(u"a=b;c:d", error));
    EXPECT_EQ(Path(), u"a=b;c:d" + separator + u"C:\\old");
}

TEST_F(SearchPathTest, EmptyDirectoryIsNoFailure)
{
    EXPECT_TRUE(AddPath(u"", error));
    EXPECT_EQ(Path(), separator + u"C:\\old");
}

TEST_F(SearchPathTest, EmptyPathIsExtended)
{
    fake_environment.variables[u"PATH"] = u"";
    EXPECT_TRUE(AddPath(u"a", error));
    EXPECT_EQ(Path(), u"a" + separator);
}

TEST_F(SearchPathTest, MissingPathIsNotCreated)
{
    fake_environment.variables.clear();
    fake_environment.unset_code = 203;
    EXPECT_FALSE(AddPath(u"a", error));
    EXPECT_EQ(error, u"text of 203\r\n (getenv)");
    EXPECT_THAT(fake_environment.variables, IsEmpty());
    EXPECT_THAT(call_log.calls, IsEmpty());
}

TEST_F(SearchPathTest, PathThatCanNotBeSetStaysAsItWas)
{
    fake_environment.put_code = 8;
    EXPECT_FALSE(AddPath(u"a", error));
    EXPECT_EQ(error, u"text of 8\r\n (putenv)");
    EXPECT_EQ(Path(), u"C:\\old");
}

} // namespace
} // namespace kessil::test
