#include "protocol/conversation.h"
#include "protocol/recorder.h"

#include <gtest/gtest.h>

namespace kessil::test {
namespace {

constexpr auto library = "mapi_recorder";

TEST(MapiSection, AMegabyteOfMail)
{
    constexpr std::uint32_t length = 1 << 20;
    const Recorder recorder("MapiReadMail block=A1A2 count=1048576\n");
    Conversation talk(0);
    Section section = Announce(talk, length + 64);
    section.Put(0, Hex("89ABCDEF 00100000") + CountUp(length) + Repeat(0xEE, 56));
    talk.Load(TargetLibrary(library));
    talk.Send(CallFrame(u"", "MapiReadMail", "SIGNATURE_MapiReadMail"));
    talk.Expect(SuccessFrame());
    EXPECT_TRUE(section.Get(8, length) == Hex("A1A2") + Behind(2, CountUp(length)));
    section.Expect(8 + length, Hex("00100000 00000000 EE"));
    talk.Send(OrderlyStop());
    talk.End();
}

} // namespace
} // namespace kessil::test
