#include "parent/adapter_calls.h"
#include "parent/scripted.h"
#include "support/set_variable.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

namespace kessil::parent {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Pair;
using testing::StartsWith;

/// The adapter's calls with the helper that they are made for, and with the stand-in adapter.
class AdapterKessilTest : public testing::Test
{
protected:
    AdapterKessilTest()
    {
        options.program = KESSIL;
        options.log_file = directory.Path() / "log";
        options.request_limit = {0ms, 30s};
        adapter_options.limit = {0ms, 30s};
        adapter_options.on_log = [this](std::uint8_t level, std::string_view text) { log.emplace_back(level, text); };
    }

    /// Starts the helper and loads one of the libraries made for tests, which then follows this script.
    Adapter &Host(const std::string &script, const std::string &name = "recorder_tarnlink_windows_x64.dll")
    {
        directory.WriteFile("calls", script);
        test::SetVariable("KESSIL_SCRIPT", (directory.Path() / "calls").string());
        test::SetVariable("KESSIL_RECORD", (directory.Path() / "record").string());
        adapter.reset();
        helper = std::make_unique<Helper>(options);
        const Result started = helper->Start();
        EXPECT_TRUE(started) << started.message;
        adapter.emplace(*helper, adapter_options);
        library = std::filesystem::path(KESSIL_TEST_LIBRARIES "/" + name + LIBRARY_SUFFIX).u16string();
        const Result loaded = adapter->Load(library);
        EXPECT_TRUE(loaded) << loaded.message;
        return *adapter;
    }

    /// The lines of all that the adapter was called with.
    std::vector<std::string> Record() const
    {
        std::vector<std::string> lines;
        const std::string text = directory.ReadFile("record");
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = text.find('\n', at);
            lines.push_back(text.substr(at, end - at));
            at = end + 1;
        }
        return lines;
    }

    void ExpectGoodEnd()
    {
        const Result result = helper->Stop();
        EXPECT_TRUE(result) << result.message;
        EXPECT_EQ(result.exit_code, 0U);
    }

    static void ExpectYes(const Answer &answer) { EXPECT_TRUE(answer) << answer.message; }

    TemporaryDirectory directory;
    Options options;
    AdapterOptions adapter_options;
    std::unique_ptr<Helper> helper;
    std::optional<Adapter> adapter;
    WideString library;
    std::vector<std::pair<int, std::string>> log;
};

TEST_F(AdapterKessilTest, EveryCommandReadsItsYesToTheEnd)
{
    std::string script = "GetLibraryVersion text=1.2\n";
    for (const AdapterCall &call : AdapterCalls())
        script += call.name == "GetLibraryVersion" ? "" : call.name + " result=1\n";
    for (const SectionCall &call : SectionCalls())
        script += call.name + " result=1\n";
    Host(script);
    for (const AdapterCall &call : AdapterCalls()) {
        const Answer answer = call.make(*adapter);
        ASSERT_TRUE(answer.result) << call.name << answer.message;
        EXPECT_EQ(answer.error, "") << call.name;
    }
    for (const SectionCall &call : SectionCalls()) {
        const Answer answer = call.make(*adapter);
        ASSERT_TRUE(answer.result) << call.name << answer.message;
        EXPECT_EQ(answer.error, "") << call.name;
    }
    ExpectGoodEnd();
}

TEST_F(AdapterKessilTest, EveryCommandReadsItsNoToTheEnd)
{
    Host("GetLibraryVersion text=1.2\nGetErrorMessage text=no such thing\n");
    const std::set<std::string> silent = {"CreateCredentials", "AddFolder", "WriteFileACL"};
    for (const AdapterCall &call : AdapterCalls()) {
        const Answer answer = call.make(*adapter);
        ASSERT_TRUE(answer.result) << call.name << answer.message;
        const bool fails = !call.no.empty() && !silent.contains(call.name);
        EXPECT_EQ(answer.error, fails ? "no such thing" : "") << call.name;
        EXPECT_EQ(answer.okay, !fails) << call.name;
    }
    // Their results are numbers, and 0 is a yes.
    const std::set<std::string> good = {"ReadFileACL", "ReadBackupFile"};
    for (const SectionCall &call : SectionCalls()) {
        const Answer answer = call.make(*adapter);
        ASSERT_TRUE(answer.result) << call.name << answer.message;
        const bool fails = !call.no.empty() && !good.contains(call.name);
        EXPECT_EQ(answer.error, fails ? "no such thing" : "") << call.name;
    }
    ExpectGoodEnd();
}

TEST_F(AdapterKessilTest, EveryCommandIsRefusedWhereItsFunctionIsMissing)
{
    for (const AdapterCall &call : AdapterCalls()) {
        Host("", "plain");
        const Answer answer = call.make(*adapter);
        EXPECT_EQ(answer.result.outcome, Outcome::Refused) << call.name << answer.message;
        EXPECT_THAT(answer.message, StartsWith("the helper refused " + call.name + " (command "));
        EXPECT_THAT(answer.message, HasSubstr("func_ptr==NULL"));
        EXPECT_EQ(helper->Running(), call.request.size() == 5) << call.name;
    }
    Host("", "plain");
    for (const SectionCall &call : SectionCalls())
        EXPECT_EQ(call.make(*adapter).result.outcome, Outcome::Refused) << call.name;
    ExpectGoodEnd();
}

TEST_F(AdapterKessilTest, AMissingFunctionInTheMiddleOfItsData)
{
    Host("", "plain");
    const std::vector<std::byte> data(0x01000000);
    const Answer answer = adapter->WriteSectors(0, data);
    EXPECT_EQ(answer.result.outcome, Outcome::Refused) << answer.message;
}

TEST_F(AdapterKessilTest, TheInventory)
{
    Host("CreateCredentials result=1 credentials=0x11\n"
         "ListHosts result=1 items=alpha:1:2:3,:-1:0x100000000:0 log=looking level=4 thread_log=aside\n"
         "OpenListing result=1 items=folder:7:8:-9\n"
         "ListResourcePools result=1 listing=0x301\n"
         "NextItem result=1 name=pool number=5 value=6 extra=7 log=walking level=2\n"
         "NextItem result=0\n"
         "GetErrorMessage text=no more\n");
    ExpectYes(adapter->CreateCredentials("user", "password"));
    std::vector<AdapterItem> items;
    ExpectYes(adapter->ListHosts("path", items));
    EXPECT_EQ(items, (std::vector<AdapterItem>{{"alpha", 1, 2, {}}, {"", -1, 0x100000000, {}}}));
    EXPECT_THAT(log, ElementsAre(Pair(4, "looking"), Pair(4, "aside")));
    ExpectYes(adapter->OpenListing("path", 0x80000000, items));
    EXPECT_EQ(items, (std::vector<AdapterItem>{{"folder", 7, 8, -9}}));
    log.clear();

    Listing listing = Listing::None;
    ExpectYes(adapter->ListResourcePools("path", listing));
    EXPECT_EQ(listing, Listing{0});
    AdapterItem item;
    ExpectYes(adapter->NextItem(listing, item));
    EXPECT_EQ(item, (AdapterItem{"pool", 5, 6, 7}));
    EXPECT_THAT(log, ElementsAre(Pair(2, "walking")));
    EXPECT_EQ(adapter->NextItem(listing, item).error, "no more");
    ExpectYes(adapter->FreeListing(listing));
    ExpectGoodEnd();
    EXPECT_THAT(Record(), IsSupersetOf({"CreateCredentials first=\"user\" second=\"password\" credentials=null",
                                        "OpenListing path=\"path\" credentials=0x11 cache=null listing=null "
                                        "listing_opts=2147483648",
                                        "FreeListing listing=0x301"}));
}

TEST_F(AdapterKessilTest, ABackup)
{
    Host("InitVixDiskLib result=0\nInitVixDiskLib result=1\nGetErrorMessage text=not now\n"
         "SnapshotVM result=1 timestamp=0xFFFFFFFE\n"
         "StartBackupSession result=1 session=0x21\n"
         "OpenBackupFile result=3 file=0x31\n"
         "ReadBackupFile result=1 data=616263 count=3\n"
         "ReadBackupFile result=-1\n"
         "CloseBackupFile result=1\n"
         "GetDiskChangeIDS result=1 session=0x22 items=disk:1:2:3\n"
         "GetDiskChangedSectorNum result=1 number=-5\n"
         "EndBackupSession result=1 session=0\n");
    EXPECT_EQ(adapter->InitVixDiskLib("config", "lib").error, "not now");
    ExpectYes(adapter->InitVixDiskLib("config", "lib"));
    std::uint32_t timestamp = 0;
    ExpectYes(adapter->SnapshotVM("path", "name", "", false, true, false, timestamp));
    EXPECT_EQ(timestamp, 0xFFFFFFFE);
    BackupSession session{};
    ExpectYes(adapter->StartBackupSession("path", AclInfo::None, session));
    BackupFile file{};
    std::uint32_t opened = 0;
    ExpectYes(adapter->OpenBackupFile(session, "file", file, opened));
    EXPECT_EQ(opened, 3U);
    std::vector<std::byte> data(300000);
    std::int32_t read = 0;
    std::uint64_t count = 0;
    ExpectYes(adapter->ReadBackupFile(file, data, read, count));
    EXPECT_EQ(read, 1);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(data[2], std::byte{'c'});
    EXPECT_EQ(adapter->ReadBackupFile(file, data, read, count).error, "not now");
    EXPECT_EQ(read, -1);
    ExpectYes(adapter->CloseBackupFile(file));
    std::vector<AdapterItem> items;
    BackupSession changes{};
    ExpectYes(adapter->GetDiskChangeIDS("path", items, changes));
    EXPECT_EQ(items, (std::vector<AdapterItem>{{"disk", 1, 2, 3}}));
    EXPECT_EQ(changes, BackupSession{1});
    std::int32_t sectors = 0;
    ExpectYes(adapter->GetDiskChangedSectorNum(changes, 6, "id", sectors));
    EXPECT_EQ(sectors, -5);
    ExpectYes(adapter->EndBackupSession(session));
    ExpectYes(adapter->ExitVixDiskLib());
    ExpectGoodEnd();
    EXPECT_THAT(Record(), IsSupersetOf({"OpenBackupFile session=0x21 path=\"file\" file=null",
                                        "CloseBackupFile file=0x31", "EndBackupSession session=0x21",
                                        "GetDiskChangedSectorNum session=0x22 second=6 number=0 third=\"id\""}));
}

TEST_F(AdapterKessilTest, ARestore)
{
    Host("PrepareVMRestore result=1 session=0x41\n"
         "SetOverrideValue result=1\nSetOverrideValue result=0\n"
         "OpenRestoreFile result=0\nOpenRestoreFile result=1 file=0x51\n"
         "WriteRestoreFile result=1\nCloseRestoreFile result=1\nEndVMRestore result=1\n"
         "GetErrorMessage text=a text of more than thirteen bytes\n");
    RestoreSession session = RestoreSession::None;
    ExpectYes(adapter->PrepareVMRestore("path", 3, "nbd", session));
    EXPECT_EQ(session, RestoreSession{0});
    ExpectYes(adapter->SetOverrideValue(session, "key", "value"));
    EXPECT_EQ(adapter->SetOverrideValue(session, "key", "value").error, "a text of more than thirteen bytes");
    RestoreFile file = RestoreFile::None;
    EXPECT_EQ(adapter->OpenRestoreFile(session, "file", file).error, "a text of more than thirteen bytes");
    EXPECT_EQ(file, RestoreFile::None);
    ExpectYes(adapter->OpenRestoreFile(session, "file", file));
    EXPECT_EQ(file, RestoreFile{0});
    const std::byte data[] = {std::byte{1}, std::byte{0}, std::byte{255}};
    ExpectYes(adapter->WriteRestoreFile(file, data));
    ExpectYes(adapter->CloseRestoreFile(file));
    ExpectYes(adapter->EndVMRestore(session, true));
    ExpectGoodEnd();
    EXPECT_THAT(Record(), IsSupersetOf({"SetOverrideValue session=0x41 key=\"key\" value=\"value\"",
                                        "WriteRestoreFile file=0x51 data=0100FF length=3"}));
}

TEST_F(AdapterKessilTest, ADisk)
{
    Host("OpenDisk result=1 disk=0x61\n"
         "ReadSectors result=1 data=0102\nReadSectors result=0\n"
         "WriteSectors result=1 peek=2\nCloseDisk result=1\nCreateVM result=1\n"
         "GetErrorMessage text=bad sector\n");
    ExpectYes(adapter->OpenDisk("machine", "disk", true));
    std::vector<std::byte> data(1 << 20);
    ExpectYes(adapter->ReadSectors(0x100000000, data));
    EXPECT_EQ(data[1], std::byte{2});
    EXPECT_EQ(adapter->ReadSectors(1, data).error, "bad sector");
    ExpectYes(adapter->WriteSectors(0x7FFFFFFFFFFFFFFF, data));
    ExpectYes(adapter->CloseDisk());
    ExpectYes(adapter->CreateVM("a", "b", "c", {{"key", "value"}, {"another", ""}}));
    ExpectGoodEnd();
    EXPECT_THAT(Record(), IsSupersetOf({"ReadSectors disk=0x61 start=4294967296 count=2048 data=",
                                        "WriteSectors disk=0x61 start=9223372036854775807 count=2048 data=0102",
                                        "CloseDisk disk=0x61"}));
}

TEST_F(AdapterKessilTest, ALibraryThatIsNoAdapterByName)
{
    Host("CloseDisk log=lost\n", "unbound_recorder");
    EXPECT_EQ(adapter->CloseDisk().error, "Failed to get error message");
    EXPECT_EQ(adapter->CloseBackupFile(BackupFile{0}).error,
              "Failed to get error message (Process_VADPCloseBackupFile)");
    EXPECT_TRUE(log.empty());

    // The same by names.
    ASSERT_TRUE(helper->Load(library));
    helper->Begin().Str("path");
    const Result result = helper->Call(library, "AddFolder", "SIGNATURE_VADPAddFolder", {0ms, 30s});
    EXPECT_TRUE(result) << result.message;
    EXPECT_EQ(result.text, u"Failed to get error message (Process_VADPAddFolder)");
    std::string error = "before";
    EXPECT_TRUE(helper->Results().Str(error).Complete());
    EXPECT_EQ(error, "");
    ExpectGoodEnd();
}

} // namespace
} // namespace kessil::parent
