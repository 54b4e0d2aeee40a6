#include "protocol/conversation.h"
#include "protocol/recorder.h"

#include <gtest/gtest.h>

namespace kessil::test {
namespace {

const char *const library = "cwb_recorder";

// One helper with the recording library loaded and a section, which is all 0xEE, so that what isn't written shows.
class Cwb
{
public:
    explicit Cwb(const std::string &script = "", std::uint32_t section_size = 256, Place place = Place::Here())
        : m_recorder(script), talk(0, {}, place), section(Announce(talk, section_size, u'7', place)),
          m_sectionSize(section_size)
    {
        section.Put(0, Repeat(0xEE, section_size));
        talk.Load(TargetLibrary(library), place);
    }

    // The in-list in, the request out.
    void Ask(const std::string &function, const std::string &signature, const Bytes &in_list,
             Place place = Place::Here())
    {
        section.Put(0, in_list + Repeat(0xEE, m_sectionSize - in_list.size()));
        talk.Send(CallFrame(u"", function, signature), place);
    }

    // Ask, and the success.
    void Call(const std::string &function, const std::string &signature, const Bytes &in_list,
              Place place = Place::Here())
    {
        Ask(function, signature, in_list, place);
        talk.Expect(SuccessFrame(), place);
    }

    std::string Record() const { return m_recorder.Lines(); }

private:
    Recorder m_recorder;

public:
    Conversation talk;
    Section section;

private:
    std::uint32_t m_sectionSize;
};

// The life of a parameter. The address is a number that the parent only sends back.
TEST(Cwb, AParameterFromItsAddingToItsDeleting)
{
    Cwb cwb("cwbRC_AddParm result=7\ncwbRC_CallPgm output=A1A2 result=8\n");
    cwb.Call("cwbRC_AddParm", "SIGNATURE_CWBRC_ADDPARM", Hex("C1C2C3C4 8002 00000003 EEEEEEEEEEEE 010203"));
    const Bytes address = cwb.section.Get(0, 8);
    EXPECT_NE(address, Be64(0));
    cwb.section.Expect(8, Hex("00000007 EEEEEEEE 010203 EE"));

    cwb.Call("cwbRC_CallPgm", "SIGNATURE_CWBRC_CALLPGM", Hex("B1B2B3B4 C1C2C3C4 E1E2E3E4"));
    cwb.section.Expect(0, Hex("00000008"));

    // What the library wrote lies in the block, and what it left alone too.
    cwb.Call("cwbRC_CallPgm", "SIGNATURE_CWBRC_CALLPGM_GETBUFFER", address + Hex("00000003 EEEEEEEE F0F1F2"));
    cwb.section.Expect(0, address + Hex("00000003 EEEEEEEE A1A203 00000000 EE"));

    cwb.Call("cwbRC_CallPgm", "SIGNATURE_CWBRC_CALLPGM_DELETEBUFFER", address);
    cwb.section.Expect(0, Hex("00000000") + Behind(4, address) + Hex("EE"));

    EXPECT_EQ(cwb.Record(), "cwbRC_AddParm program=0xc1c2c3c4 type=0x8002 length=3 parameter=some data=010203\n"
                            "cwbRC_CallPgm request=0xb1b2b3b4 program=0xc1c2c3c4 errors=0xe1e2e3e4\n");
    cwb.talk.Send(OrderlyStop());
    cwb.talk.End();
}

TEST(Cwb, AParameterOfNoBytes)
{
    Cwb cwb;
    cwb.Call("cwbRC_AddParm", "SIGNATURE_CWBRC_ADDPARM", Hex("C1C2C3C4 8002 00000000 EEEEEEEEEEEE"));
    const Bytes address = cwb.section.Get(0, 8);
    EXPECT_NE(address, Be64(0));
    cwb.section.Expect(8, Hex("00000000 EEEEEEEE"));
    cwb.Call("cwbRC_AddParm", "SIGNATURE_CWBRC_CALLPGM_GETBUFFER", address + Hex("00000000"));
    cwb.section.Expect(0, address + Hex("00000000 EEEEEEEE 00000000 EE"));
    cwb.Call("cwbRC_AddParm", "SIGNATURE_CWBRC_CALLPGM_DELETEBUFFER", address);
    EXPECT_EQ(cwb.Record(), "cwbRC_AddParm program=0xc1c2c3c4 type=0x8002 length=0 parameter=some data=\n");
    cwb.talk.Send(OrderlyStop());
    cwb.talk.End();
}

TEST(Cwb, NoAddressIsNothingToCopyAndNothingToDelete)
{
    Cwb cwb;
    cwb.Call("cwbRC_CallPgm", "SIGNATURE_CWBRC_CALLPGM_GETBUFFER", Be64(0) + Hex("00000003 EEEEEEEE F0F1F2"));
    cwb.section.Expect(0, Be64(0) + Hex("00000003 EEEEEEEE F0F1F2 00000000 EE"));
    cwb.Call("cwbRC_CallPgm", "SIGNATURE_CWBRC_CALLPGM_DELETEBUFFER", Be64(0));
    cwb.section.Expect(0, Be64(0) + Hex("EE"));
    EXPECT_EQ(cwb.Record(), "");
    cwb.talk.Send(OrderlyStop());
}

// The two rows call nothing, yet the function that they are asked with has to be there.
TEST(Cwb, ParameterRowsNeedAnExportThatExists)
{
    Cwb cwb;
    for (const std::string name : {"GetBuffer", "DeleteBuffer"}) {
        const std::string signature =
            name == "GetBuffer" ? "SIGNATURE_CWBRC_CALLPGM_GETBUFFER" : "SIGNATURE_CWBRC_CALLPGM_DELETEBUFFER";
        cwb.Ask("cwbRC_CallPgm_" + name, signature, Be64(0));
        cwb.talk.Expect(ErrorFrame(0, 0, u"Failed to get function address..."));
    }
    cwb.talk.Send(OrderlyStop());
}

// The texts of the rows that the table leaves out.
TEST(Cwb, ParameterRowsRefuseTheirInputWhereverItIsCut)
{
    struct Cut
    {
        const char *signature;
        const char16_t *text;
        std::vector<const char *> in_lists;
    };
    const std::vector<Cut> cuts = {
        {"SIGNATURE_CWBRC_ADDPARM",
         u"Failed to serialise input (Process_cwbRC_AddParm)",
         {"C1C2C3C4", "C1C2C3C4 8002", "C1C2C3C4 8002 00000003 EEEEEEEEEEEE 0102"}},
        {"SIGNATURE_CWBRC_CALLPGM_GETBUFFER",
         u"Failed to serialise input (Process_cwbRC_CallPgm_GetBuffer)",
         {"00000000 00000001", "0000000000000001 00000003 EEEEEEEE F0F1"}},
        {"SIGNATURE_CWBRC_CALLPGM_DELETEBUFFER",
         u"Failed to serialise input (Process_cwbRC_CallPgm_DeleteBuffer)",
         {"00000000 000000"}},
    };
    const Recorder recorder;
    Conversation talk(0, {});
    talk.Load(TargetLibrary(library));
    char16_t digit = u'2';
    for (const Cut &cut : cuts) {
        for (const char *in_list : cut.in_lists) {
            const Bytes bytes = Hex(in_list);
            Section section = Announce(talk, static_cast<std::uint32_t>(bytes.size()), digit++);
            section.Put(0, bytes);
            talk.Send(CallFrame(u"", "cwbRC_AddParm", cut.signature));
            talk.Expect(FailureFrame(cut.text));
        }
    }
    EXPECT_EQ(recorder.Lines(), "");
    talk.Send(OrderlyStop());
}

// The section has no room for what stands behind the buffer, and the parent makes none. The address, which would fault
// if it were read, is not.
TEST(Cwb, GetBufferWithoutRoomCopiesNothing)
{
    Cwb cwb("", 19);
    cwb.Ask("cwbRC_CallPgm", "SIGNATURE_CWBRC_CALLPGM_GETBUFFER", Be64(1) + Hex("00000003 EEEEEEEE F0F1F2"));
    cwb.talk.Expect(ResizeFrame(cwb.talk.SectionName(u'0'), 27));
    cwb.talk.Send(ErrorFrame(0, 0, u"no room"));
    cwb.talk.Expect(FailureFrame(u"Failed to serialise output (Process_cwbRC_CallPgm_GetBuffer)"));
    cwb.talk.Send(OrderlyStop());
}

TEST(Cwb, AStatementTextWithoutAnEndIsRefused)
{
    Cwb cwb("", 16);
    cwb.Ask("cwbDB_SetStatementText", "SIGNATURE_CWBDB_SETSTATEMENTTEXT",
            Hex("D1D2D3D4 5300 4500 4C00 4500 4300 5400"));
    cwb.talk.Expect(FailureFrame(u"Failed to serialise input (Process_cwbDB_SetStatementText)"));
    EXPECT_EQ(cwb.Record(), "");
    cwb.talk.Send(OrderlyStop());
}

// Neither name nor password is logged.
TEST(Cwb, NamesAndPasswordsStayOutOfTheLog)
{
    const Recorder recorder;
    Conversation talk(0);
    Section section = Announce(talk, 64);
    talk.Load(TargetLibrary(library));
    for (const char *name : {"cwbCO_SetUserIDEx", "cwbCO_SetPassword"}) {
        const std::string signature =
            name == std::string("cwbCO_SetPassword") ? "SIGNATURE_CWBCO_SETPASSWORD" : "SIGNATURE_CWBCO_SETUSERIDEX";
        section.Put(0, Hex("A1A2A3A4") + Wide(u"Zyx98765"));
        talk.Send(CallFrame(u"", name, signature));
        talk.Expect(SuccessFrame());
    }
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(recorder.Lines(), "cwbCO_SetUserIDEx system=0xa1a2a3a4 user=\"Zyx98765\"\n"
                                "cwbCO_SetPassword system=0xa1a2a3a4 password=\"Zyx98765\"\n");
    EXPECT_NE(talk.Helper().Log(), "");
    EXPECT_EQ(talk.Helper().Log().find("Zyx98765"), std::string::npos);
}

TEST(Cwb, GetDataPointerOfAMegabyte)
{
    constexpr std::uint32_t length = 1 << 20;
    Cwb cwb("cwbDB_GetDataPointer count_up=1048576 result=7\n", length + 64);
    cwb.Call("cwbDB_GetDataPointer", "SIGNATURE_CWBDB_GETDATAPOINTER",
             Hex("DA1A2A3A 00100000") + Repeat(0xEE, length) + Hex("E1E2E3E4"));
    EXPECT_TRUE(cwb.section.Get(8, length) == CountUp(length));
    cwb.section.Expect(8 + length, Hex("00000007 EE"));
    cwb.talk.Send(OrderlyStop());
}

// A library that fails and gives no pointer: the copy has no guard, and the fault ends the run.
TEST(Cwb, GetDataPointerWithoutAPointerEndsTheRun)
{
    Cwb cwb("cwbDB_GetDataPointer result=0x80000009\n");
    cwb.Ask("cwbDB_GetDataPointer", "SIGNATURE_CWBDB_GETDATAPOINTER", Hex("DA1A2A3A 00000005 F0F1F2F3F4 E1E2E3E4"));
    cwb.talk.ExpectClosed();
    cwb.talk.End();
    EXPECT_EQ(cwb.Record(), "cwbDB_GetDataPointer data=0xda1a2a3a errors=0xe1e2e3e4\n");
}

} // namespace
} // namespace kessil::test
