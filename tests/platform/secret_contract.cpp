#include "platform/secret.h"

#include "surroundings.h"

#include <gtest/gtest.h>

namespace kessil::test {

using platform::longest_secret;
using platform::ReadSecretLine;
using platform::SecretStatus;

TEST(SecretLine, IsTheFirstOne)
{
    const Input input("first\nsecond\r\nthird");
    WideString line;
    EXPECT_EQ(ReadSecretLine(input.Descriptor(), line), SecretStatus::Read);
    EXPECT_EQ(line, u"first");
    EXPECT_EQ(ReadSecretLine(input.Descriptor(), line), SecretStatus::Read);
    EXPECT_EQ(line, u"second");
    EXPECT_EQ(ReadSecretLine(input.Descriptor(), line), SecretStatus::Read);
    EXPECT_EQ(line, u"third");
    EXPECT_EQ(ReadSecretLine(input.Descriptor(), line), SecretStatus::Nothing);
}

TEST(SecretLine, MayBeEmpty)
{
    const Input input("\n");
    WideString line = u"before";
    EXPECT_EQ(ReadSecretLine(input.Descriptor(), line), SecretStatus::Read);
    EXPECT_EQ(line, u"");
}

TEST(SecretLine, IsUtf8)
{
    const Input input("p\xC3\xA4ss\xF0\x9F\x8C\xBE \xFF\n");
    WideString line;
    EXPECT_EQ(ReadSecretLine(input.Descriptor(), line), SecretStatus::Read);
    EXPECT_EQ(line, WideString(u"p\u00E4ss\U0001F33E ") + char16_t{0xDCFF});
}

TEST(SecretLine, IsMissingInAnEmptyInput)
{
    const Input input("");
    WideString line;
    EXPECT_EQ(ReadSecretLine(input.Descriptor(), line), SecretStatus::Nothing);
}

TEST(SecretLine, HasALimit)
{
    const Input input(std::string(longest_secret, 'x') + "\n" + std::string(longest_secret + 1, 'y') + "\nz");
    WideString line;
    EXPECT_EQ(ReadSecretLine(input.Descriptor(), line), SecretStatus::Read);
    EXPECT_EQ(line, WideString(longest_secret, u'x'));
    EXPECT_EQ(ReadSecretLine(input.Descriptor(), line), SecretStatus::TooLong);
    EXPECT_EQ(ReadSecretLine(input.Descriptor(), line), SecretStatus::Read);
    EXPECT_EQ(line, u"z");
}

} // namespace kessil::test
