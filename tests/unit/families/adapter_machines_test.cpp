#include "rows/adapter_machines_rows.h"
#include "unit/families/adapter_test.h"

#include <cstring>
#include <stdexcept>

namespace kessil::test {
namespace {

class MachinesCutTest : public AdapterTest, public ::testing::WithParamInterface<CommandRow>
{
protected:
    // The lines up to the value that each shows.
    static std::vector<std::string> LabelsOf(std::vector<std::string> lines)
    {
        for (std::string &line : lines)
            line = line.substr(0, line.find("=="));
        return lines;
    }
};

// The lines that show values are written whether or not the values came.
TEST_P(MachinesCutTest, LogsItsValuesAlsoWhenOneIsMissing)
{
    const CommandRow &row = GetParam();
    Bytes values;
    for (std::size_t value = 0; value < row.in.size(); ++value) {
        Begin();
        Take(row.before);
        Script(row.function, row.script);
        Script("GetErrorMessage", "text=" + row.error_text);
        CutCommand(row, values);
        EXPECT_EQ(LabelsOf(FamilyLog()), LabelsOf(row.logged)) << value;
        values += Hex(row.in[value].bytes);
    }
}

std::string NameOfCommand(const ::testing::TestParamInfo<CommandRow> &info)
{
    return info.param.function + "_" + std::to_string(info.index);
}

std::vector<CommandRow> CommandsWithValues()
{
    std::vector<CommandRow> rows = MachinesCommands();
    std::erase_if(rows, [](const CommandRow &row) { return row.in.empty(); });
    return rows;
}

INSTANTIATE_TEST_SUITE_P(Rows, MachinesCutTest, ::testing::ValuesIn(CommandsWithValues()), NameOfCommand);

// Sequences and what rows can't say.
class MachinesSequenceTest : public AdapterTest
{
protected:
    using FakesRig::Command;
    using FakesRig::Section;

    static std::string SignatureOf(const std::string &function) { return "SIGNATURE_VADP" + function; }

    // What the section holds is followed by EE.
    void Section(const std::string &function, const Bytes &in_list)
    {
        Forget();
        CallWithSection(function, SignatureOf(function), in_list + Repeat(0xEE, spare));
    }

    void Command(const std::string &function, const Bytes &values)
    {
        CallWithValues(function, SignatureOf(function), values);
    }

    // Credentials and a disk, as an earlier call left them.
    static void Open()
    {
        g_pCredentials = Object(0x701);
        g_pDisk = Object(0x601);
    }

    static void *Object(std::uintptr_t number) { return reinterpret_cast<void *>(number); }

    static Bytes ValueOf(const Value &value) { return Hex(value.bytes); }
};

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(MachinesSequenceTest, CloseDiskOfTheFirstGenerationDropsTheCredentialsAndLeavesTheDisk)
{
    Open();
    stand_in.script["CloseDisk"] = "result=1";
    Section("CloseDisk", {});
    EXPECT_EQ(g_pCredentials, nullptr);
    EXPECT_EQ(g_pDisk, Object(0x601));
    stand_in.script["GetHostCpus"] = "result=1";
    Section("GetHostCpus", Narrow("h"));
    // The credentials weren't freed.
    EXPECT_THAT(stand_in.lines,
                ElementsAre("CloseDisk disk=0x601", "GetHostCpus path=\"h\" credentials=null number=0"));
}

TEST_F(MachinesSequenceTest, CloseDiskOfTheFirstGenerationDropsTheCredentialsAfterAFailureToo)
{
    Open();
    stand_in.script["CloseDisk"] = "result=0 disk=0x602";
    Section("CloseDisk", {});
    EXPECT_EQ(g_pCredentials, nullptr);
    EXPECT_EQ(g_pDisk, Object(0x602));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(MachinesSequenceTest, CloseDiskOfTheFirstGenerationLeavesADiskThatTheAdapterCleared)
{
    Open();
    stand_in.script["CloseDisk"] = "result=1 disk=0";
    Section("CloseDisk", {});
    EXPECT_EQ(g_pDisk, nullptr);
}

TEST_F(MachinesSequenceTest, CloseDiskOfTheFirstGenerationKeepsTheCredentialsWhenItsResultsCantBeWritten)
{
    Open();
    stand_in.script["CloseDisk"] = "result=1";
    stand_in.on_call = [] { fake_pipe.Deliver(FailureFrame(u"no room")); };
    CallWithSection("CloseDisk", "SIGNATURE_VADPCloseDisk", {});
    EXPECT_EQ(g_pCredentials, Object(0x701));
    const Bytes refusal = FailureFrame(u"Failed to serialize output (Process_VADPCloseDisk)");
    ASSERT_GE(fake_pipe.written.size(), refusal.size());
    EXPECT_EQ(Last(refusal.size(), fake_pipe.written), refusal);
}

TEST_F(MachinesSequenceTest, CloseDiskOfTheSecondGenerationDropsTheDiskAndLeavesTheCredentials)
{
    Open();
    stand_in.script["CloseDisk"] = "result=1 disk=0x602";
    Command("CloseDisk", {});
    EXPECT_EQ(g_pDisk, nullptr);
    EXPECT_EQ(g_pCredentials, Object(0x701));
}

TEST_F(MachinesSequenceTest, CloseDiskOfTheSecondGenerationDropsTheDiskAfterAFailureToo)
{
    Open();
    stand_in.script["CloseDisk"] = "result=0 disk=0x602";
    Command("CloseDisk", {});
    EXPECT_EQ(g_pDisk, nullptr);
    EXPECT_EQ(g_pCredentials, Object(0x701));
}

TEST_F(MachinesSequenceTest, OpenDiskReplacesAnOpenDiskAndClosesNone)
{
    Open();
    stand_in.script["OpenDisk"] = "result=1 disk=0x602";
    Command("OpenDisk", ValueOf(Text("vm")) + ValueOf(Text("d")) + Be32(0));
    EXPECT_EQ(g_pDisk, Object(0x602));
    Section("OpenDisk", Narrow("vm") + Narrow("d") + Hex("0000"));
    EXPECT_EQ(g_pDisk, Object(0x602));
    EXPECT_THAT(stand_in.lines,
                ElementsAre("OpenDisk vmPath=\"vm\" diskPath=\"d\" flag=0 credentials=0x701 disk=0x601",
                            "OpenDisk vmPath=\"vm\" diskPath=\"d\" flag=0 credentials=0x701 disk=0x602"));
}

TEST_F(MachinesSequenceTest, OpenDiskKeepsWhatTheAdapterStoredAlthoughItFailed)
{
    stand_in.script["OpenDisk"] = "result=0 disk=0x602";
    Command("OpenDisk", ValueOf(Text("vm")) + ValueOf(Text("d")) + Be32(0));
    EXPECT_EQ(g_pDisk, Object(0x602));
}

TEST_F(MachinesSequenceTest, GetVMConfigOfTheFirstGenerationReusesTheLowestFreeListing)
{
    for (std::uintptr_t number = 0x301; number <= 0x304; ++number)
        storeListing(Object(number));
    g_vListing.Clear(3);
    g_vListing.Clear(1);
    stand_in.script["GetVMConfig"] = "result=1 listing=0x311";
    Section("GetVMConfig", Narrow("vm"));
    EXPECT_EQ(FakesRig::Section(4), Be32(1));
    EXPECT_EQ(g_vListing[1], Object(0x311));
    stand_in.script["GetSnapshotConfig"] = "result=1 listing=0x312";
    Section("GetSnapshotConfig", Narrow("vm") + Be32(0));
    EXPECT_EQ(FakesRig::Section(4), Be32(3));
    EXPECT_EQ(g_vListing[3], Object(0x312));
}

TEST_F(MachinesSequenceTest, AFailedGetVMConfigStoresNoListing)
{
    stand_in.script["GetVMConfig"] = "result=0 listing=0x311";
    Section("GetVMConfig", Narrow("vm"));
    EXPECT_EQ(g_vListing.Size(), 0u);
}

TEST_F(MachinesSequenceTest, GetVMConfigOfTheSecondGenerationStoresNoListing)
{
    stand_in.script["GetVMConfig"] = "result=1 items=a:1:2:3";
    Command("GetVMConfig", ValueOf(Text("vm")));
    EXPECT_EQ(g_vListing.Size(), 0u);
}

TEST_F(MachinesSequenceTest, SetVMConfigTakesABlockOfMoreThan1024BytesAndEndsIt)
{
    stand_in.script["SetVMConfig"] = "result=1";
    Command("SetVMConfig", Be32(0) + Be32(4096) + Repeat('x', 4096));
    EXPECT_THAT(stand_in.lines, ElementsAre("SetVMConfig session=null config=\"" + std::string(4096, 'x') + "\""));
}

TEST_F(MachinesSequenceTest, SetVMConfigUsesNothingOfABlockThatCameInPart)
{
    stand_in.script["SetVMConfig"] = "result=1";
    Command("SetVMConfig", Be32(0) + Be32(10) + Repeat('x', 4));
    EXPECT_THAT(stand_in.lines, ElementsAre("SetVMConfig session=null config=\"\""));
}

TEST_F(MachinesSequenceTest, ReadSectorsSendsWhatTheAdapterRead)
{
    Open();
    stand_in.script["ReadSectors"] = "result=1 data=A0A1A2A3";
    Command("ReadSectors", Be64(1) + Be64(2) + Be32(3) + Hex("111213"));
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFC19 00000400 A0A1A2A3") + Repeat(0, 1020));
}

TEST_F(MachinesSequenceTest, ReadSectorsOfNoSectorsSendsALengthOfZero)
{
    Open();
    stand_in.script["ReadSectors"] = "result=1";
    Command("ReadSectors", Be64(7) + Be64(0) + Be32(3) + Hex("111213"));
    // A block of no bytes may lie anywhere.
    EXPECT_THAT(stand_in.lines, ElementsAre(::testing::StartsWith("ReadSectors disk=0x601 start=7 count=0 data=")));
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFC19 00000000"));
}

TEST_F(MachinesSequenceTest, ReadSectorsComputesItsLengthIn64BitsAndDropsTheRest)
{
    Open();
    stand_in.script["ReadSectors"] = "result=1 peek=512";
    Command("ReadSectors", Be64(0) + Hex("0080000000000001") + Be32(0));
    EXPECT_THAT(stand_in.lines,
                ElementsAre("ReadSectors disk=0x601 start=0 count=36028797018963969 data=" + machines::Zeros(512)));
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFC19 00000200") + Repeat(0, 512));
}

TEST_F(MachinesSequenceTest, ReadSectorsOfANegativeCountSaysSoAndThenRaises)
{
    Open();
    stand_in.script["ReadSectors"] = "result=1";
    EXPECT_THROW(Command("ReadSectors", Be64(0) + Be64(0xFFFFFFFFFFFFFFFF) + Be32(0)), std::length_error);
    EXPECT_EQ(fake_pipe.written, Hex("00000001"));
    EXPECT_THAT(stand_in.lines, IsEmpty());
}

TEST_F(MachinesSequenceTest, ReadSectorsOfTheLargestCountRaisesWithoutAWord)
{
    Open();
    stand_in.script["ReadSectors"] = "result=1";
    EXPECT_THROW(Command("ReadSectors", Be64(0) + Hex("007FFFFFFFFFFFFF") + Be32(0)), std::length_error);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(stand_in.lines, IsEmpty());
}

TEST_F(MachinesSequenceTest, ReadSectorsOfTheFirstGenerationLeavesTheDataWhereTheAdapterWroteIt)
{
    Open();
    // A block 8 bytes longer than the data keeps the error text off it.
    stand_in.script["ReadSectors"] = "result=1 data=A0A1A2A3A4A5A6A7";
    Section("ReadSectors", Be32(1) + Be32(2) + Be32(16) + Repeat(0xDD, 4) + Repeat(0xCC, 16));
    EXPECT_EQ(FakesRig::Section(33), Be32(16) + Be32(2) + Be32(16) + Repeat(0xDD, 4) + Hex("A0A1A2A3A4A5A6A7 00") +
                                         Repeat(0xCC, 7) + Bytes{0xEE});
}

TEST_F(MachinesSequenceTest, ReadSectorsRefusesABlockThatIsntWholeInTheSection)
{
    Open();
    CallWithSection("ReadSectors", "SIGNATURE_VADPReadSectors",
                    Be32(1) + Be32(2) + Be32(16) + Repeat(0xDD, 4) + Repeat(0xCC, 15));
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialize input (Process_VADPReadSectors)"));
    EXPECT_THAT(stand_in.lines, IsEmpty());
}

TEST_F(MachinesSequenceTest, SectorsOfTheFirstGenerationKnowNoNegativeNumbers)
{
    Open();
    stand_in.script["WriteSectors"] = "result=1";
    Section("WriteSectors", Be32(0xFFFFFFFF) + Be32(0x80000000) + Be32(0) + Repeat(0xDD, 4));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_THAT(stand_in.lines, ElementsAre("WriteSectors disk=0x601 start=4294967295 count=2147483648 data="));
}

TEST_F(MachinesSequenceTest, CreateVMReadsItsPairsAndSortsThemByKey)
{
    stand_in.script["CreateVM"] = "result=1";
    Bytes values = Be64(3);
    for (const char *const text : {"1", "2", "3", "os", "x", "cpus", "4", "", "empty"})
        values = values + ValueOf(Text(text));
    Command("CreateVM", values);
    EXPECT_THAT(stand_in.lines, ElementsAre("CreateVM first=\"1\" second=\"2\" third=\"3\" credentials=null "
                                            "pairs=\"=empty;cpus=4;os=x;\""));
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFC19 00000001"));
    EXPECT_TRUE(fake_pipe.IsReadOut());
}

TEST_F(MachinesSequenceTest, CreateVMKeepsTheFirstValueOfAKey)
{
    stand_in.script["CreateVM"] = "result=1";
    Bytes values = Be64(3);
    for (const char *const text : {"1", "2", "3", "k", "first", "l", "other", "k", "second"})
        values = values + ValueOf(Text(text));
    Command("CreateVM", values);
    EXPECT_THAT(stand_in.lines, ElementsAre("CreateVM first=\"1\" second=\"2\" third=\"3\" credentials=null "
                                            "pairs=\"k=first;l=other;\""));
    EXPECT_TRUE(fake_pipe.IsReadOut());
}

TEST_F(MachinesSequenceTest, CreateVMGoesOnWithEmptyTextsWhenPairsDontCome)
{
    stand_in.script["CreateVM"] = "result=1";
    fake_pipe.ends_with_nothing = true;
    Bytes values = Be64(1000);
    for (const char *const text : {"1", "2", "3", "k"})
        values = values + ValueOf(Text(text));
    Command("CreateVM", values);
    // All that has arrived is taken in one read; each text that hasn't takes another.
    EXPECT_EQ(fake_pipe.reads, 1u + 1999);
    EXPECT_THAT(stand_in.lines, ElementsAre("CreateVM first=\"1\" second=\"2\" third=\"3\" credentials=null "
                                            "pairs=\"=;k=;\""));
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFC19 00000001"));
}

TEST_F(MachinesSequenceTest, CreateVMReadsItsPairsAfterAFailedReadToo)
{
    stand_in.script["CreateVM"] = "result=1";
    fake_pipe.ends_with_nothing = true;
    // The first text is refused for its length alone, and what follows is read as a pair.
    Command("CreateVM", Be64(1) + Be32(1025) + ValueOf(Text("k")) + ValueOf(Text("v")));
    EXPECT_THAT(stand_in.lines, ElementsAre("CreateVM first=\"\" second=\"\" third=\"\" credentials=null "
                                            "pairs=\"k=v;\""));
}

TEST_F(MachinesSequenceTest, CreateVMOfTheFirstGenerationPassesNoPairs)
{
    stand_in.script["CreateVM"] = "result=1";
    const Bytes in_list = Narrow("1") + Narrow("2") + Narrow("3") + Be32(1) + Narrow("k") + Narrow("v");
    Section("CreateVM", in_list);
    EXPECT_EQ(stand_in.lines.front(), "CreateVM first=\"1\" second=\"2\" third=\"3\" credentials=null pairs=\"\"");
}

TEST_F(MachinesSequenceTest, CreateVMOfTheFirstGenerationLeavesLogLinesToTheNextAnswer)
{
    stand_in.script["CreateVM"] = "result=1 log=a level=1";
    Section("CreateVM", Narrow("1") + Narrow("2") + Narrow("3") + Be32(0));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    stand_in.script["GetHostCpus"] = "result=1";
    Section("GetHostCpus", Narrow("h"));
    EXPECT_EQ(fake_pipe.written, Hex("4D 00000008 00000001 61000000") + SuccessFrame());
}

TEST_F(MachinesSequenceTest, ReconfigVMLogsItsNameAndDoesNothingElseInEitherGeneration)
{
    queueAdapterLogLine("waits", 1);
    Section("ReconfigVM", Narrow("x"));
    EXPECT_EQ(FakesRig::Section(2), Narrow("x"));
    EXPECT_THAT(FamilyLog(), ElementsAre("debug: Process_VADPReconfigVM()"));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    Forget();
    Command("ReconfigVM", Be32(1));
    EXPECT_THAT(FamilyLog(), ElementsAre("debug: ProcessAlt_VADPReconfigVM()"));
    EXPECT_EQ(fake_pipe.reads, 0u);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(stand_in.lines, IsEmpty());
    sendAdapterLogAlt(channel);
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFF9D 00000005") + Plain("waits") + Hex("00000001 FFFFFC19"));
}

// Four calls ask for an error text whatever the result was, and without an adapter's texts each says so.
class MachinesAlwaysAskTest : public MachinesSequenceTest, public ::testing::WithParamInterface<std::string>
{
protected:
    static Bytes InList() { return Narrow("a") + Narrow("b") + Narrow("c") + Be32(0); }
};

TEST_P(MachinesAlwaysAskTest, AsksForAnErrorTextAfterASuccess)
{
    stand_in.script[GetParam()] = "result=1";
    stand_in.script["GetErrorMessage"] = "text=all well";
    Section(GetParam(), InList());
    ASSERT_EQ(stand_in.lines.size(), 3u);
    EXPECT_EQ(stand_in.lines[1], "GetErrorMessage error=null");
    EXPECT_EQ(stand_in.lines[2], "FreeErrorInfo error=null");
    EXPECT_EQ(FakesRig::Section(9), Narrow("all well"));
}

TEST_P(MachinesAlwaysAskTest, SendsARefusalAheadOfASuccessWithoutErrorTexts)
{
    stand_in.script[GetParam()] = "result=1 log=x level=1";
    g_pfnGetErrorMessage = nullptr;
    Section(GetParam(), InList());
    const Bytes line = GetParam() == "CreateVM" ? Bytes() : Hex("4D 00000008 00000001 78000000");
    EXPECT_EQ(fake_pipe.written, FailureFrame(AdapterError(GetParam())) + line + SuccessFrame());
    EXPECT_EQ(FakesRig::Section(1), Bytes{0});
}

INSTANTIATE_TEST_SUITE_P(Rows, MachinesAlwaysAskTest,
                         ::testing::Values("PowerOnVaioVM", "PowerOffVaioVM", "AttachPolicy", "CreateVM"),
                         [](const auto &each) { return each.param; });

// Those four of the second generation, and the rest, ask after a failure alone.
TEST_F(MachinesSequenceTest, TheSecondGenerationAsksForNoErrorTextAfterASuccess)
{
    for (const char *const function : {"PowerOnVaioVM", "PowerOffVaioVM", "DeleteVaioVM", "AttachPolicy"}) {
        stand_in.script[function] = "result=1";
        stand_in.lines.clear();
        Command(function, ValueOf(Text("a")) + ValueOf(Text("b")));
        EXPECT_EQ(stand_in.lines.size(), 1u) << function;
    }
}

// The error text is taken once the log is out: what the adapter logs meanwhile waits for the next answer.
TEST_F(MachinesSequenceTest, ALineLoggedWithTheErrorTextComesWithTheNextAnswer)
{
    stand_in.script["PowerOnVaioVM"] = "result=0";
    stand_in.script["GetErrorMessage"] = "log=late level=2 text=boom";
    Command("PowerOnVaioVM", ValueOf(Text("vm")));
    EXPECT_EQ(fake_pipe.written, Hex(StatusFailed("boom")));
    stand_in.script["PowerOnVaioVM"] = "result=1";
    Forget();
    Command("PowerOnVaioVM", ValueOf(Text("vm")));
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFF9D 00000004") + Plain("late") + Hex("00000002") + Hex(status_okay));
}

TEST_F(MachinesSequenceTest, ALineLoggedWithTheErrorTextComesWithTheSameAnswerInTheFirstGeneration)
{
    stand_in.script["PowerOnVaioVM"] = "result=0";
    stand_in.script["GetErrorMessage"] = "log=x level=2 text=boom";
    Section("PowerOnVaioVM", Narrow("vm"));
    EXPECT_EQ(fake_pipe.written, Hex("4D 00000008 00000002 78000000") + SuccessFrame());
}

// An adapter's bool is one byte; the rest of the register is whatever was in it. What stands in for the adapter here
// returns the length of its first argument.
class MachinesResultTest : public MachinesSequenceTest
{
protected:
    static constexpr std::size_t failing = 256;
    static constexpr std::size_t succeeding = 257;

    static void *Length() { return reinterpret_cast<void *>(static_cast<std::size_t (*)(const char *)>(std::strlen)); }

    static std::string Path(std::size_t length) { return std::string(length, 'x'); }
};

TEST_F(MachinesResultTest, HasOneByteThatCountsInTheFirstGeneration)
{
    for (const std::string function : {"GetVMConfig", "GetSnapshotConfig", "OpenDisk", "GetHostCpus"}) {
        const Handler handler = Handlers(SignatureOf(function)).first;
        GiveSection(u"a", Narrow(Path(succeeding)) + Repeat(0, 64));
        handler(channel, Length());
        EXPECT_THAT(stand_in.lines, IsEmpty()) << function;
        Forget();
        GiveSection(u"b", Narrow(Path(failing)) + Repeat(0, 64));
        handler(channel, Length());
        EXPECT_EQ(stand_in.lines, ErrorTaken("null")) << function;
        Forget();
        stand_in.lines.clear();
    }
}

TEST_F(MachinesResultTest, HasOneByteThatCountsInTheSecondGeneration)
{
    for (const std::string function : {"GetVMConfig", "GetSnapshotConfig", "OpenDisk", "PowerOnVaioVM",
                                       "PowerOffVaioVM", "DeleteVaioVM", "CloneVM", "AttachPolicy"}) {
        const Handler handler = Handlers(SignatureOf(function)).second;
        fake_pipe.ends_with_nothing = true;
        fake_pipe.Deliver(Be32(succeeding) + Repeat('x', succeeding));
        handler(channel, Length());
        EXPECT_THAT(stand_in.lines, IsEmpty()) << function;
        Forget();
        fake_pipe.Deliver(Be32(failing) + Repeat('x', failing));
        handler(channel, Length());
        EXPECT_EQ(stand_in.lines, ErrorTaken("null")) << function;
        Forget();
        stand_in.lines.clear();
    }
}

TEST_F(MachinesSequenceTest, OneGenerationLacksSomeOfTheCalls)
{
    EXPECT_EQ(Handlers("SIGNATURE_VADPGetHostCpus").second, nullptr);
    EXPECT_EQ(Handlers("SIGNATURE_VADPDeleteVaioVM").first, nullptr);
    EXPECT_EQ(Handlers("SIGNATURE_VADPCloneVM").first, nullptr);
}

} // namespace
} // namespace kessil::test
