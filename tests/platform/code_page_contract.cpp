#include "platform/code_page.h"

#include "surroundings.h"

#include <gtest/gtest.h>

namespace kessil::test {

using platform::FromThreadCodePage;

TEST(CodePage, KeepsAscii)
{
    EXPECT_EQ(FromThreadCodePage("A line, 100% plain~"), u"A line, 100% plain~");
}

TEST(CodePage, ConvertsEmptyTextToEmptyText)
{
    EXPECT_EQ(FromThreadCodePage(""), u"");
}

TEST(CodePage, KeepsAZeroInTheMiddle)
{
    EXPECT_EQ(FromThreadCodePage(std::string_view("a\0b", 3)), WideString(u"a\0b", 3));
}

TEST(CodePage, KeepsLongText)
{
    EXPECT_EQ(FromThreadCodePage(std::string(70000, 'x')), WideString(70000, u'x'));
}

// The bytes are U+00E9 in UTF-8, and two characters in a code page whose characters are bytes.
TEST(CodePage, ConvertsFromUtf8OnLinuxAndTheSystemsCodePageOnWindows)
{
    const WideString text = FromThreadCodePage("\xC3\xA9");
    if (!on_windows) {
        EXPECT_EQ(text, u"\u00E9");
        return;
    }
    ASSERT_FALSE(text.empty());
    EXPECT_GT(text[0], 0x7F);
}

TEST(CodePage, KeepsInvalidBytesDistinctOnLinux)
{
    const WideString text = FromThreadCodePage("a\xFF");
    ASSERT_EQ(text.size(), 2U);
    EXPECT_TRUE(on_windows || text[1] == 0xDCFF) << static_cast<unsigned>(text[1]);
}

} // namespace kessil::test
