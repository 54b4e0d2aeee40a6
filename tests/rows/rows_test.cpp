#include "rows/cwb_rows.h"
#include "rows/domino_rows.h"
#include "rows/ese_rows.h"
#include "rows/expectations.h"
#include "rows/mapi_rows.h"
#include "rows/vorn_rows.h"

#include <gtest/gtest.h>

namespace kessil::test {
namespace {

// A row and its library, whose name is the file's.
struct FamilyRow
{
    std::string library;
    Row row;
};

void PrintTo(const FamilyRow &each, std::ostream *out)
{
    *out << each.row.signature;
}

std::string NameOf(const ::testing::TestParamInfo<FamilyRow> &info)
{
    return info.param.row.function + "_" + std::to_string(info.index);
}

// Those of a family's rows that `fits` chooses.
std::vector<FamilyRow> Of(const std::string &library, const std::vector<Row> &rows, bool (*fits)(const Row &))
{
    std::vector<FamilyRow> chosen;
    for (const Row &row : rows) {
        if (fits(row))
            chosen.push_back({library, row});
    }
    return chosen;
}

bool Any(const Row &)
{
    return true;
}

bool ReadsSomething(const Row &row)
{
    return !row.in.empty();
}

// A row that fails takes its rig with it, so that the next one finds none of what it left.
class RowTest : public ::testing::TestWithParam<FamilyRow>
{
protected:
    static Rig &TheRig() { return SharedRig(GetParam().library); }
    static const Row &TheRow() { return GetParam().row; }
    static void TearDownTestSuite() { FinishRigs(); }

    void TearDown() override
    {
        if (HasFailure())
            DropRig(GetParam().library);
    }
};

class Answer : public RowTest
{};

TEST_P(Answer, IsWhatTheRowSays)
{
    ExpectAnswer(TheRig(), TheRow());
}

class InList : public RowTest
{};

TEST_P(InList, IsRefusedWhereverItIsCut)
{
    ExpectRefusedInput(TheRig(), TheRow());
}

class Reply : public RowTest
{};

TEST_P(Reply, ThatFindsNoRoomIsAFailure)
{
    ExpectRefusedOutput(TheRig(), TheRow());
}

class Growth : public RowTest
{};

TEST_P(Growth, KeepsTheReply)
{
    ExpectGrowth(TheRig(), TheRow());
}

// No section was announced yet: there is nothing to read.
struct Family
{
    std::string library;
    std::vector<Row> rows;
};

void PrintTo(const Family &family, std::ostream *out)
{
    *out << family.library;
}

class NoSection : public ::testing::TestWithParam<Family>
{};

TEST_P(NoSection, IsAFailureOfEveryRowThatReads)
{
    const std::unique_ptr<Rig> rig = NewRig(GetParam().library);
    for (const Row &row : GetParam().rows) {
        if (row.in.empty())
            continue;
        SCOPED_TRACE(row.function);
        rig->Call(row.function, row.signature);
        rig->ExpectSent(FailureFrame(row.input_failure));
    }
    EXPECT_EQ(rig->Seen(), std::vector<std::string>());
    rig->Finish();
}

#define KESSIL_ROWS(family, library, rows)                                                                             \
    INSTANTIATE_TEST_SUITE_P(family, Answer, ::testing::ValuesIn(Of(library, rows, Any)), NameOf);                     \
    INSTANTIATE_TEST_SUITE_P(family, InList, ::testing::ValuesIn(Of(library, rows, ReadsSomething)), NameOf);          \
    INSTANTIATE_TEST_SUITE_P(family, Reply, ::testing::ValuesIn(Of(library, rows, CanRefuseOutput)), NameOf);          \
    INSTANTIATE_TEST_SUITE_P(family, Growth, ::testing::ValuesIn(Of(library, rows, Grows)), NameOf);                   \
    INSTANTIATE_TEST_SUITE_P(family, NoSection, ::testing::Values(Family{library, rows}))

KESSIL_ROWS(Cwb, "cwb_recorder", CwbRows());
KESSIL_ROWS(Domino, "domino_recorder", DominoRows());
KESSIL_ROWS(Ese, "ese_recorder", EseRows());
KESSIL_ROWS(Mapi, "mapi_recorder", MapiRows());
KESSIL_ROWS(Vorn, "vorn_recorder", VornRows());

INSTANTIATE_TEST_SUITE_P(FailingCwb, Answer, ::testing::ValuesIn(Of("cwb_recorder", FailingCwbRows(), Any)), NameOf);

} // namespace
} // namespace kessil::test
