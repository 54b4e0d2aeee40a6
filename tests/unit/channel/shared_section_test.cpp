#include "channel/ipc_communication.h"
#include "support/heap_probe.h"
#include "unit/channel_fixture.h"

#include <new>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SectionTest : public ChannelTest
{
protected:
    // Reads on to the frame behind the parent's 'R'.
    bool Read()
    {
        char type = 0;
        unsigned char *data = nullptr;
        std::uint32_t size = 0;
        bool eof = false;
        return channel.GetNextRequest(type, data, size, eof, error);
    }

    void Announce(const Bytes &payload)
    {
        fake_pipe.Deliver(Frame('R', payload));
        fake_pipe.Deliver(Frame('z', {}));
    }

    // Grows the section with a parent that agrees.
    void Grow(std::uint32_t size)
    {
        fake_pipe.Deliver(SuccessFrame());
        ASSERT_TRUE(channel.ResizeSharedMem(size, error));
    }
};

// A section of the parent.

TEST_F(SectionTest, ParentsSectionIsOpenedAndMapped)
{
    fake_section.Add(u"first", Hex("01 02 03 04"));
    Announce(Wide(u"first") + Be64(4));
    ASSERT_TRUE(Read());
    EXPECT_THAT(call_log.calls, ElementsAre("OpenSection first 4", "MapOpenedSection 4", "WritePipe 5"));
    EXPECT_EQ(Section(4), Hex("01 02 03 04"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(error, u"");
}

TEST_F(SectionTest, OldSectionIsGoneBeforeTheNewOneIsOpened)
{
    GiveSection(u"first", Repeat(0, 8));
    fake_section.Add(u"second", 16);
    Announce(Wide(u"second") + Be64(16));
    ASSERT_TRUE(Read());
    EXPECT_THAT(call_log.calls, ElementsAre("UnmapSection 8", "CloseSection", "OpenSection second 16",
                                            "MapOpenedSection 16", "WritePipe 5"));
    EXPECT_THAT(Logged(), ElementsAre("debug commfunc: Closing handle m_hSharedMemory 0x5e00"));
}

TEST_F(SectionTest, ParentsSectionReplacesWithoutACopy)
{
    GiveSection(u"first", Repeat(7, 8));
    fake_section.Add(u"second", 8);
    Announce(Wide(u"second") + Be64(8));
    ASSERT_TRUE(Read());
    EXPECT_EQ(Section(8), Repeat(0, 8));
}

TEST_F(SectionTest, ParentsNamesStandAfterAllOfIt)
{
    GiveSection(u"first", Repeat(0, 8));
    GiveSection(u"second", Repeat(0, 8));
    channel.Close();
    EXPECT_TRUE(fake_section.Has(u"first"));
    EXPECT_TRUE(fake_section.Has(u"second"));
}

TEST_F(SectionTest, SizeIsTakenModuloTwoToTheThirtyTwo)
{
    fake_section.Add(u"first", 16);
    Announce(Wide(u"first") + Hex("00 00 00 07 00 00 00 10"));
    ASSERT_TRUE(Read());
    EXPECT_EQ(channel.SharedSize(), 16u);
    EXPECT_EQ(call_log.calls[0], "OpenSection first 16");
}

TEST_F(SectionTest, AnnouncedSizeOfZero)
{
    fake_section.Add(u"first", 16);
    Announce(Wide(u"first") + Be64(0));
    ASSERT_TRUE(Read());
    EXPECT_EQ(channel.SharedSize(), 0u);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(SectionTest, MalformedPayloadsAreRefusedAndTheOldSectionStays)
{
    const Bytes whole = Wide(u"ab") + Be64(8);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        SCOPED_TRACE(size);
        CIPCCommunication fresh;
        fake_pipe = FakePipe();
        fake_section = FakeSection();
        ASSERT_TRUE(fresh.Attach(u"pipe", error));
        error.clear();
        fake_pipe.Deliver(Frame('R', First(size, whole)));
        char type = 0;
        unsigned char *data = nullptr;
        std::uint32_t count = 0;
        bool eof = false;
        EXPECT_FALSE(fresh.GetNextRequestCond("f", type, data, count, eof, error));
        EXPECT_EQ(error, u"Failed to serialise data");
        EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise data"));
        EXPECT_TRUE(fake_pipe.is_open);
    }
    EXPECT_FALSE(HasFailure());
}

TEST_F(SectionTest, BytesBehindTheSizeAreIgnored)
{
    fake_section.Add(u"first", 8);
    Announce(Wide(u"first") + Be64(8) + Hex("01 02 03"));
    EXPECT_TRUE(Read());
    EXPECT_EQ(channel.SharedSize(), 8u);
}

TEST_F(SectionTest, SectionThatCantBeOpenedLeavesNoneAndThePipe)
{
    GiveSection(u"first", Repeat(0, 8));
    Announce(Wide(u"none") + Be64(8));
    EXPECT_FALSE(Read());
    EXPECT_EQ(error, u"text of 2\r\n");
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"text of 2\r\n"));
    EXPECT_EQ(channel.SharedView(), nullptr);
    EXPECT_EQ(fake_section.open_handles, 0u);
    EXPECT_TRUE(fake_pipe.is_open);
}

TEST_F(SectionTest, SectionThatCantBeMappedStaysOpenWithoutAView)
{
    fake_section.Add(u"first", 8);
    fake_section.map_code = 8;
    Announce(Wide(u"first") + Be64(8));
    EXPECT_FALSE(Read());
    EXPECT_EQ(error, u"text of 8\r\n");
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"text of 8\r\n"));
    EXPECT_EQ(channel.SharedView(), nullptr);
    EXPECT_EQ(fake_section.open_handles, 1u);
    EXPECT_TRUE(fake_pipe.is_open);
    Forget();
    channel.Close();
    EXPECT_THAT(call_log.calls, ElementsAre("CloseSection", "ClosePipe"));
}

// A section of this side.

TEST_F(SectionTest, FirstSectionOfThisSideIsCalledDotOne)
{
    fake_pipe.Deliver(SuccessFrame());
    ASSERT_TRUE(channel.ResizeSharedMem(6, error));
    EXPECT_THAT(call_log.calls,
                ElementsAre("CreateSection .1 6", "MapCreatedSection 6", "WritePipe 19", "RemoveSectionName .1"));
    EXPECT_EQ(fake_pipe.written, Hex("52 00 00 00 0E 2E 00 31 00 00 00 00 00 00 00 00 00 00 06"));
    EXPECT_EQ(Section(6), Repeat(0, 6));
    EXPECT_EQ(error, u"");
}

TEST_F(SectionTest, GrowthKeepsTheContentAndNeverMapsTwoSections)
{
    GiveSection(u"sec7", Hex("01 02 03 04"));
    Grow(8);
    EXPECT_THAT(call_log.calls, ElementsAre("UnmapSection 4", "CloseSection", "CreateSection sec0 8",
                                            "MapCreatedSection 8", "WritePipe 23", "RemoveSectionName sec0"));
    EXPECT_EQ(fake_pipe.written, Frame('R', Wide(u"sec0") + Hex("00 00 00 00 00 00 00 08")));
    EXPECT_EQ(Section(8), Hex("01 02 03 04 00 00 00 00"));
    EXPECT_THAT(Logged(), ElementsAre("debug commfunc: Closing handle m_hSharedMemory 0x5e00"));
}

TEST_F(SectionTest, NamesAlternate)
{
    GiveSection(u"sec7", Repeat(0, 4));
    Grow(5);
    Grow(6);
    Grow(7);
    Grow(8);
    EXPECT_EQ(fake_pipe.written,
              ResizeFrame(u"sec0", 5) + ResizeFrame(u"sec1", 6) + ResizeFrame(u"sec0", 7) + ResizeFrame(u"sec1", 8));
}

TEST_F(SectionTest, NamesOfTheFirstOwnSectionAlternateToo)
{
    Grow(5);
    Grow(6);
    Grow(7);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u".1", 5) + ResizeFrame(u".0", 6) + ResizeFrame(u".1", 7));
}

TEST_F(SectionTest, NameThatEndsInZeroBecomesOne)
{
    GiveSection(u"a0", Repeat(0, 4));
    Grow(5);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"a1", 5));
}

TEST_F(SectionTest, NameThatEndsInALetterBecomesZero)
{
    GiveSection(u"x", Repeat(0, 4));
    Grow(5);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"0", 5));
}

TEST_F(SectionTest, SectionWithoutAViewStillTogglesItsName)
{
    fake_section.Add(u"sec7", 8);
    fake_section.map_code = 8;
    fake_pipe.Deliver(ResizeFrame(u"sec7", 8));
    ASSERT_FALSE(Read());
    fake_section.map_code = 0;
    Forget();
    Grow(16);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"sec0", 16));
    EXPECT_EQ(call_log.calls[0], "CloseSection");
}

TEST_F(SectionTest, SectionThatCouldNotBeOpenedLeavesTheOldNameForDotOne)
{
    GiveSection(u"sec7", Repeat(0, 4));
    fake_pipe.Deliver(ResizeFrame(u"none", 8));
    ASSERT_FALSE(Read());
    Forget();
    Grow(16);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"sec7.1", 16));
}

TEST_F(SectionTest, ShrinkingCopiesOnlyWhatFits)
{
    GiveSection(u"sec0", Hex("01 02 03 04 05 06 07 08"));
    Grow(3);
    EXPECT_EQ(channel.SharedSize(), 3u);
    EXPECT_EQ(Section(3), Hex("01 02 03"));
}

TEST_F(SectionTest, AccessForUsersIsAskedForOnceSet)
{
    channel.AdmitUsers();
    Grow(4);
    EXPECT_EQ(call_log.calls[0], "CreateSection .1 4 admitting users");
}

TEST_F(SectionTest, ParentOpensTheSectionWhileItsNameStands)
{
    bool named = false;
    fake_pipe.Do([&named] { named = fake_section.Has(u".1"); });
    Grow(4);
    EXPECT_TRUE(named);
    EXPECT_FALSE(fake_section.Has(u".1"));
}

TEST_F(SectionTest, AnyFrameButAnErrorIsAgreement)
{
    fake_pipe.Deliver(Frame('Z', Hex("01")));
    EXPECT_TRUE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(error, u"");
}

TEST_F(SectionTest, RefusalReportsTheParentsTextAndTheNewSectionStays)
{
    GiveSection(u"sec0", Hex("01 02"));
    fake_pipe.Deliver(ErrorFrame(5, 6, u"no room"));
    EXPECT_FALSE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(error, u"no room");
    EXPECT_EQ(Section(4), Hex("01 02 00 00"));
    EXPECT_TRUE(fake_pipe.is_open);
    EXPECT_FALSE(fake_section.Has(u"sec1"));
}

TEST_F(SectionTest, MalformedRefusalIsReportedAsOne)
{
    fake_pipe.Deliver(Frame('E', Be32(5) + Be32(6)));
    EXPECT_FALSE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(error, u"Failed to serialise data");
    EXPECT_EQ(channel.SharedSize(), 4u);
}

TEST_F(SectionTest, EndOfTheStreamInTheWaitIsDisconnection)
{
    fake_pipe.DeliverNothing();
    EXPECT_FALSE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(error, u"Communication channel disconneded");
    EXPECT_EQ(Section(4), Repeat(0, 4));
    EXPECT_TRUE(fake_pipe.is_open);
    channel.Close();
    EXPECT_FALSE(fake_section.Has(u".1"));
}

TEST_F(SectionTest, FailedReadInTheWaitClosesAll)
{
    fake_pipe.FailRead(109);
    EXPECT_FALSE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(error, u"text of 109\r\n");
    EXPECT_EQ(channel.SharedView(), nullptr);
    EXPECT_FALSE(fake_section.Has(u".1"));
    EXPECT_EQ(fake_section.open_handles, 0u);
    EXPECT_THAT(Logged(), ElementsAre("error commfunc: ReadFile() returns with error",
                                      "debug commfunc: Closing handle m_hSharedMemory 0x5e00",
                                      "debug commfunc: Closing handle m_hNamedPipe 0x71",
                                      "error commfunc: Back (error) from ReadDataFromPipe() 0"));
}

TEST_F(SectionTest, FailedReadOfTheAnswersPayload)
{
    fake_pipe.Deliver(Hex("45 00 00 00 20"));
    fake_pipe.FailRead(109);
    EXPECT_FALSE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(Logged().back(), "error commfunc: Back (error) from ReadDataFromPipe() 1");
}

TEST_F(SectionTest, AnnouncementThatCantBeWrittenFails)
{
    fake_pipe.FailWrite(232);
    EXPECT_FALSE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(error, u"text of 232\r\n");
    EXPECT_EQ(fake_pipe.reads, 0u);
    EXPECT_EQ(channel.SharedSize(), 4u);
}

TEST_F(SectionTest, CreationThatFailsTakesTheChannelDown)
{
    GiveSection(u"sec0", Hex("01 02"));
    fake_section.create_code = 1450;
    EXPECT_FALSE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(error, u"text of 1450\r\n");
    EXPECT_FALSE(fake_pipe.is_open);
    EXPECT_EQ(channel.SharedView(), nullptr);
    EXPECT_THAT(call_log.calls, ElementsAre("UnmapSection 2", "CloseSection", "CreateSection sec1 4", "ClosePipe"));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

TEST_F(SectionTest, NameThatIsTakenIsAFailedCreationAndStays)
{
    fake_section.Add(u".1", 4);
    EXPECT_FALSE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(error, u"text of 183\r\n");
    EXPECT_FALSE(fake_pipe.is_open);
    EXPECT_TRUE(fake_section.Has(u".1"));
}

TEST_F(SectionTest, MappingThatFailsTakesTheChannelDown)
{
    fake_section.map_code = 8;
    EXPECT_FALSE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(error, u"text of 8\r\n");
    EXPECT_THAT(call_log.calls, ElementsAre("CreateSection .1 4", "MapCreatedSection 4", "RemoveSectionName .1",
                                            "CloseSection", "ClosePipe"));
    EXPECT_FALSE(fake_section.Has(u".1"));
}

TEST_F(SectionTest, CopyWithoutMemoryRaises)
{
    GiveSection(u"sec0", Repeat(1, 5000));
    const NoMemoryFrom limit(5000);
    EXPECT_THROW(static_cast<void>(channel.ResizeSharedMem(6000, error)), std::bad_alloc);
}

TEST_F(SectionTest, ParentsSectionInTheWaitTakesTheOwnOnesPlace)
{
    GiveSection(u"sec0", Hex("01 02"));
    fake_section.Add(u"parents", Hex("0A 0B 0C 0D 0E 0F"));
    fake_pipe.Deliver(ResizeFrame(u"parents", 6));
    fake_pipe.Deliver(SuccessFrame());
    ASSERT_TRUE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"sec1", 4) + SuccessFrame());
    EXPECT_EQ(Section(6), Hex("0A 0B 0C 0D 0E 0F"));
    EXPECT_EQ(channel.SharedSize(), 6u);
    EXPECT_FALSE(fake_section.Has(u"sec1"));
    EXPECT_TRUE(fake_section.Has(u"parents"));
    Forget();
    Grow(8);
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"parent0", 8));
}

TEST_F(SectionTest, ParentsMalformedSectionInTheWaitFails)
{
    fake_pipe.Deliver(Frame('R', Hex("41")));
    EXPECT_FALSE(channel.ResizeSharedMem(4, error));
    EXPECT_EQ(error, u"Failed to serialise data");
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u".1", 4) + FailureFrame(u"Failed to serialise data"));
}

TEST_F(SectionTest, CloseRemovesTheNameThatWasNeverAnswered)
{
    fake_pipe.DeliverNothing();
    ASSERT_FALSE(channel.ResizeSharedMem(4, error));
    Forget();
    channel.Close();
    EXPECT_THAT(call_log.calls, ElementsAre("UnmapSection 4", "RemoveSectionName .1", "CloseSection", "ClosePipe"));
}

} // namespace
} // namespace kessil::test
