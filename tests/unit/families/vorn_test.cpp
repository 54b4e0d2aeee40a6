#include "families/vorn/vorn.h"

#include "targets/vorn_recorder.h"
#include "unit/families/fakes_rig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <stdexcept>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Bytes two_handles = Hex("1122334455667788 99AABBCCDDEEFF00");

// What a function of the test's own, in the place of the library's, does with its block.
std::function<void(void *block)> work;

std::uint32_t Transfer(std::uint64_t /*session*/, std::uint64_t /*file*/, void *block, std::uint32_t /*size*/,
                       std::uint32_t *count)
{
    work(block);
    *count = 3;
    return 4;
}

// What the rows don't say.
class VornTest : public ::testing::Test, protected FakesRig
{
protected:
    // One call of Transfer over a section of these bytes.
    void CallTransfer(Handler handler, const Bytes &content)
    {
        Give(content);
        handler(channel, reinterpret_cast<void *>(Transfer));
    }
};

TEST_F(VornTest, CreateSessionWithoutASectionMakesOne)
{
    Script("VornCreateSession", "out=0x1122334455667788");
    fake_pipe.Deliver(SuccessFrame());
    Call("VornCreateSession", "SIGNATURE_VornCreateSession");
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u".1", 8) + SuccessFrame());
    EXPECT_EQ(Section(8), Hex("1122334455667788"));
}

// 44 bytes came in, and 56 are asked for, of which 4 are never used.
TEST_F(VornTest, ReadFileInASectionOneByteTooSmallGrowsIt)
{
    const Bytes request = two_handles + Hex("00000010 EEEEEEEE") + Repeat(0xCC, 16) + Hex("00000010");
    Script("VornReadFile", "count_up=16 out=16");
    Give(request + Repeat(0xAA, 11));
    CallAndGrow("VornReadFile", "SIGNATURE_VornReadFile", 56, SuccessFrame());
    ExpectSent(SuccessFrame());
    EXPECT_EQ(Section(56), two_handles + Hex("00000010 EEEEEEEE") + CountUp(16) + Hex("00000010 00000010 00000000") +
                               Repeat(0xAA, 3) + Bytes{0});
}

// No copy on the way: the library gets the place in the section where the parent will look.
TEST_F(VornTest, ReadFileGetsAPointerIntoTheSection)
{
    const unsigned char *data = nullptr;
    work = [&data](void *block) { data = static_cast<unsigned char *>(block); };
    CallTransfer(Process_VornReadFile, two_handles + Hex("00000001 EEEEEEEE 00 00000001") + Repeat(0xEE, 32));
    EXPECT_EQ(data, channel.SharedView() + 24);
}

// The size is the library's concern; the length of the block is the section's.
TEST_F(VornTest, ReadFileDoesNotCompareSizeAndLength)
{
    Script("VornReadFile", "peek=0");
    Give(two_handles + Hex("00000001 EEEEEEEE 00 7FFFFFFF") + Repeat(0xEE, 32));
    Call("VornReadFile", "SIGNATURE_VornReadFile");
    ExpectSent(SuccessFrame());
    EXPECT_THAT(Seen(), ElementsAre("VornReadFile session=0x1122334455667788 file=0x99aabbccddeeff00 size=2147483647 "
                                    "data="));
}

TEST_F(VornTest, WriteFileGivesACopy)
{
    Bytes seen;
    work = [&seen](void *block) {
        const auto *bytes = static_cast<const unsigned char *>(block);
        seen.assign(bytes, bytes + 3);
        std::memset(block, 'x', 3);
    };
    const Bytes request = two_handles + Hex("00000003 EEEEEEEE") + Plain("abc") + Hex("00000003");
    CallTransfer(Process_VornWriteFile, request + Repeat(0xAA, 4));
    EXPECT_EQ(seen, Plain("abc"));
    ExpectSent(SuccessFrame());
    EXPECT_EQ(Section(request.size() + 4), Hex("00000003 00000004") + Behind(8, request) + Repeat(0xAA, 4));
}

TEST_F(VornTest, ExceptionOfTheLibraryPassesThrough)
{
    work = [](void *) { throw std::runtime_error("the library's own"); };
    EXPECT_THROW(
        CallTransfer(Process_VornReadFile, two_handles + Hex("00000001 EEEEEEEE 00 00000001") + Repeat(0xEE, 32)),
        std::runtime_error);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

// Error texts: a text element of 8 bytes at offset 24 and the limit behind it, which is also that of the library's
// text.
class VornErrorTextTest : public VornTest
{
protected:
    void Ask(std::uint32_t limit, std::size_t room_behind)
    {
        Give(begin + Repeat(0xCC, 8) + Be32(limit) + Repeat(0xAA, room_behind));
        Call("VornGetErrorText", "SIGNATURE_VornGetErrorText");
    }

    const Bytes begin = two_handles + Hex("0000000D 00000008");
};

// The limit is the size element's value and not the text element's length: the size is written over what came behind
// the element, and the rest of the text stands behind that.
TEST_F(VornErrorTextTest, LimitBeyondTheElementReachesTheBytesBehindIt)
{
    Script("VornGetErrorText", "text=abcdefghijklmnopqrstuvwxyz");
    Ask(20, 20);
    EXPECT_EQ(Section(56), begin + Plain("abcdefgh") + Hex("00000014") + Narrow("mnopqrs") + Repeat(0xAA, 12));
    ExpectSent(SuccessFrame());
}

TEST_F(VornErrorTextTest, WhatWouldLieBehindTheSectionIsLeftOut)
{
    Script("VornGetErrorText", "text=abcdefghijklmnopqrstuvwxyz");
    Ask(0xFFFFFFFF, 8);
    EXPECT_EQ(Section(44), begin + Plain("abcdefgh") + Hex("FFFFFFFF") + Plain("mnopqrst"));
    ExpectSent(SuccessFrame());
}

TEST_F(VornErrorTextTest, LimitOfZeroEndsTheRun)
{
    Script("VornGetErrorText", "text=abc");
    EXPECT_THROW(Ask(0, 20), std::out_of_range);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

} // namespace
} // namespace kessil::test
