// Argument lists and result lists in a section of every size, without anything above them.

#include "parent/section/call_section.h"

#include "fakes/fake_last_error.h"
#include "fakes/fake_private_section.h"

#include <gtest/gtest.h>

namespace kessil::parent {
namespace {

using namespace std::string_literals;
using test::fake_section;

class SectionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        test::fake_last_error = {};
        fake_section = {};
    }

    void TearDown() override
    {
        section.Release();
        EXPECT_EQ(fake_section.views, 0U);
        EXPECT_EQ(fake_section.open_handles, 0U);
    }

    void Use(std::uint32_t size) { section.Use(SharedSection::Create(u"s0", size), u"s0"); }

    void Use(const std::string &content)
    {
        section.Release();
        Use(static_cast<std::uint32_t>(content.size()));
        content.copy(reinterpret_cast<char *>(section.Memory().View()), content.size());
        section.Results().SetPresent(true);
        section.Results().Rewind();
    }

    std::string Content(std::size_t size) const
    {
        return {reinterpret_cast<const char *>(section.Memory().View()), size};
    }

    CallSection section;
};

TEST_F(SectionTest, EveryArgumentThatDoesNotFitSaysHowMuchItNeeds)
{
    const auto lay_out = [](ArgumentList &list) {
        list.Begin();
        return list.Number(0x01020304, 4) && list.Narrow("ab") && list.Wide(u"c") && list.Number(9, 8) &&
               list.Buffer(3) != nullptr;
    };
    ArgumentList &list = section.Arguments();
    std::uint32_t size = 0;
    for (const std::uint32_t needed : {4U, 7U, 12U, 18U, 27U}) {
        EXPECT_FALSE(lay_out(list));
        EXPECT_TRUE(list.Good());
        EXPECT_EQ(list.Needed(), needed);
        EXPECT_LT(list.Size(), needed);
        EXPECT_GT(needed, size);
        size = needed;
        section.Release();
        Use(size - 1);
        EXPECT_FALSE(lay_out(list)) << needed;
        EXPECT_EQ(list.Needed(), needed);
        section.Release();
        Use(size);
    }
    ASSERT_TRUE(lay_out(list));
    EXPECT_EQ(list.Size(), 27U);
    // Padding at 7; the zero unit of the text at 10 is shared with the number.
    EXPECT_EQ(Content(22), "\1\2\3\4ab\0\0c\0\0\0\0\0\0\0\0\x09\0\0\0\3"s);
    EXPECT_TRUE(list.Finish());
    EXPECT_FALSE(list.Begun());
}

TEST_F(SectionTest, AListThatHasFailedTakesNothingMore)
{
    Use(64);
    ArgumentList &list = section.Arguments();
    list.Begin();
    EXPECT_TRUE(list.Number(1, 1));
    EXPECT_FALSE(list.Narrow("a\0"s));
    EXPECT_FALSE(list.Good());
    EXPECT_FALSE(list.Number(2, 1));
    EXPECT_EQ(list.Buffer(1), nullptr);
    EXPECT_EQ(list.Size(), 1U);
    EXPECT_EQ(list.Failure(), "a text of the argument list holds a zero");
    EXPECT_FALSE(list.Finish());
    list.Begin();
    EXPECT_TRUE(list.Wide(u"a"));
    EXPECT_TRUE(list.Finish());
}

TEST_F(SectionTest, EveryResultMayEndWithTheSectionAndNotBehindIt)
{
    const std::string content = "\1\2ab\0\0c\0\0\0\0\2\0\0\0\0xy"s;
    for (std::size_t size = 0; size <= content.size(); ++size) {
        Use(content.substr(0, size));
        ResultList &list = section.Results();
        std::uint64_t number = 0;
        std::string narrow;
        WideString wide;
        std::span<const std::byte> data;
        list.Number(number, 2);
        list.Narrow(narrow);
        list.Wide(wide);
        list.Buffer(data);
        EXPECT_EQ(number, size < 2 ? 0U : 0x0102U);
        EXPECT_EQ(narrow, size < 5 ? "" : "ab");
        EXPECT_EQ(wide, size < 10 ? u"" : u"c");
        EXPECT_EQ(data.size(), size < 18 ? 0U : 2U);
        EXPECT_EQ(list.Good(), size == content.size());
        EXPECT_EQ(list.Element(), size < 2 ? 1U : size < 5 ? 2U : size < 10 ? 3U : 4U);
    }
}

TEST_F(SectionTest, AHelpersSectionTakesThePlaceOfTheOldOne)
{
    Use(16);
    EXPECT_TRUE(section.IsNextName(u"s1"));
    EXPECT_FALSE(section.IsNextName(u"s0"));
    fake_section.Add(u"s1", 32);
    EXPECT_TRUE(section.Open(u"s1", 32));
    EXPECT_EQ(section.Memory().Size(), 32U);
    EXPECT_FALSE(fake_section.Has(u"s1"));
    EXPECT_EQ(fake_section.views, 1U);
    EXPECT_TRUE(section.IsNextName(u"s0"));

    EXPECT_FALSE(section.Open(u"s0", 64));
    EXPECT_EQ(section.Memory().View(), nullptr);
    EXPECT_EQ(section.Memory().Size(), 0U);
    EXPECT_EQ(fake_section.views, 0U);
}

TEST_F(SectionTest, ReleaseRemovesBothNamesAndTheLists)
{
    Use("abcd");
    section.Arguments().Begin();
    fake_section.Add(u"s1", 32);
    section.Release();
    EXPECT_FALSE(fake_section.Has(u"s0"));
    EXPECT_FALSE(fake_section.Has(u"s1"));
    EXPECT_FALSE(section.Results().Present());
    EXPECT_FALSE(section.Arguments().Begun());
}

} // namespace
} // namespace kessil::parent
