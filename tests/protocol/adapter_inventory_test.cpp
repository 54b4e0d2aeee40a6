#include "protocol/adapter_talk.h"
#include "rows/adapter_inventory_rows.h"

namespace kessil::test {
namespace {

// A helper with the adapter, for several calls.
class InventoryTalk
{
public:
    explicit InventoryTalk(const std::string &library = adapter_library) : m_talk(0)
    {
        m_talk.Load(TargetLibrary(library));
        m_talk.Send(LoadAltFrame(platform::ToUtf8(TargetLibrary(library))));
        m_talk.Expect(Hex("00000001"));
    }

    Conversation &Talk() { return m_talk; }

    // Calls with the in-list in the section, and expects success and that out-list.
    void Call(const std::string &function, const std::string &in, const std::string &out)
    {
        Section &section = Put(in);
        m_talk.Send(CallFrame(u"", function, "SIGNATURE_VADP" + function));
        m_talk.Expect(SuccessFrame());
        section.Expect(0, Hex(out));
    }

    // Expects the refusal first.
    void CallTwiceAnswered(const std::string &function, const std::string &signature, const std::string &in,
                           const std::u16string &refusal, const std::string &out)
    {
        Section &section = Put(in);
        m_talk.Send(CallFrame(u"", function, signature));
        m_talk.Expect(FailureFrame(refusal) + SuccessFrame());
        section.Expect(0, Hex(out));
    }

    void End()
    {
        m_talk.Send(OrderlyStop());
        m_talk.End();
    }

private:
    Section &Put(const std::string &in)
    {
        if (!m_section)
            m_section = std::make_unique<Section>(Announce(m_talk, 4096));
        m_section->Put(0, Hex(in));
        return *m_section;
    }

    Conversation m_talk;
    std::unique_ptr<Section> m_section;
};

// A parent's whole walk in the first generation, on one helper.
TEST(InventoryWalk, TakesEachItemByItsListingsHandle)
{
    const Recorder recorder("CreateCredentials result=1 credentials=0x501\n"
                            "CreateListingCache result=1 flag=1 cache=0x601\n"
                            "OpenListing result=1 listing=0x301\n"
                            "NextItem result=1 name=vm number=1 value=2 extra=3\n"
                            "NextItem result=0\n"
                            "GetErrorMessage text=end\n");
    InventoryTalk talk;
    talk.Call("CreateCredentials", "750000", "00");
    talk.Call("CreateListingCache", "6300", "0001 00");
    talk.Call("OpenListing", "6400 00000003", "00000000 00");
    talk.Call("NextItem", "00000000", "766D00 00000001 0000000000000002 00000003 00");
    talk.Call("NextItem", "00000000", "00 00000000 0000000000000000 00000000 656E6400");
    talk.Call("FreeListing", "00000000", "00000000"); // nothing is written over it
    talk.Call("FreeListingCache", "", "");
    talk.Call("FreeCredentials", "", "");
    talk.End();
    EXPECT_EQ(recorder.Lines(), "CreateCredentials first=\"u\" second=\"\" credentials=null\n"
                                "CreateListingCache path=\"c\" credentials=0x501 flag=0 cache=null\n"
                                "OpenListing path=\"d\" credentials=0x501 cache=0x601 listing=null listing_opts=3\n"
                                "NextItem listing=0x301 name=\"\" number=0 value=0 extra=0\n"
                                "NextItem listing=0x301 name=\"\" number=0 value=0 extra=0\n"
                                "GetErrorMessage error=null\n"
                                "FreeErrorInfo error=null\n"
                                "FreeListing listing=0x301\n"
                                "FreeListingCache cache=0x601\n"
                                "FreeCredentials credentials=0x501\n");
}

// The credentials are the process's: the calls of one generation work with those of the other.
TEST(InventoryWalk, BothGenerationsShareTheCredentials)
{
    const Recorder recorder("CreateCredentials result=1 credentials=0x501\n"
                            "CreateCredentials result=1 credentials=0x502\n"
                            "ListHosts result=1 items=a:1:2:3\n");
    InventoryTalk talk;
    talk.Call("CreateCredentials", "0000", "00");
    talk.Talk().Send(Hex("66 03 00000000 00000000"));
    talk.Talk().Expect(Hex(status_okay));
    talk.Talk().Send(Hex("66 25 00000001 68"));
    talk.Talk().Expect(Hex(no_log + "00000001 00000001 61 0000000000000002 00000001"));
    talk.Call("FreeCredentials", "", "");
    talk.End();
    EXPECT_EQ(recorder.Lines(), "CreateCredentials first=\"\" second=\"\" credentials=null\n"
                                "FreeCredentials credentials=0x501\n"
                                "CreateCredentials first=\"\" second=\"\" credentials=null\n"
                                "ListHosts path=\"h\" credentials=0x502 listing=null\n"
                                "FreeCredentials credentials=0x502\n");
}

// There are no error texts without a library that is known as an adapter.
TEST(InventoryOfAnUnboundLibrary, FailsWithTwoAnswersOrWithWordsOfTheHelpers)
{
    const Recorder recorder("ListHosts result=0 error=0x99\n"
                            "VADPVersion text=5\n"
                            "CreateCredentials result=1 credentials=0x501\n");
    InventoryTalk talk("unbound_recorder");
    talk.CallTwiceAnswered("ListHosts", "SIGNATURE_VADPListHosts", "00",
                           u"Failed to get error message (Process_VADPListHosts)", "FFFFFFFF 00");
    talk.CallTwiceAnswered("VADPVersion", "SIGNATURE_VADPVADPVersion", "00",
                           u"Failed to get error message (Process_VADPVersion)", "3500 00");
    talk.Talk().Send(Hex("66 25 00000000"));
    talk.Talk().Expect(Hex(StatusFailed("Failed to get error message")));
    // The second finds older credentials, which nothing can free.
    talk.Talk().Send(Hex("66 03 00000000 00000000 66 03 00000000 00000000"));
    talk.Talk().Expect(Hex(status_okay + status_okay));
    talk.End();
    EXPECT_EQ(recorder.Lines(), "ListHosts path=\"\" credentials=null listing=null\n"
                                "VADPVersion first=\"\" credentials=null\n"
                                "ListHosts path=\"\" credentials=null listing=null\n"
                                "CreateCredentials first=\"\" second=\"\" credentials=null\n"
                                "CreateCredentials first=\"\" second=\"\" credentials=null\n");
}

// What a function that returns one byte leaves in the rest of the register means nothing.
TEST(InventoryResult, CountsByItsLowByteAlone)
{
    InventoryTalk talk("low_byte");
    talk.CallTwiceAnswered("ListHosts", "SIGNATURE_VADPListHosts", "00",
                           u"Failed to get error message (Process_VADPListHosts)", "FFFFFFFF 00");
    talk.Call("ListMachines", "00", "00000000 00");
    talk.Talk().Send(Hex("66 25 00000000"));
    talk.Talk().Expect(Hex(StatusFailed("Failed to get error message")));
    talk.Talk().Send(Hex("66 27 00000000"));
    talk.Talk().Expect(Hex(no_log + "00000000"));
    talk.End();
}

TEST(InventoryFault, ANullVersionByCommandEndsTheRunWithoutAnAnswer)
{
    const Recorder recorder;
    InventoryTalk talk;
    talk.Talk().Send(Hex("66 7F"));
    talk.Talk().ExpectClosed();
    talk.Talk().End();
    EXPECT_EQ(recorder.Lines(), "GetLibraryVersion\n");
}

TEST(InventoryFault, AnItemWithoutANameEndsTheRunWithoutAnAnswer)
{
    const Recorder recorder("NextItem result=1 no_name=1\n");
    InventoryTalk talk;
    Section section = Announce(talk.Talk(), 4096);
    talk.Talk().Send(CallFrame(u"", "NextItem", "SIGNATURE_VADPNextItem"));
    talk.Talk().ExpectClosed();
    talk.Talk().End();
    EXPECT_EQ(recorder.Lines(), "NextItem listing=null name=\"\" number=0 value=0 extra=0\n");
}

TEST(InventoryText, Of1024BytesPassesAndOfOneMoreDoesNot)
{
    const Recorder recorder("ListMachines result=1\nGetErrorMessage text=none\n");
    InventoryTalk talk;
    talk.Talk().Send(Hex("66 27 00000400") + Repeat('x', 1024));
    talk.Talk().Expect(Hex(no_log + "00000000"));
    talk.Talk().Send(Hex("66 27 00000401"));
    talk.Talk().Expect(Hex(StatusFailed("none")));
    talk.End();
    EXPECT_EQ(recorder.Lines(), "ListMachines path=\"" + std::string(1024, 'x') +
                                    "\" credentials=null listing=null\n"
                                    "GetErrorMessage error=null\n"
                                    "FreeErrorInfo error=null\n");
}

} // namespace
} // namespace kessil::test
