#include "families/vorn/vorn.h"

#include "marshal/handler.h"
#include "unit/channel_fixture.h"

#include <cstring>
#include <functional>
#include <sstream>
#include <stdexcept>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint64_t session = 0x1122334455667788;
constexpr std::uint64_t object = 0x99AABBCCDDEEFF00;
const Bytes session_form = Hex("11 22 33 44 55 66 77 88");
const Bytes object_form = Hex("99 AA BB CC DD EE FF 00");

// The library: what its functions were called with, and what they do with the data they get.
struct Library
{
    std::vector<std::string> calls;
    std::uint32_t result = 0;
    std::uint64_t handle = 0;
    std::uint32_t count = 0;
    const char *text = nullptr;
    std::function<void(void *data)> work;
};

Library library;

template <class... Arguments>
void Record(const char *function, Arguments... arguments)
{
    std::ostringstream call;
    call << function << std::hex << std::uppercase;
    ((call << ' ' << arguments), ...);
    library.calls.push_back(call.str());
}

void Work(void *data)
{
    if (library.work)
        library.work(data);
}

std::uint32_t CreateSession(std::uint64_t *created)
{
    Record("CreateSession");
    *created = library.handle;
    return library.result;
}

std::uint32_t CloseSession(std::uint64_t of)
{
    Record("CloseSession", of);
    return library.result;
}

std::uint32_t Create(std::uint64_t of, std::uint64_t *created)
{
    Record("Create", of);
    *created = library.handle;
    return library.result;
}

std::uint32_t OpenDir(std::uint64_t of, std::uint64_t dir, const char *path)
{
    Record("OpenDir", of, dir, path);
    return library.result;
}

std::uint32_t GetNextDirItem(std::uint64_t of, std::uint64_t dir, void *item)
{
    Record("GetNextDirItem", of, dir);
    Work(item);
    return library.result;
}

std::uint32_t OnTwo(std::uint64_t of, std::uint64_t what)
{
    Record("OnTwo", of, what);
    return library.result;
}

std::uint32_t OpenFile(std::uint64_t of, std::uint64_t file, const char *path, std::uint32_t mode)
{
    Record("OpenFile", of, file, path, mode);
    return library.result;
}

std::uint32_t Transfer(std::uint64_t of, std::uint64_t file, void *data, std::uint32_t size, std::uint32_t *count)
{
    Record("Transfer", of, file, size);
    Work(data);
    *count = library.count;
    return library.result;
}

const char *GetErrorText(std::uint64_t of, std::uint64_t what, std::uint32_t code)
{
    Record("GetErrorText", of, what, code);
    return library.text;
}

std::uint32_t Answer()
{
    Record("Answer");
    return library.result;
}

// Fills nothing: what it doesn't set is the handler's own.
std::uint32_t FillsNothing(std::uint64_t, std::uint64_t *)
{
    return 0;
}

class VornTest : public ChannelTest
{
protected:
    VornTest() { library = Library(); }

    // One call over a section of `bytes` and, behind them, `spare` bytes of AA.
    template <class Function>
    void Call(Handler handler, Function *function, const Bytes &bytes, std::size_t spare = 0)
    {
        GiveSection(u"s0", bytes + Repeat(0xAA, spare));
        handler(channel, reinterpret_cast<void *>(function));
    }
};

TEST_F(VornTest, CreateSession)
{
    library.handle = session;
    library.result = 5;
    Call(Process_VornCreateSession, CreateSession, Repeat(0xAA, 9));
    EXPECT_THAT(library.calls, ElementsAre("CreateSession"));
    EXPECT_EQ(Section(9), session_form + Hex("AA"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, CreateSessionWithoutASectionMakesOne)
{
    library.handle = session;
    fake_pipe.Deliver(SuccessFrame());
    Process_VornCreateSession(channel, reinterpret_cast<void *>(CreateSession));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u".1", 8) + SuccessFrame());
    EXPECT_EQ(Section(8), session_form);
}

TEST_F(VornTest, CloseSessionWritesNothing)
{
    library.result = 5;
    Call(Process_VornCloseSession, CloseSession, session_form, 1);
    EXPECT_THAT(library.calls, ElementsAre("CloseSession 1122334455667788"));
    EXPECT_EQ(Section(9), session_form + Hex("AA"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, CreateDir)
{
    library.handle = object;
    library.result = 0x80000001;
    Call(Process_VornCreateDir, Create, session_form, 5);
    EXPECT_THAT(library.calls, ElementsAre("Create 1122334455667788"));
    EXPECT_EQ(Section(13), object_form + Hex("80 00 00 01 AA"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, CreateDirGrowsTheSectionForItsResult)
{
    library.handle = object;
    library.result = 3;
    GiveSection(u"s0", session_form + Repeat(0xAA, 3));
    fake_pipe.Deliver(SuccessFrame());
    Process_VornCreateDir(channel, reinterpret_cast<void *>(Create));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 12) + SuccessFrame());
    EXPECT_EQ(Section(12), object_form + Hex("00 00 00 03"));
}

TEST_F(VornTest, OpenDir)
{
    library.result = 7;
    Call(Process_VornOpenDir, OpenDir, session_form + object_form + Narrow("/a/b"), 1);
    EXPECT_THAT(library.calls, ElementsAre("OpenDir 1122334455667788 99AABBCCDDEEFF00 /a/b"));
    EXPECT_EQ(Section(5), Hex("00 00 00 07 55"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, GetNextDirItem)
{
    library.result = 9;
    library.work = [](void *item) { std::memcpy(item, "ITEM!", 5); };
    Call(Process_VornGetNextDirItem, GetNextDirItem,
         session_form + object_form + Hex("00 00 00 05 AA AA AA AA 00 00 00 00 00"), 12);
    EXPECT_THAT(library.calls, ElementsAre("GetNextDirItem 1122334455667788 99AABBCCDDEEFF00"));
    EXPECT_EQ(Section(34),
              session_form + object_form + Hex("00 00 00 05 AA AA AA AA") + Plain("ITEM!") + Hex("00 00 00 09 AA"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, GetNextDirItemThroughGrowth)
{
    library.result = 9;
    library.work = [](void *item) { std::memcpy(item, "ITEM!", 5); };
    GiveSection(u"s0", session_form + object_form + Hex("00 00 00 05 AA AA AA AA 00 00 00 00 00"));
    fake_pipe.Deliver(SuccessFrame());
    Process_VornGetNextDirItem(channel, reinterpret_cast<void *>(GetNextDirItem));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 37) + SuccessFrame());
    EXPECT_EQ(Section(37), session_form + object_form + Hex("00 00 00 05 AA AA AA AA") + Plain("ITEM!") +
                               Hex("00 00 00 09") + Repeat(0, 4));
}

TEST_F(VornTest, CloseDir)
{
    library.result = 5;
    Call(Process_VornCloseDir, OnTwo, session_form + object_form, 1);
    EXPECT_THAT(library.calls, ElementsAre("OnTwo 1122334455667788 99AABBCCDDEEFF00"));
    EXPECT_EQ(Section(17), session_form + object_form + Hex("AA"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, CreateFile)
{
    library.handle = object;
    library.result = 2;
    Call(Process_VornCreateFile, Create, session_form, 5);
    EXPECT_THAT(library.calls, ElementsAre("Create 1122334455667788"));
    EXPECT_EQ(Section(13), object_form + Hex("00 00 00 02 AA"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, HandleThatTheLibraryDoesNotSetIsZero)
{
    Call(Process_VornCreateFile, FillsNothing, session_form, 4);
    EXPECT_EQ(Section(12), Repeat(0, 12));
}

TEST_F(VornTest, OpenFile)
{
    library.result = 0xFFFFFFFF;
    Call(Process_VornOpenFile, OpenFile, session_form + object_form + Narrow("f") + Hex("80 00 00 03"), 1);
    EXPECT_THAT(library.calls, ElementsAre("OpenFile 1122334455667788 99AABBCCDDEEFF00 f 80000003"));
    EXPECT_EQ(Section(5), Hex("FF FF FF FF 55"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

// The layout of one exchange, byte by byte: block of 16 at offset 24, size at 40, count at 44, result at 48.
TEST_F(VornTest, ReadFile)
{
    library.count = 10;
    library.result = 1;
    library.work = [](void *block) { std::memcpy(block, "0123456789", 10); };
    const Bytes request =
        session_form + object_form + Hex("00 00 00 10") + Repeat(0xEE, 4) + Repeat(0xCC, 16) + Hex("00 00 00 10");
    Call(Process_VornReadFile, Transfer, request, 12);
    EXPECT_THAT(library.calls, ElementsAre("Transfer 1122334455667788 99AABBCCDDEEFF00 10"));
    EXPECT_EQ(Section(56), session_form + object_form + Hex("00 00 00 10") + Repeat(0xEE, 4) + Plain("0123456789") +
                               Repeat(0xCC, 6) + Hex("00 00 00 10 00 00 00 0A 00 00 00 01") + Repeat(0xAA, 4));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, ReadFileInASectionOneByteTooSmallGrowsItTo56)
{
    library.count = 16;
    library.work = [](void *block) { std::memset(block, 'd', 16); };
    const Bytes request =
        session_form + object_form + Hex("00 00 00 10") + Repeat(0xEE, 4) + Repeat(0xCC, 16) + Hex("00 00 00 10");
    GiveSection(u"s0", request + Repeat(0xAA, 11));
    fake_pipe.Deliver(SuccessFrame());
    Process_VornReadFile(channel, reinterpret_cast<void *>(Transfer));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 56) + SuccessFrame());
    EXPECT_EQ(Section(56), session_form + object_form + Hex("00 00 00 10") + Repeat(0xEE, 4) + Repeat('d', 16) +
                               Hex("00 00 00 10 00 00 00 10 00 00 00 00") + Repeat(0xAA, 3) + Hex("00"));
}

TEST_F(VornTest, ReadFileGetsAPointerIntoTheSection)
{
    const unsigned char *data = nullptr;
    library.work = [&data](void *block) { data = static_cast<unsigned char *>(block); };
    Call(Process_VornReadFile, Transfer,
         session_form + object_form + Hex("00 00 00 01") + Repeat(0, 5) + Hex("00 00 00 01"), 32);
    EXPECT_EQ(data, channel.SharedView() + 24);
}

// The size is the library's affair; the length of the block is the section's.
TEST_F(VornTest, ReadFileDoesNotCompareSizeAndLength)
{
    Call(Process_VornReadFile, Transfer,
         session_form + object_form + Hex("00 00 00 01") + Repeat(0, 5) + Hex("7F FF FF FF"), 32);
    EXPECT_THAT(library.calls, ElementsAre("Transfer 1122334455667788 99AABBCCDDEEFF00 7FFFFFFF"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, WriteFile)
{
    library.count = 3;
    library.result = 4;
    Bytes seen;
    library.work = [&seen](void *block) {
        const auto *bytes = static_cast<const unsigned char *>(block);
        seen.assign(bytes, bytes + 3);
        std::memset(block, 'x', 3);
    };
    const Bytes request =
        session_form + object_form + Hex("00 00 00 03") + Repeat(0xEE, 4) + Plain("abc") + Hex("00 00 00 03");
    Call(Process_VornWriteFile, Transfer, request, 4);
    EXPECT_THAT(library.calls, ElementsAre("Transfer 1122334455667788 99AABBCCDDEEFF00 3"));
    EXPECT_EQ(seen, Plain("abc"));
    Bytes expected = request;
    const Bytes results = Hex("00 00 00 03 00 00 00 04");
    std::copy(results.begin(), results.end(), expected.begin());
    EXPECT_EQ(Section(expected.size()), expected);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, WriteFileOfNothingStillGetsAPointer)
{
    bool null = true;
    library.work = [&null](void *block) { null = block == nullptr; };
    Call(Process_VornWriteFile, Transfer,
         session_form + object_form + Hex("00 00 00 00") + Repeat(0, 4) + Hex("00 00 00 00"));
    EXPECT_FALSE(null);
    EXPECT_EQ(Section(8), Repeat(0, 8));
}

TEST_F(VornTest, RestoreFile)
{
    library.result = 6;
    Call(Process_VornRestoreFile, OnTwo, session_form + object_form);
    EXPECT_THAT(library.calls, ElementsAre("OnTwo 1122334455667788 99AABBCCDDEEFF00"));
    EXPECT_EQ(Section(5), Hex("00 00 00 06 55"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, CloseFile)
{
    library.result = 5;
    Call(Process_VornCloseFile, OnTwo, session_form + object_form);
    EXPECT_THAT(library.calls, ElementsAre("OnTwo 1122334455667788 99AABBCCDDEEFF00"));
    EXPECT_EQ(Section(16), session_form + object_form);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

// Error texts: a text element of `length` bytes at offset 24 and the limit `size` behind it.

class ErrorTextTest : public VornTest
{
protected:
    static Bytes Request(std::uint32_t length, std::uint32_t size)
    {
        return session_form + object_form + Hex("00 00 00 0D") + Be32(length) + Repeat(0xCC, length) + Be32(size);
    }

    void Ask(std::uint32_t length, std::uint32_t size, std::size_t spare = 20)
    {
        Call(Process_VornGetErrorText, GetErrorText, Request(length, size), spare);
    }

    Bytes Text(std::size_t count) const { return Bytes(channel.SharedView() + 24, channel.SharedView() + 24 + count); }
};

TEST_F(ErrorTextTest, WholeExchange)
{
    library.text = "no";
    Ask(8, 8);
    EXPECT_THAT(library.calls, ElementsAre("GetErrorText 1122334455667788 99AABBCCDDEEFF00 D"));
    EXPECT_EQ(Section(37), session_form + object_form + Hex("00 00 00 0D 00 00 00 08") + Hex("6E 6F") + Repeat(0, 6) +
                               Hex("00 00 00 08 AA"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(ErrorTextTest, NullIsAnEmptyText)
{
    Ask(8, 8);
    EXPECT_EQ(Text(8), Hex("00") + Repeat(0xCC, 7));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(ErrorTextTest, NullDoesNotLookAtTheLimit)
{
    Ask(8, 0);
    EXPECT_EQ(Text(8), Hex("00") + Repeat(0xCC, 7));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(ErrorTextTest, TextIsCutToOneLessThanTheLimit)
{
    library.text = "abcdefgh";
    Ask(8, 5);
    EXPECT_EQ(Text(8), Plain("abcd") + Hex("00") + Repeat(0xCC, 3));
}

TEST_F(ErrorTextTest, TextOfExactlyTheLimitLosesItsLastCharacter)
{
    library.text = "abcde";
    Ask(8, 5);
    EXPECT_EQ(Text(8), Plain("abcd") + Hex("00") + Repeat(0xCC, 3));
}

TEST_F(ErrorTextTest, ShortTextIsPaddedWithZerosToTheLimit)
{
    library.text = "ab";
    Ask(8, 6);
    EXPECT_EQ(Text(8), Plain("ab") + Repeat(0, 4) + Repeat(0xCC, 2));
}

TEST_F(ErrorTextTest, LimitOfOneIsTheTerminatorAlone)
{
    library.text = "abc";
    Ask(8, 1);
    EXPECT_EQ(Text(8), Hex("00") + Repeat(0xCC, 7));
}

// The limit is the size element's value and not the text element's length.
TEST_F(ErrorTextTest, LimitBeyondTheElementReachesTheBytesBehindIt)
{
    library.text = "abcdefghijklmnopqrstuvwxyz";
    Ask(8, 20);
    EXPECT_EQ(Text(8), Plain("abcdefgh"));
    // The size is written over what came there, and the rest of the text stands behind it.
    EXPECT_EQ(Section(56), session_form + object_form + Hex("00 00 00 0D 00 00 00 08") + Plain("abcdefgh") +
                               Hex("00 00 00 14") + Plain("mnopqrs") + Hex("00") + Repeat(0xAA, 12));
}

TEST_F(ErrorTextTest, WhatWouldLieBehindTheSectionIsLeftOut)
{
    library.text = "abcdefghijklmnopqrstuvwxyz";
    Ask(8, 0xFFFFFFFF, 8);
    EXPECT_EQ(Section(44), session_form + object_form + Hex("00 00 00 0D 00 00 00 08") + Plain("abcdefgh") +
                               Hex("FF FF FF FF") + Plain("mnopqrst"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(ErrorTextTest, LimitOfZeroEndsTheRun)
{
    library.text = "abc";
    EXPECT_THROW(Ask(8, 0), std::out_of_range);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

// Answers without arguments.

TEST_F(VornTest, LibApiVersionTwoPasses)
{
    library.result = 2;
    Call(Process_GetLibApiVersion, Answer, Repeat(0xAA, 5));
    EXPECT_THAT(library.calls, ElementsAre("Answer"));
    EXPECT_EQ(Section(5), Hex("00 00 00 02 AA"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, EveryOtherLibApiVersionIsFolded)
{
    for (const std::uint32_t version : {0U, 1U, 3U, 0x102U, 0xFFFFFFFEU}) {
        library.result = version;
        fake_section = FakeSection();
        CIPCCommunication fresh;
        ASSERT_TRUE(fresh.Attach(u"pipe", error));
        fake_pipe.Deliver(SuccessFrame());
        Process_GetLibApiVersion(fresh, reinterpret_cast<void *>(Answer));
        ASSERT_EQ(fresh.SharedSize(), 4u);
        EXPECT_EQ(Bytes(fresh.SharedView(), fresh.SharedView() + 4), Hex("FF FF FF FF")) << version;
    }
}

TEST_F(VornTest, BackupTypeIsWhateverTheLibrarySays)
{
    library.result = 0xDEADBEEF;
    Call(Process_GetBackupType, Answer, Repeat(0xAA, 4));
    EXPECT_EQ(Section(4), Hex("DE AD BE EF"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(VornTest, ExceptionOfTheLibraryPassesThrough)
{
    library.work = [](void *) { throw std::runtime_error("the library's own"); };
    EXPECT_THROW(Call(Process_VornReadFile, Transfer,
                      session_form + object_form + Hex("00 00 00 01") + Repeat(0, 5) + Hex("00 00 00 01"), 32),
                 std::runtime_error);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

// Whatever a handler reads, a byte less of it is the input failure, and the library isn't called.

struct InputCase
{
    const char *name;
    Handler handler;
    Bytes request;
};

const Bytes block_form = Hex("00 00 00 02 EE EE EE EE 61 62");

std::vector<InputCase> InputCases()
{
    const Bytes two = session_form + object_form;
    return {
        {"VornCloseSession", Process_VornCloseSession, session_form},
        {"VornCreateDir", Process_VornCreateDir, session_form},
        {"VornOpenDir", Process_VornOpenDir, two + Narrow("p")},
        {"VornGetNextDirItem", Process_VornGetNextDirItem, two + block_form},
        {"VornCloseDir", Process_VornCloseDir, two},
        {"VornCreateFile", Process_VornCreateFile, session_form},
        {"VornOpenFile", Process_VornOpenFile, two + Narrow("p") + Be32(1)},
        {"VornReadFile", Process_VornReadFile, two + block_form + Be32(2)},
        {"VornWriteFile", Process_VornWriteFile, two + block_form + Be32(2)},
        {"VornRestoreFile", Process_VornRestoreFile, two},
        {"VornCloseFile", Process_VornCloseFile, two},
        {"VornGetErrorText", Process_VornGetErrorText, two + Be32(1) + Hex("00 00 00 02 61 62") + Be32(2)},
    };
}

class VornInputTest : public ChannelTest, public ::testing::WithParamInterface<InputCase>
{};

INSTANTIATE_TEST_SUITE_P(All, VornInputTest, ::testing::ValuesIn(InputCases()),
                         [](const auto &row) { return row.param.name; });

TEST_P(VornInputTest, SectionCutAtAnyByteIsTheInputFailure)
{
    const Bytes &request = GetParam().request;
    const WideString text = u"Failed to serialise input (Process_" + platform::FromUtf8(GetParam().name) + u")";
    for (std::size_t size = 0; size < request.size(); ++size) {
        SCOPED_TRACE(size);
        fake_pipe = FakePipe();
        fake_section = FakeSection();
        CIPCCommunication fresh;
        ASSERT_TRUE(fresh.Attach(u"pipe", error));
        fake_section.Add(u"s", First(size, request));
        fake_pipe.Deliver(ResizeFrame(u"s", size) + Frame('z', {}));
        char type = 0;
        unsigned char *data = nullptr;
        std::uint32_t count = 0;
        bool eof = false;
        ASSERT_TRUE(fresh.GetNextRequest(type, data, count, eof, error));
        fake_pipe.written.clear();
        // No function behind the handler: a call of it would end the program.
        GetParam().handler(fresh, nullptr);
        EXPECT_EQ(fake_pipe.written, FailureFrame(text));
    }
}

// The output failure tells the same name.
struct OutputCase
{
    const char *name;
    Handler handler;
    void *function;
    Bytes request;
};

std::vector<OutputCase> OutputCases()
{
    const auto address = [](auto *function) { return reinterpret_cast<void *>(function); };
    const Bytes two = session_form + object_form;
    return {
        {"VornCreateSession", Process_VornCreateSession, address(CreateSession), {}},
        {"VornCreateDir", Process_VornCreateDir, address(Create), session_form},
        {"VornGetNextDirItem", Process_VornGetNextDirItem, address(GetNextDirItem), two + block_form},
        {"VornCreateFile", Process_VornCreateFile, address(Create), session_form},
        {"VornReadFile", Process_VornReadFile, address(Transfer), two + block_form + Be32(2)},
        {"VornGetErrorText", Process_VornGetErrorText, address(GetErrorText),
         two + Be32(1) + Hex("00 00 00 02 61 62") + Be32(2)},
        {"GetLibApiVersion", Process_GetLibApiVersion, address(Answer), {}},
        {"GetBackupType", Process_GetBackupType, address(Answer), {}},
    };
}

class VornOutputTest : public ChannelTest, public ::testing::WithParamInterface<OutputCase>
{};

INSTANTIATE_TEST_SUITE_P(All, VornOutputTest, ::testing::ValuesIn(OutputCases()),
                         [](const auto &row) { return row.param.name; });

TEST_P(VornOutputTest, RefusedGrowthIsTheOutputFailure)
{
    library = Library();
    if (!GetParam().request.empty())
        GiveSection(u"s0", GetParam().request);
    fake_pipe.Deliver(ErrorFrame(1, 1, u"refused"));
    GetParam().handler(channel, GetParam().function);
    const Bytes failure =
        FailureFrame(u"Failed to serialise output (Process_" + platform::FromUtf8(GetParam().name) + u")");
    ASSERT_GT(fake_pipe.written.size(), failure.size());
    EXPECT_EQ(Bytes(fake_pipe.written.end() - static_cast<std::ptrdiff_t>(failure.size()), fake_pipe.written.end()),
              failure);
    EXPECT_EQ(fake_pipe.written[0], 'R');
    EXPECT_THAT(library.calls, ::testing::SizeIs(1));
}

} // namespace
} // namespace kessil::test
