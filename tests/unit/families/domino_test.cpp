#include "families/domino/domino.h"

#include "rows/expectations.h"
#include "rows/exports.h"
#include "support/guarded_page.h"
#include "unit/families/fakes_rig.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>

namespace kessil::test {
namespace {

// A message at the end of what can be read.
class DominoMessageTest : public ChannelTest
{
protected:
    DominoMessageTest() { message = nullptr; }

    // Has the library give a text of these bytes, the last of them right before a page that can't be touched.
    void Call(const Bytes &text, const std::string &length_of_room)
    {
        const GuardedBlock block(text.size());
        std::copy(text.begin(), text.end(), block.Data());
        message = reinterpret_cast<const char *>(block.Data());
        GiveSection(u"s0", Hex("00000001 00000002") + Hex(length_of_room) + Repeat(0xEE, 64));
        Process_DominoGetErrorMessage(channel, reinterpret_cast<void *>(GiveMessage));
    }

private:
    static const char *GiveMessage(std::uint32_t /*session*/, std::uint32_t /*code*/) { return message; }

    static inline const char *message = nullptr;
};

TEST_F(DominoMessageTest, ThatFitsExactly)
{
    Call(Hex("61626300"), "00000004");
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(25), Hex("00000001 00000002 00000004 EEEEEEEE 61626300 00000000 EE"));
}

TEST_F(DominoMessageTest, ThatIsReadNoFurtherThanItsEnd)
{
    Call(Hex("61626300"), "00000010");
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(37), Hex("00000001 00000002 00000010 EEEEEEEE 61626300") + Repeat(0xEE, 12) + Hex("00000000 EE"));
}

// It is read no further than the room goes, and the process ends as by abort, not by a fault.
TEST_F(DominoMessageTest, WithoutAnEnd)
{
    const auto call = [this] {
        std::signal(SIGABRT, [](int) { std::_Exit(42); });
        Call(Hex("61626364"), "00000004");
    };
    EXPECT_EXIT(call(), ::testing::ExitedWithCode(42), "");
}

TEST_F(DominoMessageTest, WithoutARoom)
{
    const auto call = [this] {
        std::signal(SIGABRT, [](int) { std::_Exit(42); });
        Call({}, "00000000");
    };
    EXPECT_EXIT(call(), ::testing::ExitedWithCode(42), "");
}

} // namespace
} // namespace kessil::test
