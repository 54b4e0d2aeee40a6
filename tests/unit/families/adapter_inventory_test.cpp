#include "rows/adapter_inventory_rows.h"
#include "unit/families/adapter_test.h"

#include <stdexcept>
#include <utility>

namespace kessil::test {
namespace {

// A line of the adapter's log, as it travels ahead of an answer.
Bytes NoticeFrame(std::uint32_t level, std::u16string_view text)
{
    return Frame('M', Be32(level) + Wide(text));
}

// Sequences of calls, by name and, for commands, with values.
class InventoryCallsTest : public AdapterTest
{
protected:
    using FakesRig::Call;
    using FakesRig::Command;

    // What a call with its arguments in the section puts on the pipe.
    Bytes Call(const std::string &name, const std::string &in, const std::string &script)
    {
        Forget();
        stand_in.lines.clear();
        stand_in.script[name] = script;
        const std::string signature = "SIGNATURE_VADP" + name;
        CallWithSection(name, signature, Hex(in) + Repeat(0xEE, spare));
        return fake_pipe.written;
    }

    // What a command's values put there. The pipe ends behind them.
    Bytes Command(const std::string &name, const std::vector<Value> &values, const std::string &script)
    {
        Forget();
        stand_in.lines.clear();
        stand_in.script[name] = script;
        fake_pipe.ends_with_nothing = true;
        Bytes bytes;
        for (const Value &value : values)
            bytes = bytes + Hex(value.bytes);
        CallWithValues(name, "SIGNATURE_VADP" + name, bytes);
        return fake_pipe.written;
    }

    // The index that a call stored its object under.
    std::string Index(const std::string &name, const std::string &in, const std::string &script)
    {
        EXPECT_EQ(Call(name, in, script), SuccessFrame());
        std::string digits;
        for (const unsigned char byte : Section(4))
            digits += std::to_string(byte) + ".";
        return digits;
    }

    std::string List(const std::string &listing) { return Index("ListHosts", "00", "result=1 listing=" + listing); }

    static void *Object(std::uintptr_t number) { return reinterpret_cast<void *>(number); }
};

// The line that the adapter logs while it is asked for the text shows which of the two comes first.
TEST_F(InventoryCallsTest, VersionSendsTheLogAheadOfAskingForTheErrorText)
{
    stand_in.script["GetErrorMessage"] = "log=asked level=2 text=";
    const Bytes first = NoticeFrame(1, u"called");
    const Bytes second = NoticeFrame(2, u"asked");
    EXPECT_EQ(Call("VADPVersion", "00", "log=called level=1 text=5"), first + SuccessFrame());
    EXPECT_EQ(Call("GetLibraryVersion", "", "text=5"), second + SuccessFrame());
    EXPECT_EQ(Call("ListHosts", "00", "result=0 log=called level=1"), first + second + SuccessFrame());
}

TEST_F(InventoryCallsTest, VersionSendsTheLogAheadOfTheFirstOfItsTwoAnswers)
{
    Unbind();
    const Bytes line = NoticeFrame(1, u"called");
    EXPECT_EQ(Call("VADPVersion", "00", "log=called level=1 text=5"),
              line + FailureFrame(u"Failed to get error message (Process_VADPVersion)") + SuccessFrame());
    EXPECT_EQ(Section(3), Hex("3500 00"));
    EXPECT_EQ(Call("ListHosts", "00", "result=0 log=called level=1"),
              FailureFrame(u"Failed to get error message (Process_VADPListHosts)") + line + SuccessFrame());
    EXPECT_EQ(Section(5), Hex("FFFFFFFF 00"));
}

TEST_F(InventoryCallsTest, VersionIsNotLogged)
{
    Call("VADPVersion", "00", "text=5");
    EXPECT_EQ(FamilyLog(), std::vector<std::string>());
}

TEST_F(InventoryCallsTest, FreeingLeavesTheAdaptersLogForTheNextAnswer)
{
    const std::pair<const char *, const char *> calls[] = {{"FreeBackupOptions", "00000000"},
                                                           {"FreeListing", "00000000"},
                                                           {"FreeCredentials", ""},
                                                           {"FreeListingCache", ""}};
    for (const auto &[name, in] : calls) {
        EXPECT_EQ(Call(name, in, "log=late level=1"), SuccessFrame()) << name;
        EXPECT_EQ(Call("GetLibraryVersion", "", "text=5"), NoticeFrame(1, u"late") + SuccessFrame()) << name;
    }
}

TEST_F(InventoryCallsTest, FreedCredentialsAreForgottenWhateverTheAdapterLeaves)
{
    Call("CreateCredentials", "0000", "result=1 credentials=0x501");
    EXPECT_EQ(g_pCredentials, Object(0x501));
    Call("FreeCredentials", "", "credentials=0x777");
    EXPECT_EQ(g_pCredentials, nullptr);
}

TEST_F(InventoryCallsTest, AFreedListingCacheIsForgottenWhateverTheAdapterLeaves)
{
    Call("CreateListingCache", "00", "result=1 cache=0x601");
    EXPECT_EQ(g_pListingCache, Object(0x601));
    Call("FreeListingCache", "", "cache=0x777");
    EXPECT_EQ(g_pListingCache, nullptr);
}

TEST_F(InventoryCallsTest, TheCacheIsTheAdaptersToSetWhereverItGetsItsAddress)
{
    Call("OpenListing", "00 00000000", "result=1 cache=0x601");
    EXPECT_EQ(g_pListingCache, Object(0x601));
    Call("ListDataStores", "00 00 0000", "result=0 cache=0x602");
    EXPECT_EQ(g_pListingCache, Object(0x602));
    Call("ListResourcePools", "00", "result=1 cache=0x603");
    EXPECT_EQ(g_pListingCache, Object(0x603));
    Command("OpenListing", {Text(""), Number("00000000")}, "result=1 cache=0x604");
    EXPECT_EQ(g_pListingCache, Object(0x604));
    Command("ListDataStores", {Text(""), Text("")}, "result=1 cache=0x605");
    EXPECT_EQ(g_pListingCache, Object(0x605));
}

TEST_F(InventoryCallsTest, AFailedListingCacheStillSendsTheFlag)
{
    Call("CreateListingCache", "00", "result=0 flag=1");
    EXPECT_EQ(Section(3), Hex("0001 00"));
    Call("CreateListingCache", "00", "result=0");
    EXPECT_EQ(Section(3), Hex("0000 00"));
}

TEST_F(InventoryCallsTest, AFailureStoresNothing)
{
    stand_in.script["GetErrorMessage"] = "text=";
    EXPECT_EQ(Index("ListHosts", "00", "result=0 listing=0x301"), "255.255.255.255.");
    EXPECT_EQ(Index("CreateBackupOptions", "0000 0000 0000 0000 0000 00", "result=0 options=0x701"),
              "255.255.255.255.");
    EXPECT_EQ(Index("OpenConfigRead", "00000000 00", "result=0 reader=0x901"), "255.255.255.255.");
    Command("CreateBackupOptions", {Flag(false), Flag(false), Flag(false), Flag(false), Flag(false), Text("")},
            "result=0 options=0x701");
    EXPECT_EQ(g_vListing.Size(), 0u);
    EXPECT_EQ(g_vBackupOptions.Size(), 0u);
    EXPECT_EQ(g_vRestoreFile.Size(), 0u);
}

TEST_F(InventoryCallsTest, AFreedListingsIndexIsGivenOutAgainTheLowestFirst)
{
    for (const char *const listing : {"0x301", "0x302", "0x303", "0x304", "0x305", "0x306"})
        List(listing);
    Call("FreeListing", "00000005", "");
    Call("FreeListing", "00000002", "");
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{"FreeListing listing=0x303"});
    EXPECT_EQ(List("0x307"), "0.0.0.2.");
    EXPECT_EQ(List("0x308"), "0.0.0.5.");
    EXPECT_EQ(List("0x309"), "0.0.0.6.");
}

TEST_F(InventoryCallsTest, AFreedListingIsForgottenWhateverTheAdapterLeaves)
{
    List("0x301");
    List("0x302");
    Call("FreeListing", "00000001", "listing=0x777");
    EXPECT_EQ(g_vListing[0], Object(0x301));
    EXPECT_EQ(g_vListing[1], nullptr);
}

TEST_F(InventoryCallsTest, FreeingListingMinusOneReachesTheAdapterWithNullAndFreesNone)
{
    List("0x301");
    EXPECT_EQ(Call("FreeListing", "FFFFFFFF", ""), SuccessFrame());
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{"FreeListing listing=null"});
    EXPECT_EQ(g_vListing[0], Object(0x301));
}

TEST_F(InventoryCallsTest, FreedOptionsAreForgottenWhateverTheAdapterLeavesAndTheirIndexIsGivenOutAgain)
{
    const std::string in = "0000 0000 0000 0000 0000 00";
    EXPECT_EQ(Index("CreateBackupOptions", in, "result=1 options=0x701"), "0.0.0.0.");
    EXPECT_EQ(Index("CreateBackupOptions", in, "result=1 options=0x702"), "0.0.0.1.");
    Call("FreeBackupOptions", "00000001", "options=0x777");
    EXPECT_EQ(g_vBackupOptions[0], Object(0x701));
    EXPECT_EQ(g_vBackupOptions[1], nullptr);
    EXPECT_EQ(Index("CreateBackupOptions", in, "result=1 options=0x703"), "0.0.0.1.");
}

TEST_F(InventoryCallsTest, BothGenerationsShareTheBackupOptions)
{
    EXPECT_EQ(Index("CreateBackupOptions", "0000 0000 0000 0000 0000 00", "result=1 options=0x701"), "0.0.0.0.");
    EXPECT_EQ(Command("CreateBackupOptions",
                      {Flag(false), Flag(false), Flag(false), Flag(false), Flag(false), Text("")},
                      "result=1 options=0x702"),
              Hex(no_log + "00000001"));
    Call("FreeBackupOptions", "00000001", "");
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{"FreeBackupOptions options=0x702"});
}

TEST_F(InventoryCallsTest, AnItemOfAFreedListingIsWhatTheAdapterMakesOfNone)
{
    List("0x301");
    Call("FreeListing", "00000000", "");
    EXPECT_EQ(Call("NextItem", "00000000", "result=1 name=x number=1 value=2 extra=3"), SuccessFrame());
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{"NextItem listing=null name=\"\" number=0 value=0 extra=0"});
    EXPECT_EQ(Section(19), Hex("7800 00000001 0000000000000002 00000003 00"));
}

TEST_F(InventoryCallsTest, AnItemWithoutANameEndsTheRun)
{
    EXPECT_THROW(Call("NextItem", "00000000", "result=1 no_name=1"), std::logic_error);
}

TEST_F(InventoryCallsTest, AConfigReaderIsARestoreFile)
{
    EXPECT_EQ(storeRestoreFile(Object(0x911)), 0);
    EXPECT_EQ(Index("OpenConfigRead", "00000000 00", "result=1 reader=0x901"), "0.0.0.1.");
    EXPECT_EQ(g_vRestoreFile[1], Object(0x901));
    EXPECT_EQ(g_vRestoreSession.Size(), 0u);
}

TEST_F(InventoryCallsTest, ConfigItemsAreThoseOfASessionNotOfTheReader)
{
    storeRestoreSession(Object(0x801));
    storeRestoreSession(Object(0x802));
    EXPECT_EQ(Index("OpenConfigRead", "00000001 00", "result=1 reader=0x901"), "0.0.0.0.");
    Call("ListConfigItems", "00000000", "result=1");
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{"ListConfigItems session=0x801 listing=null"});
}

TEST_F(InventoryCallsTest, ASecondCreateCredentialsFreesNothing)
{
    Call("CreateCredentials", "0000", "result=1 credentials=0x501");
    Call("CreateCredentials", "0000", "result=1 credentials=0x502");
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{"CreateCredentials first=\"\" second=\"\" credentials=0x501"});
    EXPECT_EQ(g_pCredentials, Object(0x502));
}

TEST_F(InventoryCallsTest, ASecondCreateCredentialsByCommandFreesTheFirst)
{
    Command("CreateCredentials", {Text("a"), Text("b")}, "result=1 credentials=0x501");
    Command("CreateCredentials", {Text("c"), Text("d")}, "result=1 credentials=0x502");
    EXPECT_EQ(stand_in.lines,
              (std::vector<std::string>{"FreeCredentials credentials=0x501",
                                        "CreateCredentials first=\"c\" second=\"d\" credentials=null"}));
    EXPECT_EQ(g_pCredentials, Object(0x502));
}

TEST_F(InventoryCallsTest, CreateCredentialsByCommandDropsTheOldOnesEvenUnread)
{
    g_pCredentials = Object(0x501);
    stand_in.script["FreeCredentials"] = "credentials=0x777";
    stand_in.script["GetErrorMessage"] = "text=none";
    EXPECT_EQ(Command("CreateCredentials", {Text("a")}, "result=1 credentials=0x502"), Hex(StatusFailed("none")));
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{"FreeCredentials credentials=0x501"} + ErrorTaken("null"));
    EXPECT_EQ(g_pCredentials, nullptr);
    EXPECT_EQ(FamilyLog(), std::vector<std::string>{"debug: ProcessAlt_VADPCreateCredentials()"});
}

TEST_F(InventoryCallsTest, CreateCredentialsByCommandWithoutAnAdapterToFreeTheOldOnes)
{
    g_pCredentials = Object(0x501);
    Unbind();
    EXPECT_EQ(Command("CreateCredentials", {Text("a"), Text("b")}, "result=1 credentials=0x502"), Hex(status_okay));
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{"CreateCredentials first=\"a\" second=\"b\" credentials=null"});
}

TEST_F(InventoryCallsTest, CreateCredentialsByCommandAnswersOneWhateverTheAdapterSays)
{
    EXPECT_EQ(Command("CreateCredentials", {Text("a"), Text("b")}, "result=0 credentials=0x502 error=0x99"),
              Hex(status_okay));
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{"CreateCredentials first=\"a\" second=\"b\" credentials=null"});
    EXPECT_EQ(g_pCredentials, Object(0x502));
    EXPECT_EQ(FamilyLog(), (std::vector<std::string>{"debug: ProcessAlt_VADPCreateCredentials()",
                                                     "debug: back from real_f with rez==0, g_pCredentials==0x502"}));
}

TEST_F(InventoryCallsTest, TheVersionByCommandLeavesTheAdaptersLogForTheNextAnswer)
{
    EXPECT_EQ(Command("GetLibraryVersion", {}, "log=late level=1 text=5"), Hex("00000001 35"));
    EXPECT_EQ(Command("CreateCredentials", {Text("a"), Text("b")}, "result=1"),
              Hex("FFFFFF9D 00000004 6C617465 00000001" + status_okay));
}

TEST_F(InventoryCallsTest, ANullVersionByCommandEndsTheRun)
{
    EXPECT_THROW(Command("GetLibraryVersion", {}, ""), std::logic_error);
}

TEST_F(InventoryCallsTest, AVersionByCommandThatCanNotBeWrittenIsLogged)
{
    fake_pipe.FailWrite(5);
    EXPECT_EQ(Command("GetLibraryVersion", {}, "text=5"), Bytes());
    EXPECT_EQ(FamilyLog(),
              (std::vector<std::string>{"debug: ProcessAlt_VADPGetLibraryVersion()",
                                        "error: Failed to get version (ProcessAlt_VADPGetLibraryVersion)"}));
}

TEST_F(InventoryCallsTest, HostsWithABrokenPipeAreNotAskedFor)
{
    stand_in.script["GetErrorMessage"] = "text=";
    EXPECT_EQ(Command("ListHosts", {}, "result=1 items=a:1:2:3"), Hex(StatusFailed("")));
    EXPECT_EQ(stand_in.lines, ErrorTaken("null"));
    EXPECT_EQ(FamilyLog(), (std::vector<std::string>{"debug: ProcessAlt_VADPListHosts()", "debug: okay==0, srv=="}));
}

TEST_F(InventoryCallsTest, DatacentersWithABrokenPipeAreAskedForAllTheSame)
{
    EXPECT_EQ(Command("ListDatacenters", {}, "result=1 items=a:1:2:3"),
              Hex(no_log + "00000001 00000001 61 0000000000000002 00000001"));
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{"ListDatacenters path=\"\" credentials=null listing=null"});
    EXPECT_EQ(FamilyLog(), (std::vector<std::string>{"debug: ProcessAlt_VADPListDatacenters()",
                                                     "debug: path==", "debug: Writing item list",
                                                     "debug: Writing n_items==1", "debug: Done writing item list"}));
}

TEST_F(InventoryCallsTest, AListingWithABrokenPipeIsOpenedWithNothing)
{
    EXPECT_EQ(Command("OpenListing", {}, "result=1 items="), Hex(no_log + "00000000"));
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{
                                  "OpenListing path=\"\" credentials=null cache=null listing=null listing_opts=0"});
    EXPECT_EQ(FamilyLog(), (std::vector<std::string>{"debug: ProcessAlt_VADPOpenListing()",
                                                     "debug: path==, listing_opts==0", "debug: Writing n_items==0"}));
}

TEST_F(InventoryCallsTest, OnlyListingsAndFoldersByCommandHaveTheExtraNumber)
{
    const std::string plain = no_log + "00000001 00000001 61 0000000000000002 00000001";
    const std::string script = "result=1 items=a:1:2:3";
    EXPECT_EQ(Command("OpenListing", {Text(""), Number("00000000")}, script), Hex(plain + "00000003"));
    EXPECT_EQ(Command("ListFolders", {Text("")}, script), Hex(plain + "00000003"));
    EXPECT_EQ(Command("ListDataStores", {Text(""), Text("")}, script), Hex(plain));
    EXPECT_EQ(Command("ListHosts", {Text("")}, script), Hex(plain));
    EXPECT_EQ(Command("ListMachines", {Text("")}, script), Hex(plain));
    EXPECT_EQ(Command("ListDatacenters", {Text("")}, script), Hex(plain));
}

TEST_F(InventoryCallsTest, AListingByCommandHasNoHandle)
{
    Command("OpenListing", {Text(""), Number("00000000")}, "result=1 items=a:1:2:3");
    Command("ListHosts", {Text("")}, "result=1 items=");
    EXPECT_EQ(g_vListing.Size(), 0u);
}

TEST_F(InventoryCallsTest, ATextMayHave1024BytesAndNoMore)
{
    const Bytes text = Be32(1024) + Repeat('x', 1024);
    stand_in.script["GetErrorMessage"] = "text=none";
    stand_in.script["ListMachines"] = "result=1";
    CallWithValues("ListMachines", "SIGNATURE_VADPListMachines", text);
    EXPECT_EQ(fake_pipe.written, Hex(no_log + "00000000"));
    EXPECT_EQ(stand_in.lines, std::vector<std::string>{"ListMachines path=\"" + std::string(1024, 'x') +
                                                       "\" credentials=null listing=null"});
    Forget();
    stand_in.lines.clear();
    CallWithValues("ListMachines", "SIGNATURE_VADPListMachines", Be32(1025) + Repeat('x', 1025));
    EXPECT_EQ(fake_pipe.written, Hex(StatusFailed("none")));
    EXPECT_EQ(stand_in.lines, ErrorTaken("null"));
}

} // namespace
} // namespace kessil::test
