#include "protocol/adapter_rows.h"
#include "rows/adapter_backup_rows.h"

#include <stdexcept>

namespace kessil::test {
namespace {

class Backup : public AdapterRowTest
{};

TEST_P(Backup, Answers)
{
    ExpectAnswer(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Rows, Backup, ::testing::ValuesIn(BackupRows()), NameOfAdapterRow<AdapterRow>);

class BackupInList : public AdapterRowTest
{};

TEST_P(BackupInList, RefusesACutInList)
{
    ExpectRefusedInput(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Rows, BackupInList, ::testing::ValuesIn(RowsWithInValues(BackupRows())),
                         NameOfAdapterRow<AdapterRow>);

class BackupCommand : public CommandRowTest
{};

TEST_P(BackupCommand, Answers)
{
    ExpectAnswer(GetParam());
}

TEST_P(BackupCommand, HasItsConductWhenATextIsTooLong)
{
    ExpectCuts(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Rows, BackupCommand, ::testing::ValuesIn(BackupCommands()), NameOfAdapterRow<CommandRow>);

// Backup files have no form of their own for commands: the arguments are in the section and the answer is in frames,
// though the request is two bytes.
struct BackupFileCommand
{
    std::uint8_t command;
    std::string function;
};

class BackupFileByCommand : public ::testing::TestWithParam<BackupFileCommand>
{};

std::string NameOfBackupFileCommand(const ::testing::TestParamInfo<BackupFileCommand> &info)
{
    return info.param.function;
}

void PrintTo(const BackupFileCommand &command, std::ostream *out)
{
    *out << static_cast<int>(command.command);
}

TEST_P(BackupFileByCommand, AnswersInTheSection)
{
    int rows = 0;
    for (const AdapterRow &row : BackupRows()) {
        if (row.function != GetParam().function)
            continue;
        ++rows;
        AdapterTalk talk(row);
        const Bytes before = AdapterTalk::Joined(row.in) + Repeat(0xEE, AdapterTalk::spare);
        const Section &section = talk.Give(before);
        talk.Command(GetParam().command, {});
        talk.Talk().Expect(Hex(row.frames) + SuccessFrame());
        const Bytes out = Hex(row.out);
        section.Expect(0, out + Behind(out.size(), before));
        EXPECT_EQ(talk.Seen(), row.seen);
        talk.End();
    }
    EXPECT_GT(rows, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Commands, BackupFileByCommand,
    ::testing::Values(BackupFileCommand{8, "GetBackupSessionFiles"}, BackupFileCommand{9, "OpenBackupFile"},
                      BackupFileCommand{10, "ReadFileACL"}, BackupFileCommand{11, "ReadBackupFile"},
                      BackupFileCommand{12, "CloseBackupFile"}, BackupFileCommand{28, "ReOpenBackupFile"},
                      BackupFileCommand{29, "GetReadBufferUse"}, BackupFileCommand{30, "getIndexBlocks"}),
    NameOfBackupFileCommand);

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
    talk.End();
    EXPECT_NE(talk.Talk().Helper().Story().find("LibraryCaller error: Invalid signature\n"), std::string::npos);
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
    talk.End();
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
    talk.End();
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
    talk.End();
}

} // namespace
} // namespace kessil::test
