#include "families/cwb/cwb.h"

#include "rows/cwb_rows.h"
#include "rows/expectations.h"
#include "rows/exports.h"
#include "targets/cwb_recorder.h"
#include "unit/families/fakes_rig.h"

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

// What doesn't fit into the table.
class CwbTest : public ::testing::Test, protected FakesRig
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
        CallOver(in_list, row.function, row.signature);
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

// The library has the block, and the parent gets no address of it.
TEST_F(CwbTest, AddParmRefusesItsOutputOnceTheTargetHasRun)
{
    Row row = {};
    row.function = "cwbRC_AddParm";
    row.signature = add_parm;
    row.in = {"C1 C2 C3 C4", "80 02", "00 00 00 03 EE EE EE EE EE EE 01 02 03"};
    row.recorded = " program=0xc1c2c3c4 type=0x8002 length=3 parameter=some data=010203";
    row.output_failure = u"Failed to serialise output (Process_cwbRC_AddParm";
    row.room = 12;
    ExpectRefusedOutput(*this, row);
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

// The handler doesn't know where a block ends: here its three bytes lie in front of others.
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

// Nor does it know which blocks are released.
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

// The text ends at the section's end, where its terminator should have been.
TEST_F(CwbTest, SetStatementTextRefusesATextWithoutAnEnd)
{
    CallOver(Hex("D1 D2 D3 D4") + Wide(u"SELECT") + Hex("E1 E2 E3 E4"), "cwbDB_SetStatementText",
             "SIGNATURE_CWBDB_SETSTATEMENTTEXT");
    const Bytes whole = Section(22);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    CallOver(First(16, whole), "cwbDB_SetStatementText", "SIGNATURE_CWBDB_SETSTATEMENTTEXT");
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise input (Process_cwbDB_SetStatementText)"));
    EXPECT_EQ(stand_in.lines.size(), 1u);
}

TEST_F(CwbTest, GetDataPointerWithoutAPointerEndsTheRun)
{
    const Row row = RowOf("cwbDB_GetDataPointer");
    stand_in.script[row.function] = "result=0x80000009";
    EXPECT_THROW(CallOver(Joined(row.in) + Repeat(0xEE, 16), row.function, row.signature), std::logic_error);
    EXPECT_EQ(fake_pipe.written, Bytes());
}

} // namespace
} // namespace kessil::test
