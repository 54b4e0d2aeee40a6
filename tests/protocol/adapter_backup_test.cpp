#include "protocol/adapter_talk.h"
#include "rows/adapter_backup_rows.h"

#include <stdexcept>

namespace kessil::test {
namespace {

AdapterRow BackupRow(const std::string &function)
{
    for (const AdapterRow &row : BackupRows()) {
        if (row.function == function)
            return row;
    }
    throw std::logic_error("no row " + function);
}

TEST(BackupSignature, OfABlockIsRefusedAsACommand)
{
    AdapterTalk talk(BackupRow("ReadBlockSignature"));
    talk.Command(67, {});
    talk.Talk().Expect(Hex("FFFFFFFF"));
    EXPECT_EQ(talk.Seen(), std::vector<std::string>());
    talk.Finish();
    EXPECT_NE(talk.Talk().Helper().PlainLog().find("LibraryCaller error: Invalid signature\n"), std::string::npos);
}

TEST(BackupSession, EndedByCommandIsStillFoundByTheOtherGenerationAndEndedThereIsNot)
{
    AdapterRow row = BackupRow("GetBackupSessionFiles");
    row.before = ThreeSessions();
    row.script = "result=1 listing=0x301\nEndBackupSession result=1";
    AdapterTalk talk(row);
    talk.Command(7, Hex("00000002"));
    talk.Talk().Expect(Hex(status_okay));
    talk.CallWithSection("GetBackupSessionFiles", row.signature, Hex("00000002 00 EEEE"));
    talk.Talk().Expect(SuccessFrame());
    talk.CallWithSection("EndBackupSession", "SIGNATURE_VADPEndBackupSession", Hex("00000002"));
    talk.Talk().Expect(SuccessFrame());
    talk.CallWithSection("GetBackupSessionFiles", row.signature, Hex("00000002 00 EEEE"));
    talk.Talk().Expect(SuccessFrame());
    EXPECT_EQ(talk.Seen(), (std::vector<std::string>{"EndBackupSession session=0x503",
                                                     "GetBackupSessionFiles session=0x503 path=\"\" listing=null",
                                                     "EndBackupSession session=0x503",
                                                     "GetBackupSessionFiles session=null path=\"\" listing=null"}));
    talk.Finish();
}

// The section has room for the result, but not for the text that is written over it.
TEST(BackupDiskChanges, GrowTheSectionForAnErrorText)
{
    AdapterRow row = BackupRow("GetDiskChangeIDS");
    row.before = {};
    row.script = "result=0 items=a:1:2:3 error=0x99";
    row.error_text = "no such machine";
    AdapterTalk talk(row);
    talk.CallWithSection(row.function, row.signature, Narrow("vm") + Hex("EE"));
    const WideString grown = talk.Talk().SectionName(u'0');
    talk.Talk().Expect(ResizeFrame(grown, 17));
    const Section section = Section::Open(grown, 17);
    talk.Talk().Send(SuccessFrame());
    talk.Talk().Expect(SuccessFrame());
    section.Expect(0, Narrow("no such machine"));
    talk.Finish();
}

TEST(BackupRead, ThatTheSectionCannotAnswerTakesItsDataAlong)
{
    AdapterRow row = BackupRow("ReadBackupFile");
    row.before = {};
    row.script = "result=2 count=2 data=B1B2";
    AdapterTalk talk(row);
    talk.CallWithSection(row.function, row.signature, Hex("00000000 00000005 A1A2A3A4A5"));
    const WideString grown = talk.Talk().SectionName(u'0');
    talk.Talk().Expect(ResizeFrame(grown, 31));
    const Section section = Section::Open(grown, 31);
    talk.Talk().Send(SuccessFrame());
    talk.Talk().Expect(SuccessFrame());
    section.Expect(0, Hex("00000005 00000005 B1B2A3A4A5 00000002 0000000000000002 00"));
    talk.Finish();
}

} // namespace
} // namespace kessil::test
