#include "rows/adapter_restore_rows.h"
#include "unit/families/adapter_test.h"

#include <set>

namespace kessil::test {
namespace {

class RestoreSequenceTest : public AdapterTest
{
protected:
    using FakesRig::Begin;
    using FakesRig::Call;
    using FakesRig::Command;

    RestoreSequenceTest() { stand_in.script["GetErrorMessage"] = "text=boom"; }

    void Call(const RestoreName &name, const std::vector<std::string> &in, const std::string &script)
    {
        Begin(name, script);
        CallWithSection(name.function, name.signature, Joined(in) + Repeat(0xEE, spare));
    }

    // Expects the answer, and the results from the section's start on.
    void Call(const RestoreName &name, const std::vector<std::string> &in, const std::string &script,
              const std::string &out)
    {
        Call(name, in, script);
        EXPECT_EQ(fake_pipe.written, SuccessFrame()) << name.function;
        EXPECT_EQ(Section(Hex(out).size()), Hex(out)) << name.function;
    }

    void Command(const RestoreName &name, const Bytes &values, const std::string &script)
    {
        Begin(name, script);
        fake_pipe.ends_with_nothing = true;
        CallWithValues(name.function, name.signature, values);
    }

    // Expects the answer behind a log without lines.
    void Command(const RestoreName &name, const std::string &values, const std::string &script,
                 const std::string &reply)
    {
        Command(name, Hex(values), script);
        EXPECT_EQ(fake_pipe.written, Hex(no_log + reply)) << name.function;
    }

    void CreateACLInfo(const std::string &key, const std::string &script, const std::string &out)
    {
        Call("CreateACLInfo", {"00000001 EEEEEEEE AA", Str(key), Str("s")}, script, out);
    }

    static std::string CreatedACLInfo(const std::string &key, const std::string &aclinfo)
    {
        return "CreateACLInfo length=1 data=AA key=\"" + key + "\" second=\"s\" aclinfo=" + aclinfo;
    }

    // Which object a handle stands for, as the adapter gets it.
    void ExpectSession(const std::string &handle, const std::string &address)
    {
        Call(power_on, {handle}, "result=1", "00");
        EXPECT_EQ(stand_in.lines, Lines{"PowerOnVDR session=" + address}) << handle;
    }
    void ExpectFile(const std::string &handle, const std::string &address)
    {
        Call("WriteFileACL", {handle, "00000000"}, "result=1", "00");
        EXPECT_EQ(stand_in.lines, Lines{"WriteFileACL file=" + address + " data= length=0"}) << handle;
    }

    using Lines = std::vector<std::string>;

private:
    void Begin(const RestoreName &name, const std::string &script)
    {
        Forget();
        stand_in.lines.clear();
        stand_in.script[name.function] = script;
    }
};

TEST_F(RestoreSequenceTest, DeleteVMWithoutASessionPassesNull)
{
    Call("DeleteVM", {Str("vm")}, "result=1", "00");
    EXPECT_EQ(stand_in.lines, Lines{"DeleteVM session=null credentials=null path=\"vm\""});
}

TEST_F(RestoreSequenceTest, DeleteVMPassesEntryZeroEvenWhenOnlyALaterOneIsInUse)
{
    Take(restore_sessions);
    Call("EndVMRestore", {"00000000", "00"}, "result=1", "00");
    Call("DeleteVM", {Str("vm")}, "result=1", "00");
    EXPECT_EQ(stand_in.lines, Lines{"DeleteVM session=null credentials=null path=\"vm\""});
}

TEST_F(RestoreSequenceTest, DeleteVMByCommandPassesTheSessionThatItNames)
{
    Take(restore_sessions);
    Command("DeleteVM", "00000001 76 00000002", "result=1", "00000001");
    EXPECT_EQ(stand_in.lines, Lines{"DeleteVM session=0x502 credentials=null path=\"v\""});
}

TEST_F(RestoreSequenceTest, AFailedPrepareVMRestoreLeavesNoSession)
{
    Call("PrepareVMRestore", {Str("vm"), "0000000000000000", Str("san")}, "result=0 session=0x501 error=0x99",
         "FFFFFFFF" + Str("boom"));
    EXPECT_EQ(g_vRestoreSession.Size(), 0U);
    ExpectSession("FFFFFFFF", "null");
    ExpectSession("00000000", "null");
}

TEST_F(RestoreSequenceTest, AFailedPrepareVMRestoreByCommandLeavesNoSession)
{
    for (const char *const name : {"PrepareVMRestore", "PrepareVMRestoreIncremental"}) {
        Command(name, "00000000 00000000 00000000", "result=0 session=0x501 error=0x99", "00000004 626F6F6D");
        EXPECT_EQ(g_vRestoreSession.Size(), 0U) << name;
    }
}

TEST_F(RestoreSequenceTest, AFailedOpenLeavesNoFile)
{
    const std::string failure = "result=0 file=0x601 error=0x99";
    Call("OpenRestoreFile", {"00000000", Str("f")}, failure, "FFFFFFFF" + Str("boom"));
    Call("OpenRestoreFileIncremental", {"00000000", Str("f"), "00000000"}, failure, "FFFFFFFF" + Str("boom"));
    Command("OpenRestoreFile", "00000000 00000000", failure, "00000004 626F6F6D");
    Command("OpenRestoreFileIncremental", "00000000 00000000 00000000", failure, "00000004 626F6F6D");
    EXPECT_EQ(g_vRestoreFile.Size(), 0U);
}

TEST_F(RestoreSequenceTest, PrepareVMRestoreByCommandKeepsNoSessionWhenAReadFailedThoughTheAdapterMadeOne)
{
    Command("PrepareVMRestore", "00000000 00000000", "result=1 session=0x501", "00000004 626F6F6D");
    EXPECT_EQ(stand_in.lines, Lines({"PrepareVMRestore path=\"\" credentials=null opt_flags=0 transport_mode=\"\" "
                                     "session=null",
                                     "GetErrorMessage error=null", "FreeErrorInfo error=null"}));
    EXPECT_EQ(g_vRestoreSession.Size(), 0U);
    EXPECT_EQ(FamilyLog(), Lines({"debug: ProcessAlt_VADPPrepareVMRestore()", "debug: About to read path etc.",
                                  "debug: path==, opt_flags==0, transport_mode=="}));
}

TEST_F(RestoreSequenceTest, PrepareVMRestoreIncrementalByCommandIsNotCalledWhenAReadFailed)
{
    Command("PrepareVMRestoreIncremental", "00000000 00000000", "result=1 session=0x501", "00000004 626F6F6D");
    EXPECT_EQ(stand_in.lines, ErrorTaken("null"));
    EXPECT_EQ(g_vRestoreSession.Size(), 0U);
}

TEST_F(RestoreSequenceTest, PrepareVMRestoreByCommandLogsTheSizeOfTheTableEvenWhenASlotWasReused)
{
    Take(restore_sessions);
    Call("EndVMRestore", {"00000001", "00"}, "result=1", "00");
    Command("PrepareVMRestore", "00000000 00000000 00000000", "result=1 session=0x511", "00000001");
    EXPECT_EQ(FamilyLog().back(), "debug: Added to g_vRestoreSession giving size of3");
}

TEST_F(RestoreSequenceTest, ASessionIndexBeyondTheTableReachesTheAdapterAsNull)
{
    Take(restore_sessions);
    ExpectSession("00000005", "null");
    ExpectSession("00000003", "null");
    ExpectSession("FFFFFFFF", "null");
    ExpectSession("00000002", "0x502");
}

TEST_F(RestoreSequenceTest, BothGenerationsMakeAndTakeTheSameHandles)
{
    Command("PrepareVMRestoreIncremental", "00000000 00000000 00000000", "result=1 session=0x501", "00000000");
    ExpectSession("00000000", "0x501");
    Call("OpenRestoreFileIncremental", {"00000000", Str("f"), "00000000"}, "result=1 file=0x601", "00000000");
    Command("WriteRestoreFile", "00000000 00000001 AA", "result=1", "00000001");
    EXPECT_EQ(stand_in.lines, Lines{"WriteRestoreFile file=0x601 data=AA length=1"});
}

TEST_F(RestoreSequenceTest, SessionsThatEndMakeRoomLowestFirst)
{
    Take(restore_sessions);
    Call("EndVMRestore", {"00000001", "00"}, "result=1", "00");
    Call("EndVMRestoreIncremental", {"00000000", "00"}, "result=1", "00");
    ExpectSession("00000000", "null");
    ExpectSession("00000001", "null");
    const std::vector<std::string> in = {Str("vm"), "0000000000000000", Str("san")};
    Call("PrepareVMRestore", in, "result=1 session=0x510", "00000000 00");
    Call("PrepareVMRestoreIncremental", in, "result=1 session=0x511", "00000001 00");
    Call("PrepareVMRestore", in, "result=1 session=0x513", "00000003 00");
    ExpectSession("00000000", "0x510");
    ExpectSession("00000002", "0x502");
}

TEST_F(RestoreSequenceTest, FilesThatCloseMakeRoomLowestFirst)
{
    Take(restore_files);
    Call("CloseRestoreFile", {"00000002"}, "result=1", "00");
    Call("CloseRestoreFileIncremental", {"00000001"}, "result=1", "00");
    ExpectFile("00000001", "null");
    ExpectFile("00000002", "null");
    Call("OpenRestoreFile", {"00000000", Str("f")}, "result=1 file=0x611", "00000001 00");
    Call("OpenRestoreFileIncremental", {"00000000", Str("f"), "00000000"}, "result=1 file=0x612", "00000002 00");
    Call("OpenRestoreFile", {"00000000", Str("f")}, "result=1 file=0x613", "00000003 00");
    ExpectFile("00000000", "0x600");
    ExpectFile("00000001", "0x611");
}

TEST_F(RestoreSequenceTest, AFailedReleaseLeavesTheSlotWhateverTheAdapterDidToTheCopy)
{
    Take(restore_sessions);
    Take(restore_files);
    const std::string failure = "result=0 session=0 file=0 error=0x99";
    for (const char *const name : {"EndVMRestore", "EndVMRestoreIncremental"})
        Call(name, {"00000001", "00"}, failure, Str("boom"));
    for (const char *const name : {"CloseRestoreFile", "CloseRestoreFileIncremental"})
        Call(name, {"00000001"}, failure, Str("boom"));
    Command("EndVMRestore", "00000001 00000000", failure, "FFFFFFFF 00000004 626F6F6D");
    Command("CloseRestoreFile", "00000001", failure, "FFFFFFFF 00000004 626F6F6D");
    ExpectSession("00000001", "0x501");
    ExpectFile("00000001", "0x601");
}

TEST_F(RestoreSequenceTest, CloseRestoreFileAndEndVMRestoreByCommandFreeTheirSlots)
{
    Take(restore_sessions);
    Take(restore_files);
    Command("EndVMRestore", "00000001 00000001", "result=1", "00000001");
    Command("CloseRestoreFile", "00000001", "result=1", "00000001");
    ExpectSession("00000001", "null");
    ExpectFile("00000001", "null");
    Command("PrepareVMRestore", "00000000 00000000 00000000", "result=1 session=0x511", "00000001");
    Command("OpenRestoreFile", "00000000 00000000", "result=1 file=0x611", "00000001");
}

TEST_F(RestoreSequenceTest, EndVMRestoreIncrementalByCommandLeavesTheDeadSessionInItsSlot)
{
    Take(restore_sessions);
    Command("EndVMRestoreIncremental", "00000001 00000001", "result=1 session=0", "00000001");
    ExpectSession("00000001", "0x501");
    Command("PrepareVMRestoreIncremental", "00000000 00000000 00000000", "result=1 session=0x503", "00000003");
}

TEST_F(RestoreSequenceTest, CloseRestoreFileIncrementalByCommandLeavesTheDeadFileInItsSlot)
{
    Take(
        {RestoreFile("0x600"), RestoreFile("0x601"), RestoreFile("0x602"), RestoreFile("0x603"), RestoreFile("0x604")});
    Command("CloseRestoreFileIncremental", "00000004", "result=1 file=0", "00000001");
    ExpectFile("00000004", "0x604");
    Command("OpenRestoreFileIncremental", "00000000 00000000 00000000", "result=1 file=0x605", "00000005");
}

TEST_F(RestoreSequenceTest, AReleaseBeyondTheTableChangesNothing)
{
    Take(restore_sessions);
    Take(restore_files);
    Call("EndVMRestore", {"00000003", "00"}, "result=1", "00");
    Call("CloseRestoreFile", {"FFFFFFFF"}, "result=1", "00");
    Command("EndVMRestore", "FFFFFFFF 00000000", "result=1", "00000001");
    Command("CloseRestoreFile", "00000003", "result=1", "00000001");
    EXPECT_EQ(g_vRestoreSession.Size(), 3U);
    EXPECT_EQ(g_vRestoreFile.Size(), 3U);
    ExpectSession("00000002", "0x502");
    ExpectFile("00000002", "0x602");
}

TEST_F(RestoreSequenceTest, CallsThatChangeASessionLeaveItInItsSlotWhateverTheAdapterDidToTheCopy)
{
    Take(restore_sessions);
    Call("RenameMachine", {"00000001", Str("n")}, "result=1 session=0", "00");
    Call("ReconfigureMachine", {"00000001", "01"}, "result=1 session=0", "00");
    Call(power_on, {"00000001"}, "result=1 session=0", "00");
    Call(power_off, {"00000001"}, "result=1 session=0", "00");
    Command("RenameMachine", "00000001 00000000 00000000", "result=1 session=0", "00000001");
    Command(power_on, "00000001", "result=1 session=0", "00000001");
    Command(power_off, "00000001", "result=1 session=0", "00000001");
    ExpectSession("00000001", "0x501");
    Call("DeleteVM", {Str("vm")}, "result=1", "00");
    ExpectSession("00000000", "0x500");
    Command("DeleteVM", "00000001 76 00000001", "result=1", "00000001");
    ExpectSession("00000001", "0x501");
}

TEST_F(RestoreSequenceTest, TheSecondCreateACLInfoOfAKeyGetsTheObjectAndAnswersMinusOneWithoutAnError)
{
    CreateACLInfo("key", "result=1 aclinfo=0x700", "00000000 00");
    EXPECT_EQ(stand_in.lines, Lines{CreatedACLInfo("key", "null")});
    CreateACLInfo("key", "result=1", "FFFFFFFF 00");
    EXPECT_EQ(stand_in.lines, Lines{CreatedACLInfo("key", "0x700")});
    CreateACLInfo("other", "result=1 aclinfo=0x701", "00000001 00");
    EXPECT_EQ(stand_in.lines, Lines{CreatedACLInfo("other", "null")});
}

TEST_F(RestoreSequenceTest, AnObjectThatTheAdapterPutsInThePlaceOfAFoundOneIsNotKept)
{
    CreateACLInfo("key", "result=1 aclinfo=0x700", "00000000 00");
    CreateACLInfo("key", "result=1 aclinfo=0x701", "FFFFFFFF 00");
    EXPECT_EQ(g_vACLInfo.Size(), 1U);
    CreateACLInfo("key", "result=1", "FFFFFFFF 00");
    EXPECT_EQ(stand_in.lines, Lines{CreatedACLInfo("key", "0x700")});
}

TEST_F(RestoreSequenceTest, CreateACLInfoThatFailsOrMakesNothingIsNotRemembered)
{
    CreateACLInfo("key", "result=0 aclinfo=0x700 error=0x99", "FFFFFFFF" + Str("boom"));
    CreateACLInfo("key", "result=1", "FFFFFFFF 00");
    EXPECT_EQ(g_vACLInfo.Size(), 0U);
    CreateACLInfo("key", "result=1 aclinfo=0x701", "00000000 00");
    EXPECT_EQ(stand_in.lines, Lines{CreatedACLInfo("key", "null")});
}

TEST_F(RestoreSequenceTest, AKeyWhoseIndexIsBeyondTheTableCountsAsNew)
{
    g_mACLInfoIndex["key"] = 1;
    CreateACLInfo("other", "result=1 aclinfo=0x700", "00000000 00");
    CreateACLInfo("key", "result=1 aclinfo=0x701", "00000001 00");
    EXPECT_EQ(stand_in.lines, Lines{CreatedACLInfo("key", "null")});
}

TEST_F(RestoreSequenceTest, AFailedCreateACLInfoOfAKnownKeyAnswersTheErrorAndKeepsTheObject)
{
    CreateACLInfo("key", "result=1 aclinfo=0x700", "00000000 00");
    CreateACLInfo("key", "result=0 aclinfo=0 error=0x99", "FFFFFFFF" + Str("boom"));
    CreateACLInfo("key", "result=1", "FFFFFFFF 00");
    EXPECT_EQ(stand_in.lines, Lines{CreatedACLInfo("key", "0x700")});
}

TEST_F(RestoreSequenceTest, AfterGetACLInfoTheKeyIsFoundWithANullObjectAndAnswersMinusOne)
{
    CreateACLInfo("key", "result=1 aclinfo=0x700", "00000000 00");
    Call("GetACLInfo", {"00000000"}, "result=1 listing=0x301", "00000000 00");
    CreateACLInfo("key", "result=1 aclinfo=0x701", "FFFFFFFF 00");
    EXPECT_EQ(stand_in.lines, Lines{CreatedACLInfo("key", "null")});
    EXPECT_EQ(g_vACLInfo[0], nullptr);
}

TEST_F(RestoreSequenceTest, AfterReuseOfItsSlotAKeyFindsAnotherKeysObject)
{
    CreateACLInfo("key", "result=1 aclinfo=0x700", "00000000 00");
    Call("GetACLInfo", {"00000000"}, "result=1", "00000000 00");
    CreateACLInfo("other", "result=1 aclinfo=0x701", "00000000 00");
    CreateACLInfo("key", "result=1", "FFFFFFFF 00");
    EXPECT_EQ(stand_in.lines, Lines{CreatedACLInfo("key", "0x701")});
}

TEST_F(RestoreSequenceTest, GetACLInfoFreesTheSlotEvenWhenTheAdapterFails)
{
    CreateACLInfo("key", "result=1 aclinfo=0x700", "00000000 00");
    Call("GetACLInfo", {"00000000"}, "result=0 error=0x99", "00000000 00");
    EXPECT_EQ(stand_in.lines, Lines{"GetACLInfo aclinfo=0x700 listing=null"});
    CreateACLInfo("other", "result=1 aclinfo=0x701", "00000000 00");
}

TEST_F(RestoreSequenceTest, GetACLInfoOfANullOrMissingHandleIsCalledAndTakesAListingSlot)
{
    Call("GetACLInfo", {"00000007"}, "result=1", "00000000 00");
    EXPECT_EQ(stand_in.lines, Lines{"GetACLInfo aclinfo=null listing=null"});
    EXPECT_EQ(g_vListing.Size(), 1U);
    CreateACLInfo("key", "result=1 aclinfo=0x700", "00000000 00");
    Call("GetACLInfo", {"00000000"}, "result=1 listing=0x301", "00000000 00");
    Call("GetACLInfo", {"00000000"}, "result=1 listing=0x302", "00000001 00");
    EXPECT_EQ(stand_in.lines, Lines{"GetACLInfo aclinfo=null listing=null"});
    EXPECT_EQ(g_vListing.Size(), 2U);
}

TEST_F(RestoreSequenceTest, ACLInfosAndReconfigurationHaveOneHandlerForBothGenerations)
{
    for (const char *const name : {"CreateACLInfo", "GetACLInfo", "ReconfigureMachine"}) {
        const SignatureRow row = Handlers(std::string("SIGNATURE_VADP") + name);
        EXPECT_NE(row.first, nullptr) << name;
        EXPECT_EQ(row.first, row.second) << name;
    }
}

TEST_F(RestoreSequenceTest, SetOverrideValueByCommandWithoutItsValueCallsTheAdapterAndAnswersWithAnEmptyText)
{
    Take(restore_sessions);
    Command("SetOverrideValue", "00000001 00000001 6B", "result=1", "00000000");
    EXPECT_EQ(stand_in.lines, Lines{"SetOverrideValue session=0x501 key=\"k\" value=\"\""});
    EXPECT_EQ(FamilyLog(),
              Lines({"debug: ProcessAlt_VADPSetOverrideValue()", "debug: g_vRestoreSession.size()==3",
                     "debug: calling real_f with pRestoreSession==0x501, key==k, value==",
                     "debug: after real_f for ProcessAlt_VADPSetOverrideValue:  rez==1 with err_str==()"}));
}

TEST_F(RestoreSequenceTest, AddFolderAndWriteFileACLByCommandReportSuccessAndLeaveTheErrorRecordAlone)
{
    Command("AddFolder", "00000000 00000000", "result=0 error=0x99", "00000001");
    EXPECT_EQ(stand_in.lines, Lines{"AddFolder path=\"\" credentials=null cache=null"});
    Command("WriteFileACL", "00000000 00000001 AA", "result=0 error=0x99", "00000001");
    EXPECT_EQ(stand_in.lines, Lines{"WriteFileACL file=null data=AA length=1"});
}

TEST_F(RestoreSequenceTest, AddFolderByCommandTakesALengthThatIsNotThePaths)
{
    Command("AddFolder", "000000FF 00000001 66", "result=1", "00000001");
    EXPECT_EQ(stand_in.lines, Lines{"AddFolder path=\"f\" credentials=null cache=null"});
    EXPECT_EQ(FamilyLog(), Lines({"debug: ProcessAlt_VADPAddFolder()", "debug: elLen==255", "debug: elPath==f"}));
}

TEST_F(RestoreSequenceTest, AddFolderByCommandLogsWhatCameEvenWhenAReadFailed)
{
    Command("AddFolder", "000000FF", "result=1", "FFFFFFFF 00000004 626F6F6D");
    EXPECT_EQ(FamilyLog(), Lines({"debug: ProcessAlt_VADPAddFolder()", "debug: elLen==255", "debug: elPath=="}));
}

TEST_F(RestoreSequenceTest, AddFolderKeepsTheListingCacheThatTheAdapterSets)
{
    Command("AddFolder", "00000000 00000000", "result=1 cache=0x202", "00000001");
    Call("AddFolder", {Str("f")}, "result=1 cache=0x203", "00");
    EXPECT_EQ(stand_in.lines, Lines{"AddFolder path=\"f\" credentials=null cache=0x202"});
    Command("AddFolder", "00000000 00000000", "result=1", "00000001");
    EXPECT_EQ(stand_in.lines, Lines{"AddFolder path=\"\" credentials=null cache=0x203"});
}

TEST_F(RestoreSequenceTest, PowerOnAndPowerOffByCommandWithoutAHandlePassNullAndReportWhatTheAdapterSays)
{
    Take(restore_sessions);
    Command(power_on, "", "result=1", "00000001");
    EXPECT_EQ(stand_in.lines, Lines{"PowerOnVDR session=null"});
    EXPECT_EQ(FamilyLog(), Lines({"debug: ProcessAlt_VADPPowerOn()", "debug: session_handle:-1", "debug: okay:1"}));
    Command(power_off, "", "result=0 error=0x99", "FFFFFFFF 00000004 626F6F6D");
    EXPECT_EQ(stand_in.lines, Lines{"PowerOffVDR session=null"} + ErrorTaken("0x99"));
    EXPECT_EQ(FamilyLog(), Lines({"debug: ProcessAlt_VADPPowerOff()", "debug: session_handle:-1", "debug: okay:0"}));
}

TEST_F(RestoreSequenceTest, RenameMachineByCommandDoesNotLookAtItsSecondValue)
{
    Take(restore_sessions);
    Command("RenameMachine", "00000000 00000002 00000001 6E", "result=1", "00000001");
    EXPECT_EQ(stand_in.lines, Lines{"RenameMachine session=0x500 name=\"n\""});
}

TEST_F(RestoreSequenceTest, WriteRestoreFileIncrementalHasItsOffsetBehindTheBlockInTheSectionAndAheadOfItByCommand)
{
    const Lines seen = {"WriteRestoreFileIncremental file=null data=AABB length=2 offset=7"};
    Call("WriteRestoreFileIncremental", {"00000000", "00000002 AABB", "0000000000000007"}, "result=1", "00");
    EXPECT_EQ(stand_in.lines, seen);
    Command("WriteRestoreFileIncremental", "00000000 0000000000000007 00000002 AABB", "result=1", "00000001");
    EXPECT_EQ(stand_in.lines, seen);
}

TEST_F(RestoreSequenceTest, ABlockOfWhichOnlyTheLengthComesCountsAsAnEmptyOne)
{
    Take(restore_files);
    Command("WriteFileACL", "00000001 00000005", "result=1", "FFFFFFFF 00000004 626F6F6D");
    EXPECT_EQ(stand_in.lines, Lines{"WriteFileACL file=0x601 data= length=0"} + ErrorTaken("null"));
    Command("WriteRestoreFile", "00000001 00000005", "result=1", "FFFFFFFF 00000004 626F6F6D");
    EXPECT_EQ(stand_in.lines, ErrorTaken("null"));
}

TEST_F(RestoreSequenceTest, ATextOf1024BytesPassesAndOneOf1025DoesNot)
{
    const Bytes handles = Hex("00000000 00000000");
    Command("RenameMachine", handles + Be32(1024) + Repeat('n', 1024), "result=1");
    EXPECT_EQ(fake_pipe.written, Hex(status_okay));
    EXPECT_EQ(stand_in.lines, Lines{"RenameMachine session=null name=\"" + std::string(1024, 'n') + "\""});
    Command("RenameMachine", handles + Be32(1025) + Repeat('n', 1025), "result=1");
    EXPECT_EQ(fake_pipe.written, Hex(StatusFailed("boom")));
    EXPECT_EQ(stand_in.lines, ErrorTaken("null"));
}

// What the adapter logs while it is asked for the error text shows when that was.
TEST_F(RestoreSequenceTest, TakesTheErrorTextAheadOfTheLogInThreeCommandsAndBehindItInTheOthers)
{
    const std::set<std::string> early = {"PrepareVMRestore", "SetOverrideValue", "OpenRestoreFile"};
    const std::string hello = "FFFFFF9D 00000005 68656C6C6F 00000007";
    const std::string late = "FFFFFF9D 00000004 6C617465 00000009";
    std::set<std::string> asked;
    for (const CommandRow &row : RestoreCommands()) {
        if (row.seen.size() == 1)
            continue;
        asked.insert(row.function);
        FakesRig::Begin();
        stand_in.script["GetErrorMessage"] = "log=late level=9 text=boom";
        Bytes values;
        for (const Value &value : row.in)
            values = values + Hex(value.bytes);
        Command({row.function, row.function, row.signature}, values, row.script);
        const Bytes answer = Hex(row.reply.substr(restore_line.size()));
        const bool is_early = early.count(row.function) != 0;
        EXPECT_EQ(fake_pipe.written, Hex(hello) + Hex(is_early ? late : "") + Hex(no_log) + answer) << row.function;
        Forget();
        sendAdapterLogAlt(channel);
        EXPECT_EQ(fake_pipe.written, Hex((is_early ? "" : late) + no_log)) << row.function;
    }
    EXPECT_EQ(asked.size(), 15U);
}

TEST_F(RestoreSequenceTest, TakesTheErrorTextAheadOfTheFramesInTheFirstGeneration)
{
    stand_in.script["GetErrorMessage"] = "log=late level=9 text=boom";
    Call("SetOverrideValue", {"00000000", Str("k"), Str("v")}, "result=0 error=0x99");
    EXPECT_EQ(fake_pipe.written, Hex("4D 0000000E 00000009 6C006100740065000000") + SuccessFrame());
}

TEST_F(RestoreSequenceTest, WithoutErrorTextsACommandAnswersWithWordsOfItsOwn)
{
    Unbind();
    const std::string words = "0000001B 4661696C656420746F20676574206572726F72206D657373616765";
    Command("OpenRestoreFile", "00000000 00000000", "result=0", words);
    EXPECT_EQ(FamilyLog(),
              Lines({"debug: ProcessAlt_VADPOpenRestoreFile()", "debug: Error:  Failed to get error message"}));
    Command("EndVMRestore", "00000000 00000000", "result=0", "FFFFFFFF" + words);
    Command("SetOverrideValue", "00000000 00000000 00000000", "result=0", words);
    EXPECT_EQ(FamilyLog().back(), "debug: after real_f for ProcessAlt_VADPSetOverrideValue:  rez==0 with "
                                  "err_str==(Failed to get error message)");
}

} // namespace
} // namespace kessil::test
