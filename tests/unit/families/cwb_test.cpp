#include "families/cwb/cwb.h"

#include "rows/cwb_rows.h"
#include "rows/exports.h"
#include "targets/cwb_recorder.h"
#include "unit/families/family_rows.h"

#include <functional>
#include <stdexcept>
#include <utility>

namespace kessil::test {
namespace {

// What happens at the next release of an array, just before it.
std::function<void(const void *block)> on_delete;

// Memory that isn't for release: how often it was asked for is counted instead.
const void *kept_block = nullptr;
int releases_of_kept_block = 0;

} // namespace
} // namespace kessil::test

// The linker sends every release of an array here (--wrap) and gives the true function the name with __real_.
extern "C" {
void __real__ZdaPv(void *block);
void __wrap__ZdaPv(void *block);

void __wrap__ZdaPv(void *block)
{
    if (const auto action = std::exchange(kessil::test::on_delete, nullptr))
        action(block);
    if (block != nullptr && block == kessil::test::kept_block)
        ++kessil::test::releases_of_kept_block;
    else
        __real__ZdaPv(block);
}
}

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::ValuesIn;

const Exports &exports = CwbExports();

class CwbAnswer : public FamilyTest
{};
TEST_P(CwbAnswer, AsItsRowSays)
{
    ExpectAnswer(GetParam(), exports);
}
INSTANTIATE_TEST_SUITE_P(Rows, CwbAnswer, ValuesIn(CwbRows()), NameOfRow);
INSTANTIATE_TEST_SUITE_P(FailingRows, CwbAnswer, ValuesIn(FailingCwbRows()), NameOfRow);

class CwbInput : public FamilyTest
{};
TEST_P(CwbInput, RefusedWhereverItIsCut)
{
    ExpectRefusedInput(GetParam(), exports);
}
INSTANTIATE_TEST_SUITE_P(Rows, CwbInput, ValuesIn(RowsWithInList(CwbRows())), NameOfRow);

class CwbOutput : public FamilyTest
{};
TEST_P(CwbOutput, RefusedWithoutRoom)
{
    ExpectRefusedOutput(GetParam(), exports);
}
INSTANTIATE_TEST_SUITE_P(Rows, CwbOutput, ValuesIn(CwbRows()), NameOfRow);

// What doesn't fit into the table.
class CwbTest : public FamilyTest
{
protected:
    CwbTest() { releases_of_kept_block = 0; }
    ~CwbTest() override
    {
        on_delete = nullptr;
        kept_block = nullptr;
    }

    static Row RowOf(const std::string &function)
    {
        const std::vector<Row> rows = CwbRows();
        return *std::find_if(rows.begin(), rows.end(), [&](const Row &row) { return row.function == function; });
    }

    // A call under the signature, of a function that doesn't matter there.
    void CallParameterRow(const std::string &signature, const Bytes &in_list)
    {
        Row row = {};
        row.function = "cwbRC_AddParm";
        row.signature = signature;
        Call(row, exports, in_list);
    }

    static constexpr const char *add_parm = "SIGNATURE_CWBRC_ADDPARM";
    static constexpr const char *get_buffer = "SIGNATURE_CWBRC_CALLPGM_GETBUFFER";
    static constexpr const char *delete_buffer = "SIGNATURE_CWBRC_CALLPGM_DELETEBUFFER";

    // The address that AddParm answered with.
    unsigned char *AnsweredAddress() const
    {
        std::uintptr_t address = 0;
        for (const unsigned char byte : Section(8))
            address = address << 8 | byte;
        return reinterpret_cast<unsigned char *>(address);
    }

    static Bytes AddressForm(const void *address) { return Be64(reinterpret_cast<std::uintptr_t>(address)); }
};

TEST_F(CwbTest, AddParmGivesTheLibraryABlockThatStays)
{
    stand_in.script["cwbRC_AddParm"] = "result=7";
    CallParameterRow(add_parm, Hex("C1 C2 C3 C4 80 02 00 00 00 03 EE EE EE EE EE EE 01 02 03"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_THAT(stand_in.lines,
                ElementsAre("cwbRC_AddParm program=0xc1c2c3c4 type=0x8002 length=3 parameter=some data=010203"));
    unsigned char *const block = AnsweredAddress();
    EXPECT_EQ(block, LastParameter());
    EXPECT_EQ(Section(19), AddressForm(block) + Hex("00 00 00 07 EE EE EE EE 01 02 03"));
    EXPECT_EQ(Bytes(block, block + 3), Hex("01 02 03"));
    delete[] block;
}

TEST_F(CwbTest, AddParmOfNoBytesHasABlockToo)
{
    stand_in.script["cwbRC_AddParm"] = "result=0x80000009";
    CallParameterRow(add_parm, Hex("C1 C2 C3 C4 00 01 00 00 00 00 EE EE EE EE EE EE"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_THAT(stand_in.lines, ElementsAre("cwbRC_AddParm program=0xc1c2c3c4 type=0x1 length=0 parameter=some data="));
    unsigned char *const block = AnsweredAddress();
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(block, LastParameter());
    EXPECT_EQ(Section(12), AddressForm(block) + Hex("80 00 00 09"));
    delete[] block;
}

TEST_F(CwbTest, AddParmRefusesItsInputWhereverItIsCut)
{
    for (const char *in_list :
         {"", "C1 C2 C3 C4", "C1 C2 C3 C4 80 02", "C1 C2 C3 C4 80 02 00 00 00 03 EE EE EE EE EE EE 01 02"}) {
        CallParameterRow(add_parm, Hex(in_list));
        EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise input (Process_cwbRC_AddParm)")) << in_list;
    }
    EXPECT_THAT(stand_in.lines, IsEmpty());
}

// The library has the block, the parent never hears of it.
TEST_F(CwbTest, AddParmRefusesItsOutputOnceTheTargetHasRun)
{
    Row row = {};
    row.function = "cwbRC_AddParm";
    row.signature = add_parm;
    row.in = {"C1 C2 C3 C4", "80 02", "00 00 00 03 EE EE EE EE EE EE 01 02 03"};
    row.recorded = " program=0xc1c2c3c4 type=0x8002 length=3 parameter=some data=010203";
    row.output_failure = u"Failed to serialise output (Process_cwbRC_AddParm";
    row.room = 12;
    ExpectRefusedOutput(row, exports);
    unsigned char *const block = LastParameter();
    EXPECT_EQ(Bytes(block, block + 3), Hex("01 02 03"));
    delete[] block;
}

TEST_F(CwbTest, GetBufferCopiesTheBlock)
{
    const Bytes block = Hex("A1 A2 A3 A4");
    CallParameterRow(get_buffer,
                     AddressForm(block.data()) + Hex("00 00 00 03 EE EE EE EE F0 F1 F2") + Repeat(0xEE, 16));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_THAT(stand_in.lines, IsEmpty());
    EXPECT_EQ(Section(24), AddressForm(block.data()) + Hex("00 00 00 03 EE EE EE EE A1 A2 A3 00 00 00 00 EE"));
}

// Nobody knows where a block ends: here its three bytes lie in front of others.
TEST_F(CwbTest, GetBufferCopiesAsManyBytesAsItIsAskedFor)
{
    const Bytes memory = Hex("A1 A2 A3 B1 B2 B3");
    CallParameterRow(get_buffer,
                     AddressForm(memory.data()) + Hex("00 00 00 05 EE EE EE EE F0 F1 F2 F3 F4") + Repeat(0xEE, 16));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(26), AddressForm(memory.data()) + Hex("00 00 00 05 EE EE EE EE A1 A2 A3 B1 B2 00 00 00 00 EE"));
}

TEST_F(CwbTest, GetBufferCopiesIntoTheSectionThatItGrewTo)
{
    const Bytes block = Hex("A1 A2 A3");
    GiveSection(u"s0", AddressForm(block.data()) + Hex("00 00 00 03 EE EE EE EE F0 F1 F2"));
    fake_pipe.Deliver(SuccessFrame());
    Process_cwbRC_CallPgm_GetBuffer(channel, nullptr);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 27) + SuccessFrame());
    EXPECT_EQ(Section(23), AddressForm(block.data()) + Hex("00 00 00 03 EE EE EE EE A1 A2 A3 00 00 00 00"));
}

TEST_F(CwbTest, GetBufferOfNoAddressLeavesTheAreaAlone)
{
    CallParameterRow(get_buffer, Be64(0) + Hex("00 00 00 03 EE EE EE EE F0 F1 F2") + Repeat(0xEE, 16));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(24), Be64(0) + Hex("00 00 00 03 EE EE EE EE F0 F1 F2 00 00 00 00 EE"));
}

// Address 1 would fault if it were read.
TEST_F(CwbTest, GetBufferOfNoBytesReadsNothing)
{
    CallParameterRow(get_buffer, Be64(1) + Hex("00 00 00 00 EE EE EE EE") + Repeat(0xEE, 16));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(21), Be64(1) + Hex("00 00 00 00 EE EE EE EE 00 00 00 00 EE"));
}

TEST_F(CwbTest, GetBufferRefusesItsInputWhereverItIsCut)
{
    for (const Bytes &in_list : {Bytes(), Be64(1), Be64(1) + Hex("00 00 00 03 EE EE EE EE F0 F1")}) {
        CallParameterRow(get_buffer, in_list);
        EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise input (Process_cwbRC_CallPgm_GetBuffer)"))
            << in_list.size();
    }
}

// Address 1 would fault if it were read.
TEST_F(CwbTest, GetBufferWithoutRoomCopiesNothing)
{
    const Bytes in_list = Be64(1) + Hex("00 00 00 03 EE EE EE EE F0 F1 F2");
    GiveSection(u"s0", in_list);
    fake_pipe.Deliver(FailureFrame(u"no room"));
    Process_cwbRC_CallPgm_GetBuffer(channel, nullptr);
    EXPECT_EQ(fake_pipe.written,
              ResizeFrame(u"s1", 27) + FailureFrame(u"Failed to serialise output (Process_cwbRC_CallPgm_GetBuffer)"));
}

TEST_F(CwbTest, DeleteBufferReleasesTheBlock)
{
    const auto *const block = new unsigned char[3];
    const void *released = nullptr;
    const Bytes in_list = AddressForm(block);
    GiveSection(u"s0", in_list);
    on_delete = [&](const void *address) { released = address; };
    Process_cwbRC_CallPgm_DeleteBuffer(channel, nullptr);
    EXPECT_EQ(released, block);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(8), Be32(0) + Behind(4, in_list));
}

TEST_F(CwbTest, DeleteBufferOfNoAddressReleasesNothing)
{
    GiveSection(u"s0", Be64(0));
    std::vector<const void *> released;
    on_delete = [&](const void *address) { released.push_back(address); };
    Process_cwbRC_CallPgm_DeleteBuffer(channel, nullptr);
    on_delete = nullptr;
    EXPECT_THAT(released, IsEmpty());
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(8), Be64(0));
}

// Nobody knows either which blocks are gone.
TEST_F(CwbTest, DeleteBufferOfOneAddressTwiceReleasesItTwice)
{
    const Bytes memory = Hex("A1 A2 A3");
    kept_block = memory.data();
    for (int releases = 1; releases <= 2; ++releases) {
        CallParameterRow(delete_buffer, AddressForm(memory.data()));
        EXPECT_EQ(releases_of_kept_block, releases);
        EXPECT_EQ(fake_pipe.written, SuccessFrame());
        EXPECT_EQ(Section(4), Be32(0));
    }
}

TEST_F(CwbTest, DeleteBufferRefusesItsInput)
{
    for (const Bytes &in_list : {Bytes(), Hex("00 00 00 00 00 00 00")}) {
        CallParameterRow(delete_buffer, in_list);
        EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise input (Process_cwbRC_CallPgm_DeleteBuffer)"))
            << in_list.size();
    }
}

// The section loses its room while the block is released.
TEST_F(CwbTest, DeleteBufferRefusesItsOutputOnceTheBlockIsReleased)
{
    const auto *const block = new unsigned char[3];
    GiveSection(u"s0", AddressForm(block));
    const void *released = nullptr;
    on_delete = [&](const void *address) {
        released = address;
        GiveSection(u"tiny", Bytes());
        fake_pipe.Deliver(FailureFrame(u"no room"));
    };
    Process_cwbRC_CallPgm_DeleteBuffer(channel, nullptr);
    EXPECT_EQ(released, block);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"tin0", 4) +
                                     FailureFrame(u"Failed to serialise output (Process_cwbRC_CallPgm_DeleteBuffer)"));
}

TEST_F(CwbTest, CreateErrHandleReadsNothingAndMakesASection)
{
    stand_in.script["cwbSV_CreateErrHandle"] = "errors=0xE1E2E3E4 result=7";
    fake_pipe.Deliver(SuccessFrame());
    Process_cwbSV_CreateErrHandle(channel, exports.at("cwbSV_CreateErrHandle"));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u".1", 8) + SuccessFrame());
    EXPECT_EQ(Section(8), Hex("E1 E2 E3 E4 00 00 00 07"));
}

// The library says that the room isn't enough; it gets the length, and nothing behind it is touched.
TEST_F(CwbTest, ConvertPassesTheLengthOfASmallTarget)
{
    stand_in.script["cwbNL_Convert"] = "converted=A1 out1=1 out2=2 out3=3 result=111";
    Row row = RowOf("cwbNL_Convert");
    row.in = {"C1C2C3C4", "00000002 0102", "00000001 EEEE F0", "E1E2E3E4"};
    row.script = "converted=A1 out1=1 out2=2 out3=3 result=111";
    row.recorded = " converter=0xc1c2c3c4 source_length=2 target_length=1 source=0102 target=F0 errors=0xe1e2e3e4";
    row.out = "C1C2C3C4 00000002 0102 00000001 EEEE A1 00000001 00000002 00000003 0000006F";
    ExpectAnswer(row, exports);
}

TEST_F(CwbTest, ConvertKeepsTheTextThroughAGrowingSection)
{
    const Row row = RowOf("cwbNL_Convert");
    stand_in.script[row.function] = row.script;
    stand_in.on_call = [] { fake_pipe.Deliver(SuccessFrame()); };
    Call(row, exports, InList(row, row.in.size()));
    // 4, 5 + 12, 8 + 12 and four times 4.
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 57) + SuccessFrame());
    EXPECT_EQ(Section(48), Hex("C1 C2 C3 C4 00 00 00 05 01 02 03 04 05 00 00 00 08 EE EE EE EE EE EE EE "
                               "A1 A2 A3 A4 A5 A6 F6 F7 11 12 13 14 21 22 23 24 31 32 33 34 00 00 00 07"));
}

// The answer lies where the library wrote it, in front of what the section grew by.
TEST_F(CwbTest, GetErrTextIndexedKeepsTheTextThroughAGrowingSection)
{
    const Row row = RowOf("cwbSV_GetErrTextIndexed");
    stand_in.script[row.function] = row.script;
    stand_in.on_call = [] { fake_pipe.Deliver(SuccessFrame()); };
    Call(row, exports, InList(row, row.in.size()));
    // 4, 4, 6 + 12, 4 and 4.
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 34) + SuccessFrame());
    EXPECT_EQ(Section(30), Hex("E1 E2 E3 E4 80 00 00 02 00 00 00 06 EE EE EE EE 41 00 42 00 00 F5 80 00 00 14 "
                               "00 00 00 07"));
}

TEST_F(CwbTest, StringToPackedKeepsTheDecimalThroughAGrowingSection)
{
    const Row row = RowOf("cwbDT_StringToPacked");
    stand_in.script[row.function] = row.script;
    stand_in.on_call = [] { fake_pipe.Deliver(SuccessFrame()); };
    Call(row, exports, InList(row, row.in.size()));
    // 2 * 2 + 4, 4 + 12 and 4.
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 28) + SuccessFrame());
    EXPECT_EQ(Section(24), Hex("31 00 32 00 00 00 00 00 00 04 EE EE EE EE EE EE 01 2C F2 F3 00 00 00 07"));
}

// 15 bytes came in.
TEST_F(CwbTest, PackedToStringGrowsTheSectionToItsLongestText)
{
    std::string digits;
    Bytes out;
    for (int unit = 0; unit < 256; ++unit) {
        digits += "3900";
        out = out + Hex("39 00");
    }
    const Row row = RowOf("cwbDT_PackedToString");
    stand_in.script[row.function] = "digits=" + digits + " result=7";
    stand_in.on_call = [] { fake_pipe.Deliver(SuccessFrame()); };
    Call(row, exports, InList(row, row.in.size()));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 520) + SuccessFrame());
    EXPECT_EQ(Section(518), out + Hex("00 00 00 00 00 07"));
}

// The longest text that the room holds, and none of the units that a terminator would be one of.
TEST_F(CwbTest, PackedToStringEndsAtItsRoom)
{
    std::string digits;
    std::string out;
    for (int unit = 0; unit < 256; ++unit) {
        digits += "3900";
        out += "3900 ";
    }
    Row row = RowOf("cwbDT_PackedToString");
    row.script = "digits=" + digits + " result=7";
    row.out = out + "0000 00000007";
    ExpectAnswer(row, exports);
}

// The text ends at the section's end, where its terminator should have been.
TEST_F(CwbTest, SetStatementTextRefusesATextWithoutAnEnd)
{
    Call(RowOf("cwbDB_SetStatementText"), exports, Hex("D1 D2 D3 D4") + Wide(u"SELECT") + Hex("E1 E2 E3 E4"));
    const Bytes whole = Section(22);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    Call(RowOf("cwbDB_SetStatementText"), exports, First(16, whole));
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise input (Process_cwbDB_SetStatementText)"));
    EXPECT_EQ(stand_in.lines.size(), 1u);
}

TEST_F(CwbTest, GetDataPointerOfNoBytesAsksTheLibraryAndCopiesNothing)
{
    Row row = RowOf("cwbDB_GetDataPointer");
    row.in = {"DA1A2A3A", "00000000", "E1E2E3E4"};
    row.script = "result=0x80000009";
    row.out = "DA1A2A3A 00000000 80000009";
    ExpectAnswer(row, exports);
}

TEST_F(CwbTest, GetDataPointerCopiesWhateverTheResult)
{
    Row row = RowOf("cwbDB_GetDataPointer");
    row.script = "bytes=B1B2B3B4B5 result=0x80000009";
    row.out = "DA1A2A3A 00000005 B1B2B3B4B5 80000009";
    ExpectAnswer(row, exports);
}

TEST_F(CwbTest, GetDataPointerWithoutAPointerEndsTheRun)
{
    const Row row = RowOf("cwbDB_GetDataPointer");
    stand_in.script[row.function] = "result=0x80000009";
    EXPECT_THROW(Call(row, exports, InList(row, row.in.size()) + Repeat(0xEE, 16)), std::logic_error);
    EXPECT_EQ(fake_pipe.written, Bytes());
}

TEST_F(CwbTest, GetDataPointerCopiesIntoTheSectionThatItGrewTo)
{
    const Row row = RowOf("cwbDB_GetDataPointer");
    stand_in.script[row.function] = row.script;
    stand_in.on_call = [] { fake_pipe.Deliver(SuccessFrame()); };
    Call(row, exports, InList(row, row.in.size()));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 25) + SuccessFrame());
    EXPECT_EQ(Section(17), Hex("DA 1A 2A 3A 00 00 00 05 B1 B2 B3 B4 B5 00 00 00 07"));
}

} // namespace
} // namespace kessil::test
