#include "families/vadp/vadp.h"
#include "rows/adapter_backup_rows.h"
#include "unit/families/adapter_test.h"

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class BackupStateTest : public AdapterTest
{
protected:
    using FakesRig::Call;
    using FakesRig::Command;

    // The call with its arguments in the section, as the script has it; the answer begins anew.
    void Call(const std::string &function, const std::vector<std::string> &in, const std::string &script)
    {
        CallIn(function, Joined(in) + Repeat(0xEE, spare), script);
    }

    // The same in a section of exactly these bytes.
    void CallIn(const std::string &function, const Bytes &section, const std::string &script)
    {
        Forget();
        stand_in.lines.clear();
        stand_in.script[function] = script;
        CallWithSection(function, "SIGNATURE_VADP" + function, section);
    }

    // The call by command.
    void Command(const std::string &function, const std::string &values, const std::string &script)
    {
        Forget();
        stand_in.lines.clear();
        stand_in.script[function] = script;
        CallWithValues(function, "SIGNATURE_VADP" + function, Hex(values));
    }

    // The answer to a new session: its index and no error.
    Bytes NewSession(const std::string &object)
    {
        Call("StartBackupSession", {Str(""), "00000000", "00000000"}, "result=1 session=" + object);
        return Section(5);
    }

    // How a log line of level 1 is sent.
    static Bytes LogFrame(char16_t letter) { return Frame('M', Be32(1) + Wide(WideString(1, letter))); }

    // The parent's answers to the sections that the call announces.
    static void AnswerGrowth(const std::vector<Bytes> &answers)
    {
        stand_in.on_call = [answers, given = false]() mutable {
            if (std::exchange(given, true))
                return;
            for (const Bytes &answer : answers)
                fake_pipe.Deliver(answer);
        };
    }

    static void *Object(std::uintptr_t number) { return reinterpret_cast<void *>(number); }

    // The next writes succeed, `sizes` of them by their size, and the one behind fails.
    static void FailWriteBehind(const std::vector<std::uint32_t> &sizes)
    {
        for (const std::uint32_t size : sizes)
            fake_pipe.ShortenWrite(size);
        fake_pipe.FailWrite(232);
    }
};

TEST_F(BackupStateTest, EndOfASessionFreesItsIndexForTheNext)
{
    Take({BackupSession("0x501"), BackupSession("0x502"), BackupSession("0x503"), BackupSession("0x504")});
    Call("EndBackupSession", {"00000003"}, "result=1");
    Call("EndBackupSession", {"00000001"}, "result=1");
    EXPECT_EQ(g_vBackupSession[1], nullptr);
    EXPECT_EQ(g_vBackupSession[2], Object(0x503));
    EXPECT_EQ(g_vBackupSession[3], nullptr);
    EXPECT_EQ(NewSession("0x505"), Hex("00000001 00"));
    EXPECT_EQ(NewSession("0x506"), Hex("00000003 00"));
    EXPECT_EQ(NewSession("0x507"), Hex("00000004 00"));
}

TEST_F(BackupStateTest, AFailedEndOfASessionLeavesItWhateverTheAdapterPutsInItsPlace)
{
    Take(ThreeSessions());
    Call("EndBackupSession", {"00000001"}, "result=0 session=0");
    EXPECT_EQ(g_vBackupSession[1], Object(0x502));
    Call("EndBackupSession", {"00000001"}, "result=0 session=0x5FF");
    EXPECT_EQ(stand_in.lines.front(), "EndBackupSession session=0x502");
    EXPECT_EQ(g_vBackupSession[1], Object(0x502));
}

TEST_F(BackupStateTest, AnEndOfASessionThatIsNotThereClearsNothing)
{
    Take(ThreeSessions());
    Call("EndBackupSession", {"00000003"}, "result=1");
    EXPECT_EQ(g_vBackupSession[0], Object(0x501));
    EXPECT_EQ(g_vBackupSession[1], Object(0x502));
    EXPECT_EQ(g_vBackupSession[2], Object(0x503));
    EXPECT_EQ(g_vBackupSession.Size(), 3u);
}

TEST_F(BackupStateTest, EndOfASessionByCommandLeavesItsIndexTaken)
{
    Take(ThreeSessions());
    Command("EndBackupSession", "00000001", "result=1 session=0");
    EXPECT_EQ(fake_pipe.written, Hex(status_okay));
    EXPECT_EQ(g_vBackupSession[1], Object(0x502));
    Command("EndBackupSession", "00000001", "result=1 session=0x5FF");
    EXPECT_THAT(stand_in.lines, ElementsAre("EndBackupSession session=0x502"));
    EXPECT_EQ(g_vBackupSession[1], Object(0x502));
    EXPECT_EQ(NewSession("0x504"), Hex("00000003 00"));
}

TEST_F(BackupStateTest, CloseOfAFileFreesItsIndexForEitherWayToOpenOne)
{
    Take({BackupFile("0x601"), BackupFile("0x602"), BackupFile("0x603"), BackupFile("0x604")});
    Call("CloseBackupFile", {"00000002"}, "result=1");
    Call("CloseBackupFile", {"00000000"}, "result=1");
    EXPECT_EQ(g_vBackupFile[0], nullptr);
    EXPECT_EQ(g_vBackupFile[1], Object(0x602));
    EXPECT_EQ(g_vBackupFile[2], nullptr);
    Call("ReOpenBackupFile", {"00000000", Str("")}, "result=1 file=0x605");
    EXPECT_EQ(Section(4), Be32(0));
    Call("OpenBackupFile", {"00000000", Str("")}, "result=1 file=0x606");
    EXPECT_EQ(Section(4), Be32(2));
    Call("ReOpenBackupFile", {"00000000", Str("")}, "result=1 file=0x607");
    EXPECT_EQ(Section(4), Be32(4));
}

TEST_F(BackupStateTest, AFailedCloseOfAFileLeavesItWhateverTheAdapterPutsInItsPlace)
{
    Take(ThreeFiles());
    Call("CloseBackupFile", {"00000001"}, "result=0 file=0");
    EXPECT_EQ(g_vBackupFile[1], Object(0x602));
    Call("CloseBackupFile", {"00000003"}, "result=1");
    EXPECT_EQ(g_vBackupFile.Size(), 3u);
    EXPECT_EQ(g_vBackupFile[2], Object(0x603));
}

TEST_F(BackupStateTest, WhatAFailureLeftIsNotStored)
{
    Call("StartBackupSession", {Str(""), "00000000", "00000000"}, "result=0 session=0x501");
    Command("StartBackupSession", "00000000 00000000", "result=0 session=0x501");
    Call("GetDiskChangeIDS", {Str("")}, "result=0 session=0x501");
    Command("GetDiskChangeIDS", "00000000", "result=0 session=0x501");
    EXPECT_EQ(g_vBackupSession.Size(), 0u);
    Call("OpenBackupFile", {"00000000", Str("")}, "result=0 file=0x601");
    Call("ReOpenBackupFile", {"00000000", Str("")}, "result=0 file=0x601");
    EXPECT_EQ(g_vBackupFile.Size(), 0u);
    Call("GetBackupSessionFiles", {"00000000", Str("")}, "result=0 listing=0x301");
    EXPECT_EQ(g_vListing.Size(), 0u);
}

TEST_F(BackupStateTest, SessionsOfAllCallsShareATable)
{
    Call("GetDiskChangeIDS", {Str("")}, "result=1 session=0x501");
    Command("StartBackupSession", "00000000 00000000", "result=1 session=0x502");
    EXPECT_EQ(fake_pipe.written, Hex(no_log + "00000001"));
    Command("GetDiskChangeIDS", "00000000", "result=1 session=0x503");
    EXPECT_EQ(NewSession("0x504"), Hex("00000003 00"));
    Call("GetBackupSessionFiles", {"00000002", Str("")}, "result=1 listing=0x301");
    EXPECT_EQ(stand_in.lines.front(), "GetBackupSessionFiles session=0x503 path=\"\" listing=null");
}

TEST_F(BackupStateTest, ASnapshotMaySetTheListingCache)
{
    Call("SnapshotVM", {Str(""), Str(""), Str(""), "0000", "0000", "0000"}, "result=1 cache=0xC01");
    EXPECT_EQ(g_pListingCache, Object(0xC01));
    Command("SnapshotVM", "00000000 00000000 00000000 00000000 00000000 00000000", "result=1 cache=0xC02");
    EXPECT_EQ(g_pListingCache, Object(0xC02));
}

TEST_F(BackupStateTest, SectorsAreCountedInTheFirstSessionUntilItEnds)
{
    Take(ThreeSessions());
    Call("GetDiskChangedSectorNum", {"FFFFFFFF", "00000000", Str("")}, "result=1");
    EXPECT_EQ(stand_in.lines.front(), "GetDiskChangedSectorNum session=0x501 second=0 number=0 third=\"\"");
    EXPECT_EQ(g_vBackupSession[0], Object(0x501));
    Call("EndBackupSession", {"00000000"}, "result=1");
    Call("GetDiskChangedSectorNum", {"00000001", "00000000", Str("")}, "result=1");
    EXPECT_EQ(stand_in.lines.front(), "GetDiskChangedSectorNum session=null second=0 number=0 third=\"\"");
}

TEST_F(BackupStateTest, SectorsByCommandLeaveTheSessionAsItWas)
{
    Take(ThreeSessions());
    Command("GetDiskChangedSectorNum", "00000001 00000000 00000000", "result=1 session=0x5FF");
    EXPECT_EQ(g_vBackupSession[1], Object(0x502));
}

TEST_F(BackupStateTest, WithoutOptionsASessionByCommandTakesThoseThatComeFirstLater)
{
    Command("StartBackupSession", "00000000 00000000", "result=1 session=0x501");
    EXPECT_EQ(stand_in.lines.front(),
              "StartBackupSession path=\"\" credentials=null session=null options=null aclinfo=null");
    EXPECT_EQ(fake_pipe.written, Hex(no_log + "00000000"));
    Forget();
    Take({BackupOptions("0x201"), BackupOptions("0x202")});
    Command("StartBackupSession", "00000000 00000000", "result=1 session=0x502");
    EXPECT_EQ(stand_in.lines.front(),
              "StartBackupSession path=\"\" credentials=null session=null options=0x201 aclinfo=null");
}

TEST_F(BackupStateTest, TheEndOfTheDiskLibraryLeavesItsLogLinesForTheNextAnswer)
{
    Call("ExitVixDiskLib", {}, "log=a level=1");
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    Call("GetReadBufferUse", {"00000000"}, "result=1");
    EXPECT_EQ(fake_pipe.written, LogFrame(u'a') + SuccessFrame());
}

TEST_F(BackupStateTest, TheStartOfTheDiskLibraryByCommandLeavesItsLogLinesForTheNextAnswer)
{
    Command("InitVixDiskLib", "00000000 00000000", "result=1 log=a level=1");
    EXPECT_EQ(fake_pipe.written, Hex("00000001"));
    Command("ExitVixDiskLib", "", "log=b level=2");
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFF9D 00000001 61 00000001 FFFFFF9D 00000001 62 00000002 FFFFFC19"));
}

TEST_F(BackupStateTest, DiskChangesAnswerTwiceWithoutErrorTextsAheadOfTheLog)
{
    Unbind();
    Call("GetDiskChangeIDS", {Str("path")}, "result=0 error=0x99 items=a:1:2:3 log=x level=1");
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to get error message (Process_VADPGetDiskChangeIDS)") +
                                     LogFrame(u'x') + SuccessFrame());
    // The empty text over the result, behind which the in-value's end is left.
    EXPECT_EQ(Section(6), Hex("00 000000 00 EE"));
    EXPECT_THAT(stand_in.lines,
                ElementsAre("GetDiskChangeIDS path=\"path\" credentials=null session=null listing=null"));
}

TEST_F(BackupStateTest, DiskChangesLeaveTheResultInTheSectionWhileTheListIsSent)
{
    Take(ThreeSessions());
    Bytes at_first_write;
    stand_in.on_call = [&] { fake_pipe.before_write = [&] { at_first_write = Section(4); }; };
    Call("GetDiskChangeIDS", {Str("path")}, "result=1 session=0x504 items=a:1:2:3");
    EXPECT_EQ(at_first_write, Be32(1));
    EXPECT_EQ(Section(6), Hex("00000003 00 EE"));
    EXPECT_EQ(fake_pipe.written,
              Hex("FFFFFC19 00000001 00000001 61 0000000000000002 00000001 00000003") + SuccessFrame());
}

TEST_F(BackupStateTest, DiskChangesGrowTheSectionOnceForTheResultAndOnceForTheText)
{
    stand_in.script["GetErrorMessage"] = "text=boom";
    AnswerGrowth({SuccessFrame(), SuccessFrame()});
    stand_in.script["GetDiskChangeIDS"] = "result=0 error=0x99";
    // A name that the second of the new sections doesn't have.
    GiveSection(u"s7", Narrow("p"));
    Process_VADPGetDiskChangeIDS(channel, AdapterExports().at("GetDiskChangeIDS"));
    ASSERT_EQ(channel.SharedSize(), 6u);
    EXPECT_EQ(Section(6), Narrow("boom") + Bytes{0});
    EXPECT_TRUE(fake_pipe.IsReadOut());
    const Bytes &written = fake_pipe.written;
    ASSERT_GT(written.size(), SuccessFrame().size() + 8);
    EXPECT_EQ(Bytes(written.end() - 13, written.end()), Be64(6) + SuccessFrame());
    EXPECT_EQ(written[0], 'R');
}

TEST_F(BackupStateTest, DiskChangesKeepTheSessionThatTheSectionCouldNotName)
{
    AnswerGrowth({FailureFrame(u"no room")});
    CallIn("GetDiskChangeIDS", Narrow("p"), "result=1 session=0x501 items=a:1:2:3");
    const Bytes refusal = FailureFrame(u"Failed to serialise output (Process_VADPGetDiskChangeIDS)");
    ASSERT_GT(fake_pipe.written.size(), refusal.size() + 8);
    const auto end_of_growth = fake_pipe.written.end() - static_cast<std::ptrdiff_t>(refusal.size());
    EXPECT_EQ(Bytes(end_of_growth - 8, fake_pipe.written.end()), Be64(4) + refusal);
    EXPECT_EQ(g_vBackupSession[0], Object(0x501));
}

// Two blocks of 65536 and one byte, as a parent may ask for them: the length is the parent's, and what the adapter
// writes isn't moved.
TEST_F(BackupStateTest, BlocksHaveTheLengthThatTheParentGaveThem)
{
    for (const std::string function : {"ReadBlock", "ReadBlockSignature"}) {
        const Bytes data = Repeat(0xA1, 65537);
        CallIn(function, Be32(0) + Be32(65537) + data + Be64(7) + Be32(8) + Repeat(0xEE, spare),
               "result=0 peek=1 data=B1");
        EXPECT_EQ(fake_pipe.written, SuccessFrame());
        EXPECT_EQ(Section(8 + 65537 + 5),
                  Be32(65537) + Be32(65537) + Bytes{0xB1} + Repeat(0xA1, 65536) + Be32(0) + Bytes{0});
    }
}

TEST_F(BackupStateTest, ABlockThatIsNotThereWholeIsRefused)
{
    CallIn("ReadBlock", Be32(0) + Be32(9) + Repeat(0xA1, 8), "");
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise input (Process_VADPReadBlock)"));
    EXPECT_THAT(stand_in.lines, IsEmpty());
}

void *data_seen = nullptr;

std::int32_t SeeData(void * /*file*/, void *data, std::uint32_t /*length*/, std::uint64_t *count,
                     VMLib_ErrorInfo ** /*error*/)
{
    data_seen = data;
    *count = 3;
    return 0;
}

TEST_F(BackupStateTest, AReadGoesStraightIntoTheSection)
{
    GiveSection(u"s", Hex("00000000 00000005 A1A2A3A4A5") + Repeat(0xEE, 18));
    Handlers("SIGNATURE_VADPReadBackupFile").first(channel, reinterpret_cast<void *>(&SeeData));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(data_seen, channel.SharedView() + 8);
    EXPECT_EQ(channel.SharedSize(), 31u);
}

TEST_F(BackupStateTest, AReadThatTheSectionCannotAnswerTakesItsDataAlong)
{
    AnswerGrowth({SuccessFrame()});
    CallIn("ReadBackupFile", Hex("00000000 00000005 A1A2A3A4A5"), "result=2 count=2 data=B1B2");
    ASSERT_EQ(channel.SharedSize(), 31u);
    EXPECT_EQ(Section(26), Hex("00000005 00000005 B1B2A3A4A5 00000002 0000000000000002 00"));
    EXPECT_EQ(Bytes(fake_pipe.written.end() - 13, fake_pipe.written.end()), Be64(31) + SuccessFrame());
}

TEST_F(BackupStateTest, AFailedReadReportsDataAndCountAsTheyStand)
{
    stand_in.script["GetErrorMessage"] = "text=boom";
    Call("ReadBackupFile", {"00000000", "00000005 A1A2A3A4A5"}, "result=0xFFFFFFFF count=4 data=B1B2B3B4");
    EXPECT_EQ(Section(30), Hex("00000005 00000005 B1B2B3B4A5 FFFFFFFF 0000000000000004") + Narrow("boom"));
}

TEST_F(BackupStateTest, ANumberThatCannotFailAsksForNoErrorText)
{
    Unbind();
    Call("getIndexBlocks", {"00000000"}, "result=0");
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    Call("GetReadBufferUse", {"00000000"}, "result=0xFFFFFFFF");
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(BackupStateTest, ASnapshotByCommandFailsWhenAValueIsMissingThoughTheAdapterSucceeds)
{
    stand_in.script["GetErrorMessage"] = "text=none";
    fake_pipe.ends_with_nothing = true;
    Command("SnapshotVM", "00000001 70", "result=1 timestamp=7");
    EXPECT_THAT(stand_in.lines,
                ElementsAre("SnapshotVM path=\"p\" name=\"\" description=\"\" timestamp=0 credentials=null "
                            "cache=null isCBT=0 isMemory=0 isQuiesce=0",
                            "GetErrorMessage error=null", "FreeErrorInfo error=null"));
    EXPECT_EQ(fake_pipe.written, Hex(StatusFailed("none") + "00000007"));
    EXPECT_THAT(FamilyLog(), ElementsAre("debug: ProcessAlt_VADPSnapshotVM()", "debug: About to read path etc.",
                                         "debug: path==p, name==, description==, isCBT==0, isMemory==0, isQuiesce==0"));
}

TEST_F(BackupStateTest, TheDiskLibrarysValuesAreLoggedThoughOneIsMissing)
{
    fake_pipe.ends_with_nothing = true;
    Command("InitVixDiskLib", "00000001 63", "result=1");
    EXPECT_THAT(FamilyLog(), ElementsAre("debug: ProcessAlt_VADPInitVixDiskLib()", "debug: config==c, lib=="));
}

TEST_F(BackupStateTest, ATimestampThatCannotBeWrittenIsLogged)
{
    FailWriteBehind({4, 4});
    Command("SnapshotVM", "00000000 00000000 00000000 00000000 00000000 00000000", "result=1 timestamp=7");
    EXPECT_EQ(fake_pipe.written, Hex(status_okay));
    EXPECT_EQ(FamilyLog().back(), "error: Failed to get snapshot timestamp (ProcessAlt_VADPSnapshotVM)");
}

// Most answers log it when their error text can't be written; that of a session's start, which has a form of its own,
// doesn't.
TEST_F(BackupStateTest, ASessionsErrorTextThatCannotBeWrittenIsNotLogged)
{
    stand_in.script["GetErrorMessage"] = "text=boom";
    FailWriteBehind({4, 4});
    Command("StartBackupSession", "00000000 00000000", "result=0");
    EXPECT_EQ(fake_pipe.written, Hex(no_log + "FFFFFFFF"));
    EXPECT_THAT(FamilyLog(), ElementsAre("debug: ProcessAlt_VADPStartBackupSession()"));

    FailWriteBehind({4, 4});
    Command("EndBackupSession", "00000000", "result=0");
    EXPECT_THAT(FamilyLog(),
                ElementsAre("debug: ProcessAlt_VADPEndBackupSession()", "error: Failed to write error message."));
}

TEST_F(BackupStateTest, WhatIsLoggedWhileASessionsErrorTextIsTakenWaitsForTheNextAnswer)
{
    stand_in.script["GetErrorMessage"] = "log=a level=1 text=boom";
    Command("StartBackupSession", "00000000 00000000", "result=0");
    EXPECT_EQ(fake_pipe.written, Hex(StatusFailed("boom")));
    Command("ExitVixDiskLib", "", "");
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFF9D 00000001 61 00000001 FFFFFC19"));
}

TEST_F(BackupStateTest, CommandsHaveWordsOfTheirOwnWithoutErrorTexts)
{
    Unbind();
    const std::string words = "FFFFFFFF" + Text("Failed to get error message").bytes;
    Command("InitVixDiskLib", "00000000 00000000", "result=0");
    EXPECT_EQ(fake_pipe.written, Hex(words));
    Command("StartBackupSession", "00000000 00000000", "result=0");
    EXPECT_EQ(fake_pipe.written, Hex(no_log + words));
    Command("GetDiskChangeIDS", "00000000", "result=0");
    EXPECT_EQ(fake_pipe.written, Hex(no_log + words));
    Command("SnapshotVM", "00000000 00000000 00000000 00000000 00000000 00000000", "result=0 timestamp=7");
    EXPECT_EQ(fake_pipe.written, Hex(no_log + words + "00000007"));
}

TEST_F(BackupStateTest, SignaturesOfBlocksAreNotForCommands)
{
    EXPECT_NE(Handlers("SIGNATURE_VADPReadBlockSignature").first, nullptr);
    EXPECT_EQ(Handlers("SIGNATURE_VADPReadBlockSignature").second, nullptr);
}

// Those rows have no handler of their own for commands: arguments and answer are in section and frames.
TEST_F(BackupStateTest, FilesAndReadsAreTheSameForCommands)
{
    for (const std::string function :
         {"GetBackupSessionFiles", "OpenBackupFile", "ReOpenBackupFile", "ReadBackupFile", "ReadFileACL",
          "CloseBackupFile", "GetReadBufferUse", "getIndexBlocks", "ReadBlock"}) {
        const SignatureRow handlers = Handlers("SIGNATURE_VADP" + function);
        EXPECT_NE(handlers.first, nullptr) << function;
        EXPECT_EQ(handlers.first, handlers.second) << function;
    }
}

} // namespace
} // namespace kessil::test
