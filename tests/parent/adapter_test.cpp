#include "parent/adapter_calls.h"
#include "parent/scripted.h"

#include <gmock/gmock.h>

#include <future>
#include <thread>

namespace kessil::parent {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::StartsWith;

/// What ends the log block, and all of it when there are no lines.
const std::string empty_log = "FFFFFC19 ";

/// A line "ab" of level 5.
const std::string line = "FFFFFF9D 00000002 6162 00000005 ";

const std::string refused = "send FFFFFFFF\n";

/// The answer to the request that is sent behind some calls.
const std::string sentinel = " 45 0000000E FFFFFFFF NUMBER 6E00 6F00 0000\n";

std::string Joined(std::initializer_list<std::string_view> parts)
{
    std::string text;
    for (const std::string_view part : parts)
        text += part;
    return text;
}

std::string Expect(const AdapterCall &call)
{
    return "expect " + call.request + (call.has_sentinel ? "\nsentinel\n" : "\n");
}

std::string Exchange(const AdapterCall &call, const std::string &log, const std::string &answer)
{
    const std::string sent = (call.logs ? log : "") + answer + (call.has_sentinel ? sentinel : "\n");
    return Expect(call) + (sent == "\n" ? "" : "send " + sent);
}

class AdapterTest : public ScriptedTest
{
protected:
    AdapterTest()
    {
        adapter_options.limit = {0ms, 30s};
        adapter_options.on_log = [this](std::uint8_t level, std::string_view text) { log.emplace_back(level, text); };
    }

    /// A started helper that has loaded an adapter of the name "a".
    Adapter &Host(const std::string &script)
    {
        Start("attach\nexpect 6C 00000001 61\nsend 00000001\n" + script);
        adapter.emplace(*helper, adapter_options);
        const Result result = adapter->Load(u"a");
        EXPECT_TRUE(result) << result.message;
        return *adapter;
    }

    AdapterOptions adapter_options;
    std::optional<Adapter> adapter;
    std::vector<std::pair<int, std::string>> log;
};

TEST_F(AdapterTest, EveryCommandIsTested)
{
    EXPECT_EQ(AdapterCalls().size() + SectionCalls().size(), 61U);
}

TEST_F(AdapterTest, EachCommandHasItsBytesAndItsYes)
{
    std::string script;
    for (const AdapterCall &call : AdapterCalls())
        script += Exchange(call, empty_log, call.yes);
    Host(script + stop);
    for (const AdapterCall &call : AdapterCalls()) {
        const Answer answer = call.make(*adapter);
        ASSERT_TRUE(answer) << call.name << answer.message << Log();
        EXPECT_TRUE(answer.result);
        EXPECT_EQ(answer.error + answer.message, "") << call.name;
    }
    EXPECT_EQ(helper->Figures().calls, 46U);
    EXPECT_TRUE(log.empty());
    ExpectGoodEnd();
}

TEST_F(AdapterTest, EachNoComesWithTheAdaptersText)
{
    std::string script;
    for (const AdapterCall &call : AdapterCalls())
        script += call.no.empty() ? "" : Exchange(call, empty_log, call.no);
    Host(script + stop);
    for (const AdapterCall &call : AdapterCalls()) {
        if (call.no.empty())
            continue;
        const Answer answer = call.make(*adapter);
        EXPECT_FALSE(answer) << call.name;
        ASSERT_TRUE(answer.result) << call.name << answer.message << Log();
        EXPECT_EQ(answer.error, "bad") << call.name;
        EXPECT_THAT(answer.message,
                    AllOf(StartsWith(call.name + " (command "), HasSubstr(") of library a failed: bad")));
    }
    EXPECT_EQ(helper->Figures().refused, 0U);
    ExpectGoodEnd();
}

TEST_F(AdapterTest, LogLinesComeBeforeEachAnswer)
{
    std::string script;
    std::size_t lines = 0;
    for (const AdapterCall &call : AdapterCalls()) {
        script += Exchange(call, Joined({line, "FFFFFF9D 00000000 000000FF ", empty_log}), call.yes);
        lines += call.logs ? 2 : 0;
    }
    Host(script + stop);
    for (const AdapterCall &call : AdapterCalls()) {
        const Answer answer = call.make(*adapter);
        ASSERT_TRUE(answer) << call.name << answer.message << Log();
        if (call.logs) {
            EXPECT_THAT(log, ElementsAre(Pair(5, "ab"), Pair(255, ""))) << call.name;
        }
        log.clear();
    }
    EXPECT_EQ(lines, 88U);
    EXPECT_EQ(helper->Figures().notices, lines);
    ExpectGoodEnd();
}

TEST_F(AdapterTest, LogLinesNeedNoCallback)
{
    adapter_options.on_log = {};
    Host("expect 66 38\nsend " + line + empty_log + "00000001\n" + stop);
    EXPECT_TRUE(adapter->CloseDisk());
    ExpectGoodEnd();
}

TEST_F(AdapterTest, BytesThatArriveOneByOne)
{
    Host("expect 66 24 00000001 70\ndribble " + line + empty_log + "00000001 00000001 78 0000000000000102 FFFFFFFE\n" +
         stop);
    std::vector<AdapterItem> items;
    const Answer answer = adapter->ListDatacenters("p", items);
    EXPECT_TRUE(answer) << answer.message;
    EXPECT_EQ(items, (std::vector<AdapterItem>{{"x", -2, 0x102, {}}}));
    ExpectGoodEnd();
}

TEST_F(AdapterTest, ListingsReplaceWhatWasThere)
{
    Host("expect 66 25 00000000\nsend " + empty_log + "00000002 00000000 FFFFFFFFFFFFFFFF 7FFFFFFF\n" +
         "send 00000002 E400 0000000000000000 80000000\n" + "expect 66 26 00000000\nsend " + empty_log +
         "00000001 00000001 78 0000000000000001 00000002 FFFFFFFD\n" + "expect 66 27 00000000\nsend " + empty_log +
         "00000000\n" + stop);
    std::vector<AdapterItem> items = {{"before", 1, 1, 1}};
    EXPECT_TRUE(adapter->ListHosts("", items));
    EXPECT_EQ(items, (std::vector<AdapterItem>{{"", 0x7FFFFFFF, 0xFFFFFFFFFFFFFFFF, {}},
                                               {"\xE4\0"s, std::numeric_limits<std::int32_t>::min(), 0, {}}}));
    EXPECT_TRUE(adapter->ListFolders("", items));
    EXPECT_EQ(items, (std::vector<AdapterItem>{{"x", 2, 1, -3}}));
    EXPECT_TRUE(adapter->ListMachines("", items));
    EXPECT_TRUE(items.empty());
    ExpectGoodEnd();
}

TEST_F(AdapterTest, ValuesAreReturned)
{
    Host("expect 66 7F\nsend 00000003 312E32\n"
         "expect 66 31 00000000 00000000 00000000 00000000 00000000 00000000\nsend " +
         empty_log + "FFFFFFFF 00000000 01020304\n" + "expect 66 2C 00000000\nsend " + empty_log +
         "00000001 00000001 00000001 78 0000000000000001 00000002 00000003 00000009\n" +
         "expect 66 2D FFFFFFFF 00000000 00000000\nsend " + empty_log + "00000001 FFFFFFFB\n" +
         "expect 66 06 00000000 00000004\nsend " + empty_log + "7FFFFFFF\n" + stop);
    std::string version;
    EXPECT_TRUE(adapter->GetLibraryVersion(version));
    EXPECT_EQ(version, "1.2");
    std::uint32_t timestamp = 0;
    const Answer snapshot = adapter->SnapshotVM("", "", "", false, false, false, timestamp);
    EXPECT_FALSE(snapshot);
    EXPECT_EQ(snapshot.message, "SnapshotVM (command 49) of library a failed, without a reason");
    EXPECT_EQ(timestamp, 0x01020304U);
    std::vector<AdapterItem> items;
    BackupSession session{};
    EXPECT_TRUE(adapter->GetDiskChangeIDS("", items, session));
    EXPECT_EQ(items, (std::vector<AdapterItem>{{"x", 2, 1, 3}}));
    EXPECT_EQ(session, BackupSession{9});
    std::int32_t number = 0;
    EXPECT_TRUE(adapter->GetDiskChangedSectorNum(BackupSession::None, 0, "", number));
    EXPECT_EQ(number, -5);
    EXPECT_TRUE(adapter->StartBackupSession("", AclInfo{4}, session));
    EXPECT_EQ(session, BackupSession{0x7FFFFFFF});
    ExpectGoodEnd();
}

TEST_F(AdapterTest, TextThatIsNotUtf8IsShownAndKept)
{
    Host("expect 66 38\nsend " + empty_log + "FFFFFFFF 00000007 C3A4 20 E4 21 0D0A\n" + stop);
    const Answer answer = adapter->CloseDisk();
    EXPECT_EQ(answer.error, "\xC3\xA4 \xE4!\r\n");
    EXPECT_EQ(answer.message, "CloseDisk (command 56) of library a failed: \xC3\xA4 ?!");
    ExpectGoodEnd();
}

TEST_F(AdapterTest, TextsAreSentUpTo1024Bytes)
{
    std::string expected;
    for (int i = 0; i < 1024; ++i)
        expected += "70";
    Host("expect 66 1A 00000400 00000400 " + expected + "\nsend " + empty_log + "00000001\n" + stop);
    EXPECT_TRUE(adapter->AddFolder(std::string(1024, 'p')));
    const Answer answer = adapter->AddFolder(std::string(1025, 'p'));
    EXPECT_EQ(answer.result.outcome, Outcome::NotSent);
    EXPECT_EQ(answer.message, "AddFolder (command 26) of library a: a text is longer than 1024 bytes");
    BackupOptions handle{};
    EXPECT_EQ(adapter->CreateBackupOptions({}, std::string(1025, 'p'), handle).result.outcome, Outcome::NotSent);
    EXPECT_EQ(helper->Figures().calls, 1U);
    ExpectGoodEnd();
}

TEST_F(AdapterTest, WhatTheAdapterWouldReadOtherwiseIsNotSent)
{
    Host("section\n" + stop);
    std::vector<AdapterItem> items;
    std::byte data[1024] = {};
    const auto some = std::span(data);
    Listing listing{};
    const std::pair<Answer, std::string> answers[] = {
        {adapter->ListHosts("a\0b"s, items), "ListHosts (command 37) of library a: a text holds a zero"},
        {adapter->SetVMConfig(RestoreSession{0}, "a\0"s), "SetVMConfig (command 61) of library a: a text holds a zero"},
        {adapter->CreateCredentials("u", "\0"s), "CreateCredentials (command 3) of library a: a text holds a zero"},
        {adapter->ReadSectors(0, some.first(511)),
         "ReadSectors (command 57) of library a: the data isn't whole sectors"},
        {adapter->WriteSectors(0, some.first(513)),
         "WriteSectors (command 58) of library a: the data isn't whole sectors"},
        {adapter->ReadSectors(0x8000000000000000, some),
         "ReadSectors (command 57) of library a: the start is 2^63 or more"},
        {adapter->WriteSectors(0xFFFFFFFFFFFFFFFF, some),
         "WriteSectors (command 58) of library a: the start is 2^63 or more"},
        {adapter->ListResourcePools("a\0b"s, listing),
         "ListResourcePools (command 14) of library a: a text of the argument list holds a zero"},
    };
    for (const auto &[answer, message] : answers) {
        EXPECT_EQ(answer.result.outcome, Outcome::NotSent);
        EXPECT_EQ(answer.message, message);
    }
    EXPECT_EQ(helper->Figures().calls, 0U);
    ExpectGoodEnd();
}

TEST_F(AdapterTest, DataOf4GigabytesIsNotSent)
{
    Host("section\n" + stop);
    // Never read: the size alone says no.
    std::byte one{};
    const std::uint64_t size = std::uint64_t{1} << 32;
    const std::span<std::byte> huge(&one, size);
    std::int32_t number = 0;
    std::uint64_t count = 0;
    AclInfo acl{};
    for (const Answer &answer :
         {adapter->ReadSectors(0, huge), adapter->WriteSectors(0, huge), adapter->WriteFileACL(RestoreFile{0}, huge),
          adapter->ReadBackupFile(BackupFile{0}, huge, number, count), adapter->CreateACLInfo(huge, "k", "s", acl)})
        EXPECT_EQ(answer.result.outcome, Outcome::NotSent) << answer.message;
    ExpectGoodEnd();
}

TEST_F(AdapterTest, NothingIsSentBeforeTheStartOrWithoutAnAdapter)
{
    Prepare("attach\nsection\n" + stop);
    adapter.emplace(*helper);
    EXPECT_EQ(adapter->Load(u"a").outcome, Outcome::NotSent);
    EXPECT_EQ(adapter->CloseDisk().message, "the helper is not running");
    ASSERT_TRUE(helper->Start());
    std::uint32_t number = 0;
    AdapterItem item;
    for (const Answer &answer : {adapter->CloseDisk(), adapter->GetReadBufferUse(BackupFile{0}, number),
                                 adapter->NextItem(Listing{0}, item)}) {
        EXPECT_EQ(answer.result.outcome, Outcome::NotSent);
        EXPECT_THAT(answer.message, HasSubstr(" of the first library: no adapter is loaded"));
    }
    ExpectGoodEnd();
}

TEST_F(AdapterTest, LoadsByNamesOfOneByteForEachCharacter)
{
    Start("attach\nexpect 6C 00000003 62E4FF\nsend 00000001\nexpect 6C 00000000\nsend FFFFFFFF\n" + stop);
    adapter.emplace(*helper);
    const Result result = adapter->Load(u"b\u00E4\u00FF");
    EXPECT_TRUE(result) << result.message;
    EXPECT_EQ(adapter->Load(u"b\u0100").message,
              "loading b\xC4\x80: the name has a character above U+00FF, which can't be sent");
    EXPECT_EQ(adapter->Load({u"b\0", 2}).outcome, Outcome::NotSent);
    EXPECT_EQ(adapter->Load(u"").outcome, Outcome::Refused);
    ExpectGoodEnd();
}

TEST_F(AdapterTest, ARefusedLoadShowsTheEndOfTheLog)
{
    Start("attach\nexpect 6C 00000001 61\nlog Load library failure:  no such file\nsend FFFFFFFF\n" + stop);
    adapter.emplace(*helper);
    const Result result = adapter->Load(u"a");
    EXPECT_EQ(result.outcome, Outcome::Refused);
    EXPECT_THAT(result.message, AllOf(StartsWith("the helper refused loading a, for a reason that its log may show; "),
                                      HasSubstr("Load library failure:  no such file")));
    EXPECT_EQ(helper->Figures().refused, 1U);
    EXPECT_EQ(adapter->CloseDisk().result.outcome, Outcome::NotSent);
    ExpectGoodEnd();
}

TEST_F(AdapterTest, MessagesNameTheLibraryThatSortsFirst)
{
    const std::string no = "expect 66 38\nsend " + empty_log + "FFFFFFFF 00000000\n";
    Host("expect 6C 00000001 42\nsend 00000001\n" + no + "expect 6C 00000001 42\nsend FFFFFFFF\n" + no + stop);
    EXPECT_TRUE(adapter->Load(u"B"));
    EXPECT_THAT(adapter->CloseDisk().message, HasSubstr(" of library B failed"));
    // A load that fails has given the earlier one back.
    EXPECT_FALSE(adapter->Load(u"B"));
    EXPECT_THAT(adapter->CloseDisk().message, HasSubstr(" of library a failed"));
    ExpectGoodEnd();
}

TEST_F(AdapterTest, LoadAnswersThatTheProtocolDoesNotAllow)
{
    for (const std::string answer : {"00000000", "00000001 00", "FFFFFFFF 00", "53000000"}) {
        Start("attach\nexpect 6C 00000001 61\nsend " + answer + "\nhang\n");
        adapter.emplace(*helper);
        EXPECT_EQ(adapter->Load(u"a").outcome, Outcome::BrokenProtocol) << answer;
    }
    Start("attach\nexpect 6C 00000001 61\nsend 000000\nexit 3\n");
    adapter.emplace(*helper);
    EXPECT_EQ(adapter->Load(u"a").outcome, Outcome::Died);
}

TEST_F(AdapterTest, ARefusalWithoutArgumentsLeavesTheHelperServing)
{
    Host("expect 66 38\nlog func_ptr==NULL\n" + refused + "expect 66 7F\n" + refused + "expect 66 38\nsend " +
         empty_log + "00000001\n" + stop);
    const Answer answer = adapter->CloseDisk();
    EXPECT_EQ(answer.result.outcome, Outcome::Refused);
    EXPECT_FALSE(answer.okay);
    EXPECT_THAT(answer.message, AllOf(StartsWith("the helper refused CloseDisk (command 56) of library a, a function "
                                                 "that the library doesn't have; "),
                                      HasSubstr("func_ptr==NULL")));
    std::string version;
    EXPECT_EQ(adapter->GetLibraryVersion(version).result.outcome, Outcome::Refused);
    EXPECT_TRUE(adapter->CloseDisk());
    EXPECT_EQ(helper->Figures().refused, 2U);
    ExpectGoodEnd();
}

TEST_F(AdapterTest, ARefusalWithArgumentsEndsTheHelper)
{
    Host("expect 66 25 00000001 70\nlog func_ptr==NULL\n" + refused + "hang\n");
    std::vector<AdapterItem> items;
    const Answer answer = adapter->ListHosts("p", items);
    EXPECT_EQ(answer.result.outcome, Outcome::Refused);
    EXPECT_THAT(answer.message, AllOf(StartsWith("the helper refused ListHosts (command 37) of library a, a function "
                                                 "that the library doesn't have, and took the arguments for requests, "
                                                 "so it was ended; "),
                                      HasSubstr("func_ptr==NULL")));
    EXPECT_FALSE(helper->Running());
    EXPECT_EQ(adapter->CloseDisk().message, answer.message);
    EXPECT_EQ(helper->Load(u"b").outcome, Outcome::Refused);
    WideString text;
    EXPECT_EQ(helper->ErrorText(0, u"m", text).message, answer.message);
}

TEST_F(AdapterTest, ARefusalInTheMiddleOfTheData)
{
    // The helper doesn't wait for the data's end.
    Host("expect 66 3A 0000000000000000 0000000000010000 02000000\n" + refused + "drop\nexit 1\n");
    const std::vector<std::byte> data(0x02000000);
    const Answer answer = adapter->WriteSectors(0, data);
    EXPECT_EQ(answer.result.outcome, Outcome::Refused) << answer.message;
    EXPECT_FALSE(helper->Running());
}

TEST_F(AdapterTest, ADeathInTheMiddleOfTheData)
{
    Host("expect 66 3A 0000000000000000 0000000000010000 02000000\nexpect_fill 1000 00\ndrop\nexit 5\n");
    const std::vector<std::byte> data(0x02000000);
    const Answer answer = adapter->WriteSectors(0, data);
    EXPECT_EQ(answer.result.outcome, Outcome::Died) << answer.message;
    EXPECT_EQ(answer.result.exit_code, 5U);
    EXPECT_THAT(answer.message, StartsWith("the helper died in WriteSectors (command 58) of library a, "));
}

TEST_F(AdapterTest, TheLibrarysInitializationIsRefusedOrFails)
{
    const std::string request = "expect 66 17 00000001 63 00000001 6C\n";
    // After a refusal the helper reads the arguments as a request that it doesn't know.
    Host(request + refused + "exit 1\n");
    const Answer refusal = adapter->InitVixDiskLib("c", "l");
    EXPECT_EQ(refusal.result.outcome, Outcome::Refused) << refusal.message;
    EXPECT_FALSE(helper->Running());

    Host(request + refused + "exit 5\n");
    const Answer death = adapter->InitVixDiskLib("c", "l");
    EXPECT_EQ(death.result.outcome, Outcome::Died);
    EXPECT_EQ(death.result.exit_code, 5U);

    Host(request + refused + "send 00000000\n" + stop);
    const Answer failure = adapter->InitVixDiskLib("c", "l");
    EXPECT_TRUE(failure.result) << failure.message;
    EXPECT_FALSE(failure);
    EXPECT_EQ(failure.error, "");
    ExpectGoodEnd();
}

TEST_F(AdapterTest, SectorsAreReadStraightFromThePipe)
{
    constexpr std::size_t size = 1 << 20;
    Host("expect 66 39 7FFFFFFFFFFFFFFF 0000000000000800 00000000\nsend " + line + empty_log +
         "00100000\nsend_fill 1048575 5A\nsend 5B\n" +
         "expect 66 39 0000000000000000 0000000000000000 00000000\nsend " + empty_log + "00000000\n" + stop);
    std::vector<std::byte> data(size + 1, std::byte{1});
    const Answer answer = adapter->ReadSectors(0x7FFFFFFFFFFFFFFF, std::span(data).first(size));
    EXPECT_TRUE(answer) << answer.message;
    std::vector<std::byte> expected(size, std::byte{0x5A});
    expected.back() = std::byte{0x5B};
    expected.push_back(std::byte{1});
    EXPECT_TRUE(data == expected);
    EXPECT_TRUE(adapter->ReadSectors(0, {}));
    ExpectGoodEnd();
}

TEST_F(AdapterTest, SectorsAreSentWithoutACopy)
{
    Host("expect 66 3A 0000000000000001 0000000000000800 00100000\nexpect_fill 1048576 A5\nsend " + empty_log +
         "00000001\nexpect 66 3A 0000000000000000 0000000000000000 00000000\nsend " + empty_log + "00000001\n" + stop);
    const std::vector<std::byte> data(1 << 20, std::byte{0xA5});
    const Answer answer = adapter->WriteSectors(1, data);
    EXPECT_TRUE(answer) << answer.message;
    EXPECT_TRUE(adapter->WriteSectors(0, {}));
    ExpectGoodEnd();
}

TEST_F(AdapterTest, SectorsOfAnotherSizeBreakTheProtocol)
{
    for (const std::string size : {"00000000", "000001FF", "00000400", "FFFFFFFE"}) {
        Host(Joined({"expect 66 39 0000000000000000 0000000000000001 00000000\nsend ", empty_log, size, "\nhang\n"}));
        std::byte sector[512] = {};
        const Answer answer = adapter->ReadSectors(0, sector);
        EXPECT_EQ(answer.result.outcome, Outcome::BrokenProtocol);
        EXPECT_THAT(answer.message, HasSubstr("it sent a block of " + std::to_string(std::stoul(size, nullptr, 16)) +
                                              " bytes in the place of one of 512"));
    }
}

// The calls that answer with a bare value, or with a text alone.

class SentinelTest : public AdapterTest
{
protected:
    /// The Answer of OpenRestoreFile to this answer of the helper.
    Answer Open(const std::string &answer, const std::string &end = stop)
    {
        Host("expect 66 13 00000000 00000001 70\nsentinel\nsend " + empty_log + answer + '\n' + end);
        return adapter->OpenRestoreFile(RestoreSession{0}, "p", file);
    }

    void ExpectFile(const std::string &answer, std::int32_t expected)
    {
        file = RestoreFile::None;
        const Answer came = Open(answer);
        EXPECT_TRUE(came) << came.message;
        EXPECT_EQ(file, RestoreFile{expected});
        ExpectGoodEnd();
    }

    void ExpectText(const std::string &answer, const std::string &expected)
    {
        file = RestoreFile{77};
        const Answer came = Open(answer);
        EXPECT_TRUE(came.result) << came.message;
        EXPECT_FALSE(came);
        EXPECT_EQ(came.error, expected);
        EXPECT_EQ(file, RestoreFile{77});
        ExpectGoodEnd();
    }

    RestoreFile file{};
};

TEST_F(SentinelTest, AHandle)
{
    ExpectFile("00000003" + sentinel, 3);
    ExpectFile("7FFFFFFF" + sentinel, 0x7FFFFFFF);
    // A lookup may well have an empty text for an answer, or a long one.
    ExpectFile("00000003 45 0000000A FFFFFFFF NUMBER 0000", 3);
}

TEST_F(SentinelTest, HandleZeroAndNoTextLookAlike)
{
    ExpectFile("00000000" + sentinel, 0);
}

TEST_F(SentinelTest, TextsOfAllLengthsUpToTheSentinels)
{
    std::string hex;
    for (int length = 1; length < 30; ++length) {
        hex += "45";
        char head[9];
        std::snprintf(head, sizeof head, "%08X", static_cast<unsigned>(length));
        ExpectText(Joined({head, hex, sentinel}), std::string(static_cast<std::size_t>(length), 'E'));
    }
}

TEST_F(SentinelTest, ATextThatBeginsLikeTheSentinelsAnswer)
{
    ExpectText("0000000D 45 0000000E FFFFFFFF 01020304" + sentinel, "E\0\0\0\x0E\xFF\xFF\xFF\xFF\x01\x02\x03\x04"s);
}

TEST_F(SentinelTest, ATextWithTheSentinelsNumberElsewhere)
{
    const Answer answer = Open("0000000D 53 0000000E FFFFFFFF NUMBER" + sentinel);
    EXPECT_TRUE(answer.result) << answer.message;
    EXPECT_FALSE(answer);
    EXPECT_THAT(answer.error, AllOf(StartsWith("S\0\0\0\x0E\xFF\xFF\xFF\xFF"s), testing::SizeIs(13)));
    ExpectGoodEnd();
}

TEST_F(SentinelTest, ATextAsLongAsAHandleMayBe)
{
    std::string text;
    std::string hex;
    for (int i = 0; i < 1 << 16; ++i)
        hex += "61";
    text.assign(1 << 16, 'a');
    ExpectText("00010000" + hex + sentinel, text);
}

TEST_F(SentinelTest, AnotherAnswerThanTheSentinels)
{
    for (const std::string &answer : std::vector<std::string>{
             "00000001 61 45 0000000E FFFFFFFF 01020304 6E00 6F00 0000", // another number
             "00000001 61 53 00000000 00000000 00000000 00000000",       // another frame
             "FFFFFFFE" + sentinel,                                      // no handle
             "80000000" + sentinel,                                      //
             "00100001" + std::string(40, '0'),                          // a text without end
             "FFFFFFFF" + std::string(40, '0'),                          //
             "00000003 45 00000008 FFFFFFFF NUMBER 00000000"s,           // no text
             "00000003 45 0000000C FFFFFFFF NUMBER 6E00 6F00"s,          // a text without an end
             "00000003 45 00100001 FFFFFFFF NUMBER 0000"s,               // a length beyond reason
             "00000003 45 0000000A FFFFFFFF NUMBER 0000 00"s,            // more behind it
         }) {
        const Answer came = Open(answer, "hang\n");
        EXPECT_EQ(came.result.outcome, Outcome::BrokenProtocol) << answer << came.message;
        EXPECT_THAT(came.message, HasSubstr("OpenRestoreFile (command 19) of library a"));
    }
}

TEST_F(SentinelTest, AnOverriddenValueEchoesItsSession)
{
    const std::string request = " 00000000 00000000\nsentinel\nsend " + empty_log;
    const auto answer = [&](const std::string &session, const std::string &echo, const std::string &end) {
        Host("expect 66 10 " + session + request + echo + sentinel + end);
        return adapter->SetOverrideValue(static_cast<RestoreSession>(std::stoul(session, nullptr, 16)), "", "");
    };
    for (const std::string session : {"00000000", "00000005", "FFFFFFFF"}) {
        EXPECT_TRUE(answer(session, session, stop)) << session;
        ExpectGoodEnd();
    }
    // A text of no bytes: it can't be the session.
    const Answer no = answer("00000005", "00000000", stop);
    EXPECT_TRUE(no.result);
    EXPECT_FALSE(no);
    EXPECT_EQ(no.error, "");
    ExpectGoodEnd();
    EXPECT_EQ(answer("00000005", "00000004", "hang\n").result.outcome, Outcome::BrokenProtocol);
}

// The calls whose arguments and results lie in the section.

class SectionCallTest : public AdapterTest
{
protected:
    static std::string Exchange(const SectionCall &call, const std::string &results)
    {
        return "expect " + call.request + "\narguments " + call.arguments + "\nresults 0 " + results + "\n" + success;
    }

    /// The same, with the first section announced.
    Adapter &HostWithSection(const std::string &script) { return Host("section\nlog_names\n" + script); }
};

TEST_F(SectionCallTest, EachHasItsArgumentsAndItsYes)
{
    std::string script;
    for (const SectionCall &call : SectionCalls())
        script += Exchange(call, call.yes);
    HostWithSection(script + stop);
    for (const SectionCall &call : SectionCalls()) {
        const Answer answer = call.make(*adapter);
        ASSERT_TRUE(answer) << call.name << answer.message << Log();
    }
    EXPECT_EQ(helper->Figures().calls, 15U);
    EXPECT_EQ(helper->Figures().sections_announced, 1U);
    ExpectGoodEnd();
    EXPECT_EQ(Leftovers(directory), "");
}

TEST_F(SectionCallTest, EachNoComesWithTheAdaptersText)
{
    std::string script;
    for (const SectionCall &call : SectionCalls())
        script += call.no.empty() ? "" : Exchange(call, call.no);
    HostWithSection(script + stop);
    for (const SectionCall &call : SectionCalls()) {
        if (call.no.empty())
            continue;
        const Answer answer = call.make(*adapter);
        ASSERT_TRUE(answer.result) << call.name << answer.message << Log();
        EXPECT_FALSE(answer) << call.name;
        EXPECT_EQ(answer.error, "bad") << call.name;
        EXPECT_THAT(answer.message,
                    AllOf(StartsWith(call.name + " (command "), HasSubstr(" of library a failed: bad")));
    }
    ExpectGoodEnd();
}

TEST_F(SectionCallTest, EachRefusalLeavesTheHelperServing)
{
    std::string script;
    for (const SectionCall &call : SectionCalls())
        script += "expect " + call.request + "\n" + refused;
    HostWithSection(script + stop);
    for (const SectionCall &call : SectionCalls()) {
        const Answer answer = call.make(*adapter);
        EXPECT_EQ(answer.result.outcome, Outcome::Refused) << call.name;
        EXPECT_THAT(answer.message, StartsWith("the helper refused " + call.name + " (command "));
    }
    EXPECT_EQ(helper->Figures().refused, 15U);
    ExpectGoodEnd();
}

TEST_F(SectionCallTest, NumbersCanSayNoWithoutAText)
{
    HostWithSection("expect 66 09\nresults 0 00000007 00000000 00\n" + success +
                    "expect 66 0A\nresults 0 00000000 00000000 80000000 00\n" + success +
                    "expect 66 2E\nresults 0 FFFFFFFF 00\n" + success + stop);
    BackupFile file{};
    std::uint32_t opened = 1;
    std::int32_t read = 1;
    Listing listing{};
    for (const Answer &answer :
         {adapter->OpenBackupFile(BackupSession{5}, "p", file, opened), adapter->ReadFileACL(BackupFile{5}, {}, read),
          adapter->ListConfigItems(RestoreSession{5}, listing)}) {
        EXPECT_TRUE(answer.result) << answer.message;
        EXPECT_FALSE(answer.okay);
        EXPECT_THAT(answer.message, HasSubstr("failed, without a reason"));
    }
    EXPECT_EQ(opened, 0U);
    EXPECT_EQ(read, std::numeric_limits<std::int32_t>::min());
    ExpectGoodEnd();
}

TEST_F(SectionCallTest, ARepeatedKeyIsAYesWithoutAHandle)
{
    HostWithSection("expect 66 12\nresults 0 FFFFFFFF 00\n" + success + stop);
    AclInfo acl{};
    EXPECT_TRUE(adapter->CreateACLInfo({}, "k", "s", acl));
    EXPECT_EQ(acl, AclInfo::None);
    ExpectGoodEnd();
}

TEST_F(SectionCallTest, NoticesAreLogLines)
{
    options.on_notice = [](std::uint8_t, const WideString &) { FAIL() << "a call by command has on_log"; };
    HostWithSection("expect 66 1D\nsend 4D 00000008 00000007 E400 0000\nsend 4D 00000006 000000FF 0000\n"
                    "results 0 00000063\n" +
                    success + stop);
    std::uint32_t number = 0;
    const Answer answer = adapter->GetReadBufferUse(BackupFile{5}, number);
    EXPECT_TRUE(answer) << answer.message;
    EXPECT_EQ(number, 0x63U);
    EXPECT_THAT(log, ElementsAre(Pair(7, "\xC3\xA4"), Pair(255, "")));
    EXPECT_EQ(helper->Figures().notices, 2U);
    ExpectGoodEnd();
}

/// A failure frame "Failed to get error message (P)".
const std::string lookup_failure =
    "send 45 00000048 FFFFFFFF FFFFFFFF 4600 6100 6900 6C00 6500 6400 2000 7400 6F00 2000 6700 6500 "
    "7400 2000 6500 7200 7200 6F00 7200 2000 6D00 6500 7300 7300 6100 6700 6500 2000 2800 5000 "
    "2900 0000\n";

TEST_F(SectionCallTest, AFailureWithoutATextIsFollowedByItsResults)
{
    HostWithSection("expect 66 1C\n" + lookup_failure + "send 4D 00000006 00000001 0000\nresults 0 FFFFFFFF 00\n" +
                    success + "expect 66 0C\n" + lookup_failure + "results 0 00\n" + success +
                    "expect 66 0C\nresults 0 00\n" + success + stop);
    BackupFile file{};
    const Answer answer = adapter->ReOpenBackupFile(BackupSession{5}, "p", file);
    EXPECT_TRUE(answer.result) << answer.message;
    EXPECT_FALSE(answer);
    EXPECT_EQ(answer.error, "Failed to get error message (P)");
    EXPECT_EQ(log.size(), 1U);
    EXPECT_EQ(adapter->CloseBackupFile(BackupFile{5}).error, "Failed to get error message (P)");
    EXPECT_TRUE(adapter->CloseBackupFile(BackupFile{5}));
    EXPECT_EQ(helper->Figures().refused, 0U);
    ExpectGoodEnd();
}

TEST_F(SectionCallTest, AFailureWithoutATextAndWithoutResults)
{
    HostWithSection("expect 66 0C\n" + lookup_failure + "send 45 0000000C FFFFFFFF FFFFFFFF 7800 0000\n" + stop);
    const Answer answer = adapter->CloseBackupFile(BackupFile{5});
    EXPECT_EQ(answer.result.outcome, Outcome::Refused);
    EXPECT_EQ(answer.result.text, u"x");
    ExpectGoodEnd();
}

TEST_F(SectionCallTest, CallsByNameHaveTheTextInTheResult)
{
    StartWithSection(call_f + lookup_failure + "results 0 00000007\n" + success + call_f + success + stop);
    Result result = CallF();
    EXPECT_TRUE(result) << result.message;
    EXPECT_EQ(result.text, u"Failed to get error message (P)");
    std::uint32_t number = 0;
    EXPECT_TRUE(helper->Results().U32(number).Complete());
    EXPECT_EQ(number, 7U);
    helper->Begin();
    result = CallF();
    EXPECT_TRUE(result);
    EXPECT_EQ(result.text, u"");
    ExpectGoodEnd();
}

TEST_F(SectionCallTest, ResultsInASectionThatTheHelperMade)
{
    HostWithSection("expect 66 0E\ncreate 100000\nannounce 100000\nexpect 53 00000000\nresults 0 00000007 00\n" +
                    success + stop);
    Listing listing{};
    const Answer answer = adapter->ListResourcePools("p", listing);
    EXPECT_TRUE(answer) << answer.message;
    EXPECT_EQ(listing, Listing{7});
    EXPECT_EQ(helper->Figures().sections_grown_by_helper, 1U);
    ExpectGoodEnd();
}

TEST_F(SectionCallTest, ALargeReadHasItsRoomAtOnce)
{
    HostWithSection("size 1052672\nexpect 66 0B\narguments 00 00 00 05 00 10 00 00\nresults 0 00100000\n"
                    "results 8 4142\nresults 1048584 00100000 0000000000100000 00\n" +
                    success + stop);
    std::vector<std::byte> data(1 << 20, std::byte{1});
    std::int32_t number = 0;
    std::uint64_t count = 0;
    const Answer answer = adapter->ReadBackupFile(BackupFile{5}, data, number, count);
    EXPECT_TRUE(answer) << answer.message;
    EXPECT_EQ(data[1], std::byte{'B'});
    EXPECT_EQ(data.back(), std::byte{0});
    EXPECT_EQ(count, 1U << 20);
    ExpectGoodEnd();
}

TEST_F(SectionCallTest, ResultsThatAreImpossible)
{
    std::byte room[4] = {std::byte{1}, std::byte{1}, std::byte{1}, std::byte{1}};
    std::int32_t number = 0;
    std::uint64_t count = 0;
    for (const std::string results : {"00000003", "00000005", "FFFFFFFF"}) {
        HostWithSection(Joined({"expect 66 0B\nresults 0 ", results, "\n", success, "hang\n"}));
        const Answer answer = adapter->ReadBackupFile(BackupFile{5}, room, number, count);
        EXPECT_EQ(answer.result.outcome, Outcome::BrokenProtocol) << results << answer.message;
        EXPECT_EQ(room[0], std::byte{1});
    }
    options.section_size = 4;
    HostWithSection("expect 66 2E\nresults 0 00000001\n" + success + "hang\n");
    Listing listing{};
    const Answer answer = adapter->ListConfigItems(RestoreSession{5}, listing);
    EXPECT_EQ(answer.result.outcome, Outcome::BrokenProtocol) << answer.message;
}

TEST_F(SectionCallTest, AnswersThatAreNotAllowed)
{
    for (const std::string answer : {"FFFFFF00", "FFFFFFFF 00", "FFFFFC19", "00000001", "66"}) {
        HostWithSection("expect 66 0C\nsend " + answer + "\nhang\n");
        EXPECT_EQ(adapter->CloseBackupFile(BackupFile{5}).result.outcome, Outcome::BrokenProtocol) << answer;
    }
    for (const std::string answer : {"FF", "FFFFFF", "53 000000"}) {
        HostWithSection("expect 66 0C\nsend " + answer + "\nexit 4\n");
        const Answer died = adapter->CloseBackupFile(BackupFile{5});
        EXPECT_EQ(died.result.outcome, Outcome::Died) << answer;
        EXPECT_THAT(died.message, StartsWith("the helper died in CloseBackupFile (command 12) of library a, "));
    }
}

TEST_F(SectionCallTest, ItemsOfAListingByHandle)
{
    const std::string next =
        "expect 46 00000024 6100 0000 4E6578744974656D00 5349474E41545552455F564144504E6578744974656D00\n";
    const std::string free =
        "expect 46 0000002A 6100 0000 467265654C697374696E6700 5349474E41545552455F56414450467265654C697374696E6700\n";
    Host("expect 4C 00000004 6100 0000\nsend 53 00000000\nsection\n" + next +
         "arguments 00 00 00 07\nresults 0 7800 FFFFFFFE 0000000000000102 00000009 00\nsend 4D 00000006 00000003 "
         "0000\n" +
         success + next + "arguments 00 00 00 07\nresults 0 00 00000000 0000000000000000 00000000 656E6400\n" +
         success + free + "arguments 00 00 00 07\n" + success + stop);
    AdapterItem item;
    const Answer answer = adapter->NextItem(Listing{7}, item);
    EXPECT_TRUE(answer) << answer.message << Log();
    EXPECT_EQ(item, (AdapterItem{"x", -2, 0x102, 9}));
    EXPECT_THAT(log, ElementsAre(Pair(3, "")));
    const Answer end = adapter->NextItem(Listing{7}, item);
    EXPECT_FALSE(end);
    EXPECT_EQ(end.error, "end");
    EXPECT_EQ(end.message, "NextItem (SIGNATURE_VADPNextItem) of library a failed: end");
    EXPECT_EQ(item.name, "");
    EXPECT_TRUE(adapter->FreeListing(Listing{7}));
    ExpectGoodEnd();
}

TEST_F(SectionCallTest, ItemsNeedTheLibraryLoadedForThem)
{
    Host("expect 4C 00000004 6100 0000\nsend 45 0000000A 00000000 00000002 0000\n" + stop);
    AdapterItem item;
    const Answer answer = adapter->NextItem(Listing{7}, item);
    EXPECT_EQ(answer.result.outcome, Outcome::Refused);
    EXPECT_EQ(answer.result.system_error, 2);
    EXPECT_THAT(answer.message, StartsWith("the helper refused loading a: "));
    ExpectGoodEnd();
}

// Helpers that lie, are late, or are to end.

class AdapterEndTest : public AdapterTest
{
protected:
    static constexpr char request[] = "expect 66 27 00000001 70\n";

    Answer List(const std::string &lines)
    {
        Host(request + lines);
        return adapter->ListMachines("p", items);
    }

    std::vector<AdapterItem> items;
};

TEST_F(AdapterEndTest, ImpossibleCountsAndLengthsAllocateNothing)
{
    // Two thousand million items, or a text of a megabyte, of which nothing comes.
    for (const std::string answer :
         {"7FFFFFFF", "7FFFFFFF 00000001 78 0000000000000102 FFFFFFFE", "00000001 00100000 61", "FFFFFFFF 00100000"}) {
        const Answer died = List(Joined({"send ", empty_log, answer, "\nexit 5\n"}));
        EXPECT_EQ(died.result.outcome, Outcome::Died) << died.message;
        EXPECT_THAT(died.message, StartsWith("the helper died in ListMachines (command 39) of library a, "));
        EXPECT_LE(items.size(), 1U);
    }
}

TEST_F(AdapterEndTest, HangsAnywhere)
{
    for (const std::string &answer :
         std::vector<std::string>{""s, "send FF\n"s, "send " + line + "\n", "send " + empty_log + "\n",
                                  "send " + empty_log + "00000001 00000005 61\n"}) {
        std::string slow;
        options.on_slow = [&](const SlowRequest &request_under_way) { slow = request_under_way.description; };
        adapter_options.limit = {50ms, 300ms};
        const Answer hung = List(answer + "hang\n");
        EXPECT_EQ(hung.result.outcome, Outcome::Hung) << hung.message;
        EXPECT_THAT(hung.message, StartsWith("the helper hung in ListMachines (command 39) of library a: no answer "));
        EXPECT_EQ(slow, "ListMachines (command 39) of library a");
    }
}

TEST_F(AdapterEndTest, HangsBeforeTheSentinelsAnswerAndInTheMiddleOfABlock)
{
    adapter_options.limit = {0ms, 300ms};
    Host("expect 66 13 00000000 00000000\nsentinel\nsend " + empty_log + "00000001\nhang\n");
    RestoreFile file{};
    EXPECT_EQ(adapter->OpenRestoreFile(RestoreSession{0}, "", file).result.outcome, Outcome::Hung);
    Host("expect 66 39 0000000000000000 0000000000000020 00000000\nsend " + empty_log +
         "00004000\nsend_fill 5000 11\nhang\n");
    std::vector<std::byte> data(0x4000);
    EXPECT_EQ(adapter->ReadSectors(0, data).result.outcome, Outcome::Hung);
}

TEST_F(AdapterEndTest, HangsWhileTheDataIsSent)
{
    adapter_options.limit = {0ms, 300ms};
    Host("expect 66 3A\nhang\n");
    const std::vector<std::byte> data(0x02000000);
    EXPECT_EQ(adapter->WriteSectors(0, data).result.outcome, Outcome::Hung);
}

TEST_F(AdapterEndTest, IsCancelledByALogLine)
{
    adapter_options.on_log = [this](std::uint8_t, std::string_view) { helper->Cancel(); };
    const Answer answer = List("send " + line + "\nhang\n");
    EXPECT_EQ(answer.result.outcome, Outcome::Cancelled);
    EXPECT_THAT(answer.message, HasSubstr("ListMachines (command 39) of library a"));
}

TEST_F(AdapterEndTest, IsCancelledByAnotherThread)
{
    std::promise<void> arrived;
    adapter_options.on_log = [&](std::uint8_t, std::string_view) { arrived.set_value(); };
    Host(request + "send "s + line + "\nhang\n");
    std::thread canceller([&] {
        arrived.get_future().wait();
        helper->Cancel();
    });
    EXPECT_EQ(adapter->ListMachines("p", items).result.outcome, Outcome::Cancelled);
    canceller.join();
    EXPECT_EQ(adapter->CloseDisk().result.outcome, Outcome::Cancelled);
}

TEST_F(AdapterEndTest, AnswersThatAreNotAllowed)
{
    for (const std::string &answer : std::vector<std::string>{
             "00000001"s,                                                       // no log block
             line + "FFFFFFFF",                                                 // a refusal behind a line
             "FFFFFF9D FFFFFFFF",                                               // a line without end
             "FFFFFF9D 00100001",                                               //
             "FFFFFF9D 00000000 00000100",                                      // a level of more than a byte
             "FFFFFF9D 00000000 FFFFFFFF",                                      //
             empty_log + "FFFFFFFE",                                            // no count
             empty_log + "80000000",                                            //
             empty_log + "FFFFFFFF FFFFFFFF",                                   // a text without end
             empty_log + "00000001 FFFFFFFF",                                   //
             empty_log + "00000000 00",                                         // more behind the answer
             empty_log + "FFFFFFFF 00000000 FFFFFC19",                          //
             empty_log + "00000001 00000000 0000000000000000 0000000000000000", // an extra that isn't there
         }) {
        const Answer broken = List("send " + answer + "\nhang\n");
        EXPECT_EQ(broken.result.outcome, Outcome::BrokenProtocol) << answer << broken.message;
        EXPECT_THAT(
            broken.message,
            StartsWith("the helper broke the protocol in ListMachines (command 39) of library a and was killed"));
        EXPECT_FALSE(helper->Running());
    }
}

TEST_F(AdapterEndTest, StatusesThatAreNotAllowed)
{
    for (const std::string status : {"00000000", "00000002", "FFFFFFFE", "FFFFFC19"}) {
        Host(Joined({"expect 66 38\nsend ", empty_log, status, "\nhang\n"}));
        EXPECT_EQ(adapter->CloseDisk().result.outcome, Outcome::BrokenProtocol) << status;
        Host("expect 66 17 00000000 00000000\nsend " + status + "\nhang\n");
        EXPECT_EQ(adapter->InitVixDiskLib("", "").result.outcome, Outcome::BrokenProtocol) << status;
        Host(Joined({"expect 66 18\nsend ", empty_log, status, "\nhang\n"}));
        EXPECT_EQ(adapter->ExitVixDiskLib().result.outcome, Outcome::BrokenProtocol) << status;
    }
}

TEST_F(AdapterEndTest, HandlesThatAreNotAllowed)
{
    BackupSession session{};
    Host("expect 66 06 00000000 FFFFFFFF\nsend " + empty_log + "FFFFFFFE\nhang\n");
    EXPECT_EQ(adapter->StartBackupSession("", AclInfo::None, session).result.outcome, Outcome::BrokenProtocol);
    Host("expect 66 2C 00000000\nsend " + empty_log + "00000001 00000000 FFFFFFFF\nhang\n");
    EXPECT_EQ(adapter->GetDiskChangeIDS("", items, session).result.outcome, Outcome::BrokenProtocol);
    EXPECT_EQ(session, BackupSession{});
    Host("expect 66 7F\nsend FFFFFFFE\nhang\n");
    std::string version;
    EXPECT_EQ(adapter->GetLibraryVersion(version).result.outcome, Outcome::BrokenProtocol);
}

} // namespace
} // namespace kessil::parent
