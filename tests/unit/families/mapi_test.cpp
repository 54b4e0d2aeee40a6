#include "families/mapi/mapi.h"

#include "rows/expectations.h"
#include "rows/exports.h"
#include "unit/families/fakes_rig.h"

#include <algorithm>

namespace kessil::test {
namespace {

const Exports &exports = MapiExports();

class MapiTest : public ChannelTest
{
protected:
    MapiTest() { stand_in = StandIn(); }
};

// Nothing comes in, so there may be no section yet. The results make one.
TEST_F(MapiTest, VersionWithoutASection)
{
    stand_in.script["MapiBackupDLLVersion"] = "result=0x00020001";
    fake_pipe.Deliver(SuccessFrame());
    Process_MapiBackupDLLVersion(channel, exports.at("MapiBackupDLLVersion"));
    EXPECT_THAT(stand_in.lines, ::testing::ElementsAre("MapiBackupDLLVersion"));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u".1", 8) + SuccessFrame());
    EXPECT_EQ(Section(8), Hex("00020001 00000000"));
}

// A text that fills its room without a zero unit is read no further than the room goes.
std::uint32_t FillsTheRoom(std::uint64_t /*mapi*/, char16_t *text)
{
    std::fill_n(text, 264, u'x');
    return 1;
}

TEST_F(MapiTest, TextWithoutAnEnd)
{
    GiveSection(u"s0", Hex("89ABCDEF") + Repeat(0xEE, 600));
    Process_MapiGetLastError(channel, reinterpret_cast<void *>(FillsTheRoom));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(539), Hex("89ABCDEF") + Wide(std::u16string(264, u'x')) + Hex("00000001 EE"));
}

// Each text has room of its own, which is cleared.
std::uint32_t ChecksTheRooms(std::uint64_t /*mapi*/, char16_t *text1, char16_t *text2, std::uint64_t *value1,
                             std::uint64_t *value2, std::uint64_t *value3, std::uint32_t *value4)
{
    const bool clear = std::all_of(text1, text1 + 264, [](char16_t unit) { return unit == 0; }) &&
                       std::all_of(text2, text2 + 264, [](char16_t unit) { return unit == 0; });
    const bool apart = text1 + 264 <= text2 || text2 + 264 <= text1;
    return clear && apart && *value1 + *value2 + *value3 + *value4 == 0 ? 0 : 1;
}

TEST_F(MapiTest, RoomsForTexts)
{
    GiveSection(u"s0", Hex("89ABCDEF") + Repeat(0xEE, 60));
    Process_MapiGetNextMail(channel, reinterpret_cast<void *>(ChecksTheRooms));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(41), Hex("89ABCDEF 0000 0000") + Repeat(0, 24) + Hex("00000000 00000000 EE"));
}

// The library gets a copy: what it does to the section in the call doesn't reach it, and the echo restores the bytes.
unsigned char *section_bytes = nullptr;
std::uint32_t WritesOverTheSection(std::uint64_t /*mapi*/, void *block, std::uint32_t length, std::uint32_t *count)
{
    section_bytes[8] = 0xFF;
    *count = static_cast<unsigned char *>(block)[0];
    return length;
}

TEST_F(MapiTest, WriteMailGivesACopyAndEchoesIt)
{
    GiveSection(u"s0", Hex("89ABCDEF 00000002 1122 EEEEEEEE EEEEEEEE EE"));
    section_bytes = channel.SharedView();
    fake_pipe.Deliver(SuccessFrame());
    Process_MapiWriteMail(channel, reinterpret_cast<void *>(WritesOverTheSection));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 26) + SuccessFrame());
    EXPECT_EQ(Section(18), Hex("89ABCDEF 00000002 1122 00000011 00000002"));
}

} // namespace
} // namespace kessil::test
