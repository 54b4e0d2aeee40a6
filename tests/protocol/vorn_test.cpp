#include "protocol/conversation.h"
#include "protocol/recorder.h"

#include <gtest/gtest.h>

namespace kessil::test {
namespace {

// One helper with the recording library loaded and a section, which is all 0xEE, so that what isn't written shows.
class Vorn
{
public:
    explicit Vorn(const std::string &script = "", std::uint32_t section_size = 256, std::uint32_t exit_code = 0,
                  Place place = Place::Here())
        : m_recorder(script), talk(exit_code, {}, place), section(Announce(talk, section_size, u'7', place))
    {
        section.Put(0, Repeat(0xEE, section_size));
        talk.Load(TargetLibrary("vorn_recorder"), place);
    }

    // The in-list in, the request out.
    void Ask(const std::string &function, const Bytes &in_list, Place place = Place::Here())
    {
        section.Put(0, in_list);
        talk.Send(CallFrame(u"", function, "SIGNATURE_" + function), place);
    }

    // Ask, and the success.
    void Call(const std::string &function, const Bytes &in_list, Place place = Place::Here())
    {
        Ask(function, in_list, place);
        talk.Expect(Hex("53 00000000"), place);
    }

    std::string Record() const { return m_recorder.Lines(); }

private:
    Recorder m_recorder;

public:
    Conversation talk;
    Section section;
};

// The library is asked for more than the block holds; what it writes lies where the size and the results go.
TEST(Vorn, ReadFilePassesASizeLargerThanTheBlock)
{
    Vorn vorn("VornReadFile peek=0 count_up=12 out=12 result=0\n");
    vorn.Call("VornReadFile", Hex("0000000000000001 0000000000000002 00000004 EEEEEEEE A0A1A2A3 FFFFFFFF"));
    vorn.section.Expect(0, Hex("0000000000000001 0000000000000002 00000004 EEEEEEEE 00010203"
                               "FFFFFFFF 0000000C 00000000 EEEEEEEE"));
    EXPECT_EQ(vorn.Record(), "VornReadFile session=0x1 file=0x2 size=4294967295 data=\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, ReadFileOfAMegabyte)
{
    constexpr std::uint32_t length = 1 << 20;
    Vorn vorn("VornReadFile peek=1 count_up=1048576 out=1048576 result=0\n", length + 64);
    vorn.section.Put(24 + length, Be32(length));
    vorn.Call("VornReadFile", Be64(1) + Be64(2) + Be32(length));
    EXPECT_TRUE(vorn.section.Get(24, length) == CountUp(length));
    vorn.section.Expect(24 + length, Hex("00100000 00100000 00000000 EE"));
    EXPECT_EQ(vorn.Record(), "VornReadFile session=0x1 file=0x2 size=1048576 data=ee\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, WriteFilePassesASizeLargerThanTheBlock)
{
    Vorn vorn("VornWriteFile peek=2 result=1\n");
    vorn.Call("VornWriteFile", Hex("0000000000000001 0000000000000002 00000002 EEEEEEEE 0102 80000000"));
    vorn.section.Expect(0, Hex("00000000 00000001 0000000000000002"));
    vorn.Call("VornWriteFile", Hex("0000000000000001 0000000000000002 00000002 EEEEEEEE 0304 00000000"));
    vorn.section.Expect(0, Hex("00000000 00000001 0000000000000002"));
    EXPECT_EQ(vorn.Record(), "VornWriteFile session=0x1 file=0x2 size=2147483648 data=0102\n"
                             "VornWriteFile session=0x1 file=0x2 size=0 data=0304\n");
    vorn.talk.Send(OrderlyStop());
}

// Session 1, object 2 and code 3, and a text of up to 8 bytes at offset 24.
Bytes ErrorTextInList(const Bytes &size)
{
    return Hex("0000000000000001 0000000000000002 00000003 00000008 A0A1A2A3A4A5A6A7") + size;
}

Bytes ErrorTextOutList(std::string_view text, const Bytes &size)
{
    return Hex("0000000000000001 0000000000000002 00000003 00000008") + Hex(text) + size;
}

// The limit is the size and not the block's length: the text runs into the bytes behind the block, over which the size
// is then written.
TEST(Vorn, GetErrorTextOfASizeLargerThanTheBlock)
{
    Vorn vorn("VornGetErrorText text=0123456789ABCDEFGHIJ\n");
    vorn.Call("VornGetErrorText", ErrorTextInList(Hex("00000010")));
    vorn.section.Expect(0, ErrorTextOutList("3031323334353637", Hex("00000010 43444500 EEEEEEEE")));
    vorn.talk.Send(OrderlyStop());
}

// Its terminator would lie 4 GiB behind the text, where nothing is: the run ends as a fault there ends it.
TEST(Vorn, GetErrorTextOfASizeOfNothingEndsTheRun)
{
    Vorn vorn("VornGetErrorText text=bad\n");
    vorn.Ask("VornGetErrorText", ErrorTextInList(Hex("00000000")));
    vorn.talk.ExpectClosed();
    vorn.talk.End();
    EXPECT_EQ(vorn.talk.Helper().PlainLog(), "");
}

TEST(Vorn, FailureFrameByteForByte)
{
    Vorn vorn("", 7);
    vorn.Ask("VornCloseDir", {});
    vorn.talk.Expect(Hex("45 0000006A FFFFFFFF FFFFFFFF"
                         "4600 6100 6900 6C00 6500 6400 2000 7400 6F00 2000"
                         "7300 6500 7200 6900 6100 6C00 6900 7300 6500 2000 6900 6E00 7000 7500 7400 2000"
                         "2800 5000 7200 6F00 6300 6500 7300 7300 5F00"
                         "5600 6F00 7200 6E00 4300 6C00 6F00 7300 6500 4400 6900 7200 2900 0000"));
    vorn.talk.Send(OrderlyStop());
    vorn.talk.End();
    EXPECT_EQ(vorn.talk.Helper().PlainLog(), "");
}

TEST(Vorn, BlockLengthThatPassesTheSection)
{
    Vorn vorn("", 64);
    for (const char *length : {"00000029", "7FFFFFFF", "FFFFFFF8", "FFFFFFFC", "FFFFFFFF"}) {
        for (const char *function : {"VornReadFile", "VornWriteFile"}) {
            vorn.Ask(function, Hex("0000000000000001 0000000000000002") + Hex(length));
            vorn.talk.Expect(
                FailureFrame(u"Failed to serialise input (Process_" + platform::FromUtf8(function) + u")"));
        }
    }
    vorn.talk.Send(OrderlyStop());
}

// A whole file through one helper, with handles that only the library understands.
TEST(Vorn, OneSessionFromItsStartToItsEnd)
{
    Vorn vorn("VornCreateSession out=0xAAAAAAAAAAAAAAAA\nVornCreateFile out=0xBBBBBBBBBBBBBBBB\n"
              "VornWriteFile out=3\nVornGetErrorText text=none\n");
    vorn.Call("GetLibApiVersion", {});
    vorn.Call("VornCreateSession", {});
    const Bytes session = vorn.section.Get(0, 8);
    vorn.Call("VornCreateFile", session);
    const Bytes file = vorn.section.Get(0, 8);
    vorn.Call("VornOpenFile", session + file + Narrow("f") + Be32(2));
    vorn.Call("VornWriteFile", session + file + Hex("00000003 00000000 0A0B0C 00000003"));
    vorn.section.Expect(0, Hex("00000003 00000000"));
    vorn.Call("VornRestoreFile", session + file);
    vorn.Call("VornCloseFile", session + file);
    vorn.Call("VornCloseSession", session);
    vorn.talk.Send(OrderlyStop());
    vorn.talk.End();
    EXPECT_EQ(vorn.Record(), "GetLibApiVersion\nVornCreateSession\n"
                             "VornCreateFile session=0xaaaaaaaaaaaaaaaa\n"
                             "VornOpenFile session=0xaaaaaaaaaaaaaaaa file=0xbbbbbbbbbbbbbbbb path=\"f\" mode=2\n"
                             "VornWriteFile session=0xaaaaaaaaaaaaaaaa file=0xbbbbbbbbbbbbbbbb size=3 data=0a0b0c\n"
                             "VornRestoreFile session=0xaaaaaaaaaaaaaaaa file=0xbbbbbbbbbbbbbbbb\n"
                             "VornCloseFile session=0xaaaaaaaaaaaaaaaa file=0xbbbbbbbbbbbbbbbb\n"
                             "VornCloseSession session=0xaaaaaaaaaaaaaaaa\n");
}

} // namespace
} // namespace kessil::test
