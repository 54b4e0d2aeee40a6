#include "protocol/conversation.h"
#include "protocol/recorder.h"

#include <gtest/gtest.h>

namespace kessil::test {
namespace {

constexpr auto library = "domino_recorder";

// A message that can't be copied ends the process as abort does: no answer, and nothing behind it is read.
struct BadMessage
{
    const char *name;
    const char *script;
    const char *in_list;
};

class DominoBadMessage : public testing::TestWithParam<BadMessage>
{};

TEST_P(DominoBadMessage, EndsTheProcess)
{
    const BadMessage &each = GetParam();
    const Recorder recorder(std::string("DominoGetErrorMessage ") + each.script + "\n");
    Conversation talk(on_windows ? 3 : 128 + 6);
    Section section = Announce(talk, 256);
    section.Put(0, Hex(each.in_list));
    talk.Load(TargetLibrary(library));
    talk.Send(CallFrame(u"", "DominoGetErrorMessage", "SIGNATURE_DominoGetErrorMessage"));
    talk.ExpectClosed();
    EXPECT_EQ(recorder.Lines(), "DominoGetErrorMessage session=0x1 code=2\n");
}

INSTANTIATE_TEST_SUITE_P(
    Messages, DominoBadMessage,
    testing::Values(BadMessage{"NullPointer", "message=null", "00000001 00000002 00000008 EEEEEEEE 0102030405060708"},
                    BadMessage{"AsLongAsTheBuffer", "message=abcd", "00000001 00000002 00000004 EEEEEEEE 01020304"},
                    BadMessage{"LongerThanTheBuffer", "message=abcdefgh",
                               "00000001 00000002 00000004 EEEEEEEE 01020304"},
                    BadMessage{"NoBuffer", "message=", "00000001 00000002 00000000 EEEEEEEE"}),
    [](const auto &each) { return std::string(each.param.name); });

} // namespace
} // namespace kessil::test
