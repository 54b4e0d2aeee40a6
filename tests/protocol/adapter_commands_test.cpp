#include "protocol/adapter_talk.h"
#include "rows/adapter_backup_rows.h"
#include "rows/adapter_inventory_rows.h"
#include "rows/adapter_machines_rows.h"
#include "rows/adapter_restore_rows.h"

#include <map>

namespace kessil::test {
namespace {

// The commands that have no answer in bare values: they take their arguments from the section and answer with frames.
const std::map<std::string, std::uint8_t> commands = {
    {"GetBackupSessionFiles", 8}, {"OpenBackupFile", 9},     {"ReadFileACL", 10},        {"ReadBackupFile", 11},
    {"CloseBackupFile", 12},      {"ListResourcePools", 14}, {"CreateACLInfo", 18},      {"GetACLInfo", 25},
    {"CreateListingCache", 27},   {"ReOpenBackupFile", 28},  {"GetReadBufferUse", 29},   {"getIndexBlocks", 30},
    {"ListConfigItems", 46},      {"OpenConfigRead", 47},    {"ReconfigureMachine", 48},
};

std::vector<AdapterRow> FramedCommands()
{
    std::vector<AdapterRow> framed;
    for (const auto &rows : {InventoryRows(), BackupRows(), RestoreRows(), MachinesRows()}) {
        for (const AdapterRow &row : rows) {
            if (commands.count(row.function) != 0)
                framed.push_back(row);
        }
    }
    return framed;
}

class FramedCommand : public ::testing::TestWithParam<AdapterRow>
{};

TEST_P(FramedCommand, AnswersWithFrames)
{
    const AdapterRow &row = GetParam();
    AdapterTalk talk(row);
    const Bytes before = Joined(row.in) + Repeat(0xEE, spare);
    talk.Give(before);
    talk.Command(commands.at(row.function), {});
    talk.ExpectSent(Hex(row.frames) + SuccessFrame());
    const Bytes out = Hex(row.out);
    talk.TheSection().Expect(0, out + Behind(out.size(), before));
    EXPECT_EQ(talk.Seen(), row.seen);
    talk.Finish();
}

std::string NameOfCommand(const ::testing::TestParamInfo<AdapterRow> &info)
{
    return info.param.function + "_" + std::to_string(info.index);
}

INSTANTIATE_TEST_SUITE_P(Rows, FramedCommand, ::testing::ValuesIn(FramedCommands()), NameOfCommand);

TEST(FramedCommands, AreAllThere)
{
    std::map<std::string, std::uint8_t> seen;
    for (const AdapterRow &row : FramedCommands())
        seen.insert(*commands.find(row.function));
    EXPECT_EQ(seen, commands);
}

} // namespace
} // namespace kessil::test
