#include "platform/text.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace kessil::test {

using platform::FromUtf8;
using platform::ToUtf8;

namespace {

void ExpectBoth(const std::string &narrow, const WideString &wide)
{
    EXPECT_EQ(FromUtf8(narrow), wide);
    EXPECT_EQ(ToUtf8(wide), narrow);
}

} // namespace

TEST(Text, ConvertsNothingToNothing)
{
    ExpectBoth("", u"");
}

TEST(Text, ConvertsSequencesOfEachLength)
{
    ExpectBoth("kessil", u"kessil");
    ExpectBoth("\xC2\x80 \xDF\xBF", u"\u0080 \u07FF");
    ExpectBoth("\xE0\xA0\x80 \xE2\x82\xAC \xEF\xBF\xBF", u"\u0800 \u20AC \uFFFF");
    ExpectBoth("\xF0\x90\x80\x80 \xF0\x9F\x8C\xBE \xF4\x8F\xBF\xBF", u"\U00010000 \U0001F33E \U0010FFFF");
}

TEST(Text, KeepsTheCodePointsAroundTheSurrogates)
{
    ExpectBoth("\xED\x9F\xBF\xEE\x80\x80", u"\uD7FF\uE000");
}

TEST(Text, KeepsAZero)
{
    ExpectBoth(std::string("a\0b", 3), WideString(u"a\0b", 3));
}

TEST(Text, ConvertsEveryStrayByteToASurrogateOfItsOwn)
{
    for (unsigned byte = 0x80; byte <= 0xFF; ++byte) {
        SCOPED_TRACE(byte);
        ExpectBoth(std::string("<") + static_cast<char>(byte) + ">",
                   WideString(u"<") + static_cast<char16_t>(0xDC00 + byte) + u">");
    }
}

TEST(Text, ConvertsATruncatedSequenceByteByByte)
{
    ExpectBoth("\xC3", {0xDCC3});
    ExpectBoth("\xE2\x82", {0xDCE2, 0xDC82});
    ExpectBoth("\xF0\x9F\x8C", {0xDCF0, 0xDC9F, 0xDC8C});
    ExpectBoth("\xE2\x82"
               "A",
               {0xDCE2, 0xDC82, u'A'});
}

TEST(Text, ConvertsAnOverlongSequenceByteByByte)
{
    ExpectBoth("\xC0\x80", {0xDCC0, 0xDC80});
    ExpectBoth("\xC1\xBF", {0xDCC1, 0xDCBF});
    ExpectBoth("\xE0\x9F\xBF", {0xDCE0, 0xDC9F, 0xDCBF});
    ExpectBoth("\xF0\x8F\xBF\xBF", {0xDCF0, 0xDC8F, 0xDCBF, 0xDCBF});
}

TEST(Text, ConvertsAnEncodedSurrogateByteByByte)
{
    ExpectBoth("\xED\xA0\x80", {0xDCED, 0xDCA0, 0xDC80});
    ExpectBoth("\xED\xBF\xBF", {0xDCED, 0xDCBF, 0xDCBF});
}

TEST(Text, ConvertsWhatIsBeyondTheLastCodePointByteByByte)
{
    ExpectBoth("\xF4\x90\x80\x80", {0xDCF4, 0xDC90, 0xDC80, 0xDC80});
    ExpectBoth("\xF5\x80\x80\x80", {0xDCF5, 0xDC80, 0xDC80, 0xDC80});
}

TEST(Text, ContinuesAfterAStrayByte)
{
    ExpectBoth("\xFF\xC3\xA9", {0xDCFF, 0x00E9});
    ExpectBoth("\xC3\xC3\xA9", {0xDCC3, 0x00E9});
    ExpectBoth("\xF0\x9F\xE2\x82\xAC", {0xDCF0, 0xDC9F, 0x20AC});
}

TEST(Text, WritesOtherLoneSurrogatesInThreeBytes)
{
    EXPECT_EQ(ToUtf8(WideString{0xD800}), "\xED\xA0\x80");
    EXPECT_EQ(ToUtf8(WideString{0xDBFF, u'x'}), "\xED\xAF\xBFx");
    EXPECT_EQ(ToUtf8(WideString{0xDC00}), "\xED\xB0\x80");
    EXPECT_EQ(ToUtf8(WideString{0xDC7F}), "\xED\xB1\xBF");
    EXPECT_EQ(ToUtf8(WideString{0xDD00}), "\xED\xB4\x80");
    EXPECT_EQ(ToUtf8(WideString{0xDFFF}), "\xED\xBF\xBF");
}

TEST(Text, PrefersASurrogatePair)
{
    // U+D83C U+DC80 is a character, though U+DC80 on its own stands for a byte.
    ExpectBoth("\xF0\x9F\x82\x80", {0xD83C, 0xDC80});
    EXPECT_EQ(ToUtf8(WideString{0xD83C, 0xD83C, 0xDC80}), "\xED\xA0\xBC\xF0\x9F\x82\x80");
}

TEST(Text, RestoresAllPairsOfBytes)
{
    for (unsigned first = 0; first <= 0xFF; ++first) {
        for (unsigned second = 0; second <= 0xFF; ++second) {
            const std::string bytes = {static_cast<char>(first), static_cast<char>(second)};
            ASSERT_EQ(ToUtf8(FromUtf8(bytes)), bytes) << first << ' ' << second;
        }
    }
}

TEST(Text, RestoresAnyBytes)
{
    std::uint32_t state = 1;
    for (int round = 0; round < 2000; ++round) {
        std::string bytes;
        for (int i = 0; i < 64; ++i) {
            state = state * 1664525 + 1013904223;
            // Mostly bytes of longer sequences, so that complete and truncated ones occur.
            bytes += static_cast<char>((state >> 24) | (state & 0x100 ? 0x80 : 0));
        }
        ASSERT_EQ(ToUtf8(FromUtf8(bytes)), bytes) << "round " << round;
    }
}

} // namespace kessil::test
