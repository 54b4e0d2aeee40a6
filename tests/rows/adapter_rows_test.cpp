#include "rows/adapter_backup_rows.h"
#include "rows/adapter_inventory_rows.h"
#include "rows/adapter_machines_rows.h"
#include "rows/adapter_restore_rows.h"
#include "rows/expectations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace kessil::test {
namespace {

template <class AnyRow>
std::string NameOf(const ::testing::TestParamInfo<AnyRow> &info)
{
    return info.param.function + "_" + std::to_string(info.index);
}

template <class AnyRow>
std::vector<AnyRow> Chosen(const std::vector<AnyRow> &rows, bool (*fits)(const AnyRow &))
{
    std::vector<AnyRow> chosen;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(chosen), fits);
    return chosen;
}

bool ReadsSomething(const AdapterRow &row)
{
    return !row.in.empty();
}

bool CanRefuseReply(const AdapterRow &)
{
    return rig_can.takes_room_away;
}

bool CanMissItsErrorText(const AdapterRow &row)
{
    return rig_can.unbinds && !row.error_failure.empty();
}

bool CanBeCut(const CommandRow &row)
{
    return std::any_of(row.in.begin(), row.in.end(),
                       [](const Value &value) { return rig_can.cuts_any_value || value.is_text; });
}

// The process keeps what earlier calls made, so each of these rows has a rig of its own.
template <class AnyRow>
void OnNewRig(void (*expect)(Rig &, const AnyRow &), const AnyRow &row)
{
    const std::unique_ptr<Rig> rig = NewRig(adapter_library);
    expect(*rig, row);
    rig->Finish();
}

class AdapterAnswer : public ::testing::TestWithParam<AdapterRow>
{};

TEST_P(AdapterAnswer, IsWhatTheRowSays)
{
    OnNewRig<ParamType>(ExpectAnswer, GetParam());
}

class AdapterReply : public ::testing::TestWithParam<AdapterRow>
{};

TEST_P(AdapterReply, ThatFindsNoRoomIsAFailure)
{
    OnNewRig<ParamType>(ExpectRefusedOutput, GetParam());
}

class AdapterWithoutErrorTexts : public ::testing::TestWithParam<AdapterRow>
{};

TEST_P(AdapterWithoutErrorTexts, AnswersTwice)
{
    OnNewRig(ExpectDoubleAnswer, GetParam());
}

class CommandAnswer : public ::testing::TestWithParam<CommandRow>
{};

TEST_P(CommandAnswer, IsWhatTheRowSays)
{
    OnNewRig<ParamType>(ExpectAnswer, GetParam());
}

class CommandValue : public ::testing::TestWithParam<CommandRow>
{};

TEST_P(CommandValue, ThatCannotBeReadHasTheConductOfItsRow)
{
    ExpectCuts(GetParam());
}

// A refused call makes nothing, so these share one.
class AdapterInList : public ::testing::TestWithParam<AdapterRow>
{
protected:
    static void TearDownTestSuite() { FinishRigs(); }

    void TearDown() override
    {
        if (HasFailure())
            DropRig(adapter_library);
    }
};

TEST_P(AdapterInList, IsRefusedWhereverItIsCut)
{
    ExpectRefusedInput(SharedRig(adapter_library), GetParam());
}

class AdapterNoSection : public ::testing::TestWithParam<std::vector<AdapterRow>>
{};

TEST_P(AdapterNoSection, IsAFailureOfEveryRowThatReads)
{
    const std::unique_ptr<Rig> rig = NewRig(adapter_library);
    for (const AdapterRow &row : GetParam()) {
        if (row.in.empty())
            continue;
        SCOPED_TRACE(row.function);
        rig->Call(row.function, row.signature);
        rig->ExpectSent(FailureFrame(row.input_failure));
    }
    EXPECT_EQ(rig->Seen(), std::vector<std::string>());
    rig->Finish();
}

std::string NameOfArea(const ::testing::TestParamInfo<std::vector<AdapterRow>> &)
{
    return "All";
}

// Only the rig on fakes has these.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(AdapterReply);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(AdapterWithoutErrorTexts);

#define KESSIL_ADAPTER_ROWS(area, rows, commands)                                                                      \
    INSTANTIATE_TEST_SUITE_P(area, AdapterAnswer, ::testing::ValuesIn(rows), NameOf<AdapterRow>);                      \
    INSTANTIATE_TEST_SUITE_P(area, AdapterReply, ::testing::ValuesIn(Chosen(rows, CanRefuseReply)),                    \
                             NameOf<AdapterRow>);                                                                      \
    INSTANTIATE_TEST_SUITE_P(area, AdapterWithoutErrorTexts, ::testing::ValuesIn(Chosen(rows, CanMissItsErrorText)),   \
                             NameOf<AdapterRow>);                                                                      \
    INSTANTIATE_TEST_SUITE_P(area, AdapterInList, ::testing::ValuesIn(Chosen(rows, ReadsSomething)),                   \
                             NameOf<AdapterRow>);                                                                      \
    INSTANTIATE_TEST_SUITE_P(area, AdapterNoSection, ::testing::Values(rows), NameOfArea);                             \
    INSTANTIATE_TEST_SUITE_P(area, CommandAnswer, ::testing::ValuesIn(commands), NameOf<CommandRow>);                  \
    INSTANTIATE_TEST_SUITE_P(area, CommandValue, ::testing::ValuesIn(Chosen(commands, CanBeCut)), NameOf<CommandRow>)

KESSIL_ADAPTER_ROWS(Backup, BackupRows(), BackupCommands());
KESSIL_ADAPTER_ROWS(Inventory, InventoryRows(), InventoryCommands());
KESSIL_ADAPTER_ROWS(Machines, MachinesRows(), MachinesCommands());
KESSIL_ADAPTER_ROWS(Restore, RestoreRows(), RestoreCommands());

} // namespace
} // namespace kessil::test
