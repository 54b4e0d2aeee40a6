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

TEST(Vorn, CreateSession)
{
    Vorn vorn("VornCreateSession out=0x1122334455667788 result=5\nVornCreateSession\n");
    vorn.Call("VornCreateSession", {});
    vorn.section.Expect(0, Hex("1122334455667788 EEEEEEEE"));
    EXPECT_EQ(vorn.Record(), "VornCreateSession\n");
    // A handle that the library leaves alone is 0.
    vorn.Call("VornCreateSession", {});
    vorn.section.Expect(0, Hex("0000000000000000 EEEEEEEE"));
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, CloseSession)
{
    Vorn vorn("VornCloseSession result=5\n");
    vorn.Call("VornCloseSession", Hex("8899AABBCCDDEEFF"));
    vorn.section.Expect(0, Hex("8899AABBCCDDEEFF EEEEEEEEEEEEEEEE"));
    EXPECT_EQ(vorn.Record(), "VornCloseSession session=0x8899aabbccddeeff\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, CreateDir)
{
    Vorn vorn("VornCreateDir out=0x0102030405060708 result=0xFFFFFFFE\nVornCreateDir result=3\n");
    vorn.Call("VornCreateDir", Hex("0000000000000009"));
    vorn.section.Expect(0, Hex("0102030405060708 FFFFFFFE EEEEEEEE"));
    vorn.Call("VornCreateDir", Hex("000000000000000A"));
    vorn.section.Expect(0, Hex("0000000000000000 00000003 EEEEEEEE"));
    EXPECT_EQ(vorn.Record(), "VornCreateDir session=0x9\nVornCreateDir session=0xa\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, OpenDir)
{
    Vorn vorn("VornOpenDir result=0x01020304\n");
    vorn.Call("VornOpenDir", Hex("0000000000000001 0000000000000002") + Narrow("/a b/\xC3\xA9\"\\"));
    vorn.section.Expect(0, Hex("01020304 00000001 0000000000000002"));
    vorn.Call("VornOpenDir", Hex("FFFFFFFFFFFFFFFF 8000000000000000 00"));
    vorn.section.Expect(0, Hex("01020304 FFFFFFFF 8000000000000000"));
    EXPECT_EQ(vorn.Record(), "VornOpenDir session=0x1 dir=0x2 path=\"/a b/\\xC3\\xA9\\x22\\x5C\"\n"
                             "VornOpenDir session=0xffffffffffffffff dir=0x8000000000000000 path=\"\"\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, GetNextDirItem)
{
    Vorn vorn("VornGetNextDirItem peek=4 fill=A1A2A3A4A5 result=7\n");
    vorn.Call("VornGetNextDirItem", Hex("0000000000000001 0000000000000002 00000008 EEEEEEEE 0102030405060708"));
    vorn.section.Expect(0, Hex("0000000000000001 0000000000000002 00000008 EEEEEEEE A1A2A3A4A5060708"
                               "00000007 EEEEEEEE"));
    EXPECT_EQ(vorn.Record(), "VornGetNextDirItem session=0x1 dir=0x2 data=01020304\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, GetNextDirItemOfNoBytes)
{
    Vorn vorn;
    vorn.Call("VornGetNextDirItem", Hex("0000000000000001 0000000000000002 00000000 EEEEEEEE"));
    vorn.section.Expect(0, Hex("0000000000000001 0000000000000002 00000000 EEEEEEEE 00000000 EEEEEEEE"));
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, CloseDir)
{
    Vorn vorn("VornCloseDir result=5\n");
    vorn.Call("VornCloseDir", Hex("0000000000000001 0000000000000002"));
    vorn.section.Expect(0, Hex("0000000000000001 0000000000000002 EEEEEEEE"));
    EXPECT_EQ(vorn.Record(), "VornCloseDir session=0x1 dir=0x2\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, CreateFile)
{
    Vorn vorn("VornCreateFile out=0xF1F2F3F4F5F6F7F8 result=1\nVornCreateFile\n");
    vorn.Call("VornCreateFile", Hex("0000000000000009"));
    vorn.section.Expect(0, Hex("F1F2F3F4F5F6F7F8 00000001 EEEEEEEE"));
    vorn.Call("VornCreateFile", Hex("0000000000000009"));
    vorn.section.Expect(0, Hex("0000000000000000 00000000 EEEEEEEE"));
    EXPECT_EQ(vorn.Record(), "VornCreateFile session=0x9\nVornCreateFile session=0x9\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, OpenFile)
{
    Vorn vorn("VornOpenFile result=0xFFFFFFFF\n");
    // The mode stands right behind the path's terminator, wherever that is.
    vorn.Call("VornOpenFile", Hex("0000000000000001 0000000000000002 6100 F0000001"));
    vorn.section.Expect(0, Hex("FFFFFFFF 00000001 0000000000000002 6100 F0000001"));
    vorn.Call("VornOpenFile", Hex("0000000000000001 0000000000000002 616200 00000000"));
    vorn.section.Expect(0, Hex("FFFFFFFF 00000001"));
    EXPECT_EQ(vorn.Record(), "VornOpenFile session=0x1 file=0x2 path=\"a\" mode=4026531841\n"
                             "VornOpenFile session=0x1 file=0x2 path=\"ab\" mode=0\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, ReadFile)
{
    Vorn vorn("VornReadFile count_up=10 out=10 result=3\n");
    vorn.Call("VornReadFile", Hex("0000000000000001 0000000000000002 00000010 EEEEEEEE"
                                  "A0A1A2A3A4A5A6A7A8A9AAABACADAEAF 00000010"));
    vorn.section.Expect(0, Hex("0000000000000001 0000000000000002 00000010 EEEEEEEE"
                               "00010203040506070809AAABACADAEAF 00000010 0000000A 00000003 EEEEEEEE"));
    EXPECT_EQ(vorn.Record(), "VornReadFile session=0x1 file=0x2 size=16 data=a0a1a2a3a4a5a6a7a8a9aaabacadaeaf\n");
    vorn.talk.Send(OrderlyStop());
}

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

TEST(Vorn, ReadFileLeavesItsCountAtNothing)
{
    Vorn vorn("VornReadFile result=9\n");
    vorn.Call("VornReadFile", Hex("0000000000000001 0000000000000002 00000000 EEEEEEEE 00000000"));
    vorn.section.Expect(0, Hex("0000000000000001 0000000000000002 00000000 EEEEEEEE 00000000 00000000 00000009 EE"));
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, ReadFileGrowsTheSectionAndKeepsTheLibrarysBytes)
{
    Vorn vorn("VornReadFile count_up=16 out=16 result=0\n", 44);
    vorn.Ask("VornReadFile", Hex("0000000000000001 0000000000000002 00000010 EEEEEEEE"
                                 "A0A1A2A3A4A5A6A7A8A9AAABACADAEAF 00000010"));
    vorn.talk.Expect(ResizeFrame(vorn.talk.SectionName(u'0'), 56));
    const Section grown = Section::Open(vorn.talk.SectionName(u'0'), 56);
    vorn.talk.Send(Hex("53 00000000"));
    vorn.talk.Expect(Hex("53 00000000"));
    grown.Expect(0, Hex("0000000000000001 0000000000000002 00000010 EEEEEEEE"
                        "000102030405060708090A0B0C0D0E0F 00000010 00000010 00000000 00000000"));
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

TEST(Vorn, WriteFile)
{
    Vorn vorn("VornWriteFile out=4 result=6\n");
    vorn.Call("VornWriteFile", Hex("0000000000000001 0000000000000002 00000008 EEEEEEEE"
                                   "0102030405060708 00000005"));
    // Nothing is echoed: count and result lie at the start, over the session.
    vorn.section.Expect(0, Hex("00000004 00000006 0000000000000002 00000008 EEEEEEEE 0102030405060708 00000005 EE"));
    EXPECT_EQ(vorn.Record(), "VornWriteFile session=0x1 file=0x2 size=5 data=0102030405\n");
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

TEST(Vorn, WriteFileOfNoBytes)
{
    Vorn vorn;
    vorn.Call("VornWriteFile", Hex("0000000000000001 0000000000000002 00000000 EEEEEEEE 00000000"));
    vorn.section.Expect(0, Hex("00000000 00000000 0000000000000002"));
    EXPECT_EQ(vorn.Record(), "VornWriteFile session=0x1 file=0x2 size=0 data=\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, RestoreFile)
{
    Vorn vorn("VornRestoreFile result=0x80000000\n");
    vorn.Call("VornRestoreFile", Hex("0000000000000001 0000000000000002"));
    vorn.section.Expect(0, Hex("80000000 00000001 0000000000000002 EEEEEEEE"));
    EXPECT_EQ(vorn.Record(), "VornRestoreFile session=0x1 file=0x2\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, CloseFile)
{
    Vorn vorn("VornCloseFile result=5\n");
    vorn.Call("VornCloseFile", Hex("0000000000000001 0000000000000002"));
    vorn.section.Expect(0, Hex("0000000000000001 0000000000000002 EEEEEEEE"));
    EXPECT_EQ(vorn.Record(), "VornCloseFile session=0x1 file=0x2\n");
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

TEST(Vorn, GetErrorText)
{
    Vorn vorn("VornGetErrorText text=bad\n");
    vorn.Call("VornGetErrorText", ErrorTextInList(Hex("00000008")));
    // What is left of the size is filled with zeros.
    vorn.section.Expect(0, ErrorTextOutList("6261640000000000", Hex("00000008 EEEEEEEE")));
    EXPECT_EQ(vorn.Record(), "VornGetErrorText session=0x1 object=0x2 code=3\n");
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, GetErrorTextCutsALongTextToItsSize)
{
    Vorn vorn("VornGetErrorText text=0123456789\n");
    vorn.Call("VornGetErrorText", ErrorTextInList(Hex("00000008")));
    vorn.section.Expect(0, ErrorTextOutList("3031323334353600", Hex("00000008 EEEEEEEE")));
    vorn.Call("VornGetErrorText", ErrorTextInList(Hex("00000004")));
    vorn.section.Expect(0, ErrorTextOutList("30313200A4A5A6A7", Hex("00000004 EEEEEEEE")));
    vorn.Call("VornGetErrorText", ErrorTextInList(Hex("00000001")));
    vorn.section.Expect(0, ErrorTextOutList("00A1A2A3A4A5A6A7", Hex("00000001 EEEEEEEE")));
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, GetErrorTextWithoutATextIsEmpty)
{
    Vorn vorn;
    for (const char *size : {"00000008", "00000001", "00000000"}) {
        vorn.Call("VornGetErrorText", ErrorTextInList(Hex(size)));
        vorn.section.Expect(0, ErrorTextOutList("00A1A2A3A4A5A6A7", Hex(size) + Hex("EEEEEEEE")));
    }
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, GetErrorTextOfExactlyItsSize)
{
    Vorn vorn("VornGetErrorText text=01234567\nVornGetErrorText text=0123456\nVornGetErrorText text=\n");
    vorn.Call("VornGetErrorText", ErrorTextInList(Hex("00000008")));
    vorn.section.Expect(0, ErrorTextOutList("3031323334353600", Hex("00000008")));
    vorn.Call("VornGetErrorText", ErrorTextInList(Hex("00000008")));
    vorn.section.Expect(0, ErrorTextOutList("3031323334353600", Hex("00000008")));
    vorn.Call("VornGetErrorText", ErrorTextInList(Hex("00000008")));
    vorn.section.Expect(0, ErrorTextOutList("0000000000000000", Hex("00000008")));
    vorn.talk.Send(OrderlyStop());
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
    EXPECT_EQ(vorn.talk.Helper().Story(), "");
}

TEST(Vorn, GetLibApiVersion)
{
    Vorn vorn("GetLibApiVersion result=2\nGetLibApiVersion result=0\nGetLibApiVersion result=1\n"
              "GetLibApiVersion result=3\nGetLibApiVersion result=0x80000002\nGetLibApiVersion result=0xFFFFFFFF\n");
    vorn.Call("GetLibApiVersion", {});
    vorn.section.Expect(0, Hex("00000002 EEEEEEEE"));
    for (int other = 0; other < 5; ++other) {
        vorn.Call("GetLibApiVersion", Hex("00000000"));
        vorn.section.Expect(0, Hex("FFFFFFFF EEEEEEEE"));
    }
    vorn.talk.Send(OrderlyStop());
}

TEST(Vorn, GetBackupType)
{
    Vorn vorn("GetBackupType result=0x01020304\n");
    vorn.Call("GetBackupType", {});
    vorn.section.Expect(0, Hex("01020304 EEEEEEEE"));
    EXPECT_EQ(vorn.Record(), "GetBackupType\n");
    vorn.talk.Send(OrderlyStop());
}

// An in-list that breaks off, at each of its fields: the section ends inside the last that is there.
TEST(Vorn, InListThatIsTooShortNamesTheHandlerAndCallsNothing)
{
    struct Case
    {
        const char *function;
        std::u16string failure;
        std::vector<Bytes> lists;
    };
    const Bytes one = Hex("0000000000000001");
    const Bytes two = one + Hex("0000000000000002");
    const std::vector<Case> cases = {
        {"VornCloseSession", u"Process_VornCloseSession", {one}},
        {"VornCreateDir", u"Process_VornCreateDir", {one}},
        {"VornOpenDir", u"Process_VornOpenDir", {one, two, two + Hex("61626300")}},
        {"VornGetNextDirItem", u"Process_VornGetNextDirItem", {one, two + Hex("00000004 00000000 01020304")}},
        {"VornCloseDir", u"Process_VornCloseDir", {one, two}},
        {"VornCreateFile", u"Process_VornCreateFile", {one}},
        {"VornOpenFile", u"Process_VornOpenFile", {two + Hex("6100"), two + Hex("6100 00000001")}},
        {"VornReadFile",
         u"Process_VornReadFile",
         {two + Hex("00000000"), two + Hex("00000000 00000000"), two + Hex("00000001 00000000 55"),
          two + Hex("00000000 00000000 00000000")}},
        {"VornWriteFile",
         u"Process_VornWriteFile",
         {one, two + Hex("00000001 00000000 55"), two + Hex("00000000 00000000 00000000")}},
        {"VornRestoreFile", u"Process_VornRestoreFile", {one, two}},
        {"VornCloseFile", u"Process_VornCloseFile", {one, two}},
        {"VornGetErrorText",
         u"Process_VornGetErrorText",
         {two + Hex("00000003"), two + Hex("00000003 00000004 01020304"),
          two + Hex("00000003 00000004 01020304 00000001")}},
    };
    const Recorder recorder;
    Conversation talk(0, {});
    talk.Load(TargetLibrary("vorn_recorder"));
    char16_t digit = u'7';
    for (const Case &each : cases) {
        for (const Bytes &list : each.lists) {
            const auto size = static_cast<std::uint32_t>(list.size() - 1);
            Section section = Announce(talk, size, digit);
            digit = digit == u'7' ? u'8' : u'7'; // the name before is still in use
            section.Put(0, First(size, list));
            talk.Send(CallFrame(u"", each.function, std::string("SIGNATURE_") + each.function));
            talk.Expect(FailureFrame(u"Failed to serialise input (" + each.failure + u")"));
        }
    }
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(recorder.Lines(), "");
    EXPECT_EQ(talk.Helper().Story(), "");
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

// The road of a whole file through one helper, with handles that only the library understands.
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
