#include "protocol/adapter_talk.h"
#include "rows/adapter_machines_rows.h"

namespace kessil::test {
namespace {

// Steps taken before, and a script of whole lines for what follows.
AdapterRow Scripted(const std::vector<Step> &before, const std::string &lines)
{
    AdapterRow row;
    row.before = before;
    const std::size_t blank = lines.find(' ');
    row.function = lines.substr(0, blank);
    row.script = lines.substr(blank + 1);
    return row;
}

Bytes Values(const std::vector<Value> &values)
{
    Bytes bytes;
    for (const Value &value : values)
        bytes += Hex(value.bytes);
    return bytes;
}

// Bytes that show a mistaken offset.
Bytes Pattern(std::size_t size)
{
    Bytes bytes;
    std::uint32_t state = 2463534242;
    for (std::size_t at = 0; at < size; ++at) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        bytes.push_back(static_cast<unsigned char>(state >> 24));
    }
    return bytes;
}

std::string Digits(const Bytes &bytes)
{
    std::string digits = Show(bytes);
    std::erase(digits, ' ');
    return digits;
}

constexpr std::size_t mebibyte = 1024 * 1024;
constexpr std::uint32_t mebibyte_of_sectors = mebibyte / 512;

const char *const read_sectors = "SIGNATURE_VADPReadSectors";
const char *const write_sectors = "SIGNATURE_VADPWriteSectors";

TEST(MachinesCommandTogether, TakesItsValuesByteByByte)
{
    AdapterTalk talk(Scripted({machines::credentials, machines::disk}, "OpenDisk result=1 disk=0x601\n"
                                                                       "OpenDisk result=1"));
    talk.Talk().SendEachByte(Hex("66 37") + Values({Text("dc/vm"), Text("disk 1"), Number("00000001")}));
    talk.Talk().Expect(Hex(status_okay));
    EXPECT_EQ(talk.Seen(), std::vector<std::string>{
                               "OpenDisk vmPath=\"dc/vm\" diskPath=\"disk 1\" flag=1 credentials=0x701 disk=0x601"});
    talk.Finish();
}

TEST(MachinesCommandTogether, TakesATextOf1024BytesAndRefusesOneMore)
{
    AdapterTalk talk(Scripted({}, "PowerOnVaioVM result=1"));
    talk.Command(62, Be32(1024) + Repeat('x', 1024));
    talk.Talk().Expect(Hex(status_okay));
    // Of the longer text nothing but the length is taken.
    talk.Command(62, Be32(1025));
    talk.Talk().Expect(Hex(status_okay));
    EXPECT_EQ(talk.Seen(),
              (std::vector<std::string>{"PowerOnVaioVM path=\"" + std::string(1024, 'x') + "\" credentials=null",
                                        "PowerOnVaioVM path=\"\" credentials=null"}));
    talk.Finish();
}

TEST(MachinesSectors, OneMebibyteIsWrittenInTheFirstGeneration)
{
    const Bytes data = Pattern(mebibyte);
    AdapterTalk talk(Scripted({machines::disk}, "WriteSectors result=1 peek=1048576"));
    talk.CallWithSection("WriteSectors", write_sectors,
                         Be32(5) + Be32(mebibyte_of_sectors) + Be32(mebibyte) + Repeat(0, 4) + data);
    talk.Talk().Expect(SuccessFrame());
    EXPECT_TRUE(talk.Seen() ==
                std::vector<std::string>{"WriteSectors disk=0x601 start=5 count=2048 data=" + Digits(data)});
    talk.Finish();
}

TEST(MachinesSectors, OneMebibyteIsWrittenInTheSecondGeneration)
{
    const Bytes data = Pattern(mebibyte);
    AdapterTalk talk(Scripted({machines::disk}, "WriteSectors result=1 peek=1048576"));
    talk.Command(58, Be64(5) + Be64(mebibyte_of_sectors) + Be32(mebibyte) + data);
    talk.Talk().Expect(Hex(status_okay));
    EXPECT_TRUE(talk.Seen() ==
                std::vector<std::string>{"WriteSectors disk=0x601 start=5 count=2048 data=" + Digits(data)});
    talk.Finish();
}

// The parent asks for a block of 8 bytes more than the sectors have: the error text lies in the last of them.
TEST(MachinesSectors, OneMebibyteIsReadInTheFirstGeneration)
{
    constexpr std::uint32_t block = mebibyte + 8;
    const Bytes data = Pattern(mebibyte);
    AdapterTalk talk(Scripted({machines::disk}, "ReadSectors result=1 data=" + Digits(data)));
    const Section &section =
        talk.CallWithSection("ReadSectors", read_sectors,
                             Be32(5) + Be32(mebibyte_of_sectors) + Be32(block) + Repeat(0xDD, 4) + Repeat(0xCC, block));
    talk.Talk().Expect(SuccessFrame());
    section.Expect(0, Be32(block) + Be32(mebibyte_of_sectors) + Be32(block) + Repeat(0xDD, 4) + data + Repeat(0, 1) +
                          Repeat(0xCC, 7));
    EXPECT_EQ(talk.Seen(), std::vector<std::string>{"ReadSectors disk=0x601 start=5 count=2048 data="});
    talk.Finish();
}

TEST(MachinesSectors, OneMebibyteIsReadInTheSecondGeneration)
{
    const Bytes data = Pattern(mebibyte);
    AdapterTalk talk(Scripted({machines::disk}, "ReadSectors result=1 data=" + Digits(data)));
    talk.Command(57, Be64(5) + Be64(mebibyte_of_sectors) + Be32(0));
    talk.Talk().Expect(Hex(no_log) + Be32(mebibyte) + data);
    EXPECT_EQ(talk.Seen(), std::vector<std::string>{"ReadSectors disk=0x601 start=5 count=2048 data="});
    talk.Finish();
}

TEST(MachinesSectors, ReadingLessThanNoneEndsTheRunAfterAWord)
{
    AdapterTalk talk(Scripted({machines::disk}, "ReadSectors result=1"));
    talk.Command(57, Be64(0) + Be64(0xFFFFFFFFFFFFFFFF) + Be32(0));
    talk.Talk().Expect(Hex("00000001"));
    talk.Talk().ExpectClosed();
    talk.Talk().End();
    EXPECT_EQ(talk.Seen(), std::vector<std::string>());
}

TEST(MachinesSectors, WritingLessThanNoneGoesOnAfterAWord)
{
    AdapterTalk talk(Scripted({machines::disk}, "WriteSectors result=1"));
    talk.Command(58, Be64(0) + Be64(0xFFFFFFFFFFFFFFFF) + Be32(0));
    talk.Talk().Expect(Hex("00000001") + Hex(status_okay));
    EXPECT_EQ(talk.Seen(),
              std::vector<std::string>{"WriteSectors disk=0x601 start=0 count=18446744073709551615 data=null"});
    talk.Finish();
}

TEST(MachinesDisk, OfTheFirstGenerationTakesTheCredentialsWithItWhenItIsClosed)
{
    AdapterTalk talk(Scripted({machines::credentials, machines::disk}, "CloseDisk result=1\nPowerOnVaioVM result=1"));
    talk.CallWithSection("CloseDisk", "SIGNATURE_VADPCloseDisk", Repeat(0xEE, 16));
    talk.Talk().Expect(SuccessFrame());
    talk.Command(62, Values({Text("vm")}));
    talk.Talk().Expect(Hex(status_okay));
    talk.CallWithSection("CloseDisk", "SIGNATURE_VADPCloseDisk", Repeat(0xEE, 16));
    talk.Talk().Expect(SuccessFrame());
    EXPECT_EQ(talk.Seen(),
              (std::vector<std::string>{"CloseDisk disk=0x601", "PowerOnVaioVM path=\"vm\" credentials=null",
                                        "CloseDisk disk=0x601"}));
    talk.Finish();
}

TEST(MachinesDisk, OfTheSecondGenerationIsForgottenWhenItIsClosedAndTheCredentialsStay)
{
    AdapterTalk talk(Scripted({machines::credentials, machines::disk}, "CloseDisk result=1\nPowerOnVaioVM result=1"));
    talk.Command(56, {});
    talk.Talk().Expect(Hex(status_okay));
    talk.Command(62, Values({Text("vm")}));
    talk.Talk().Expect(Hex(status_okay));
    talk.Command(56, {});
    talk.Talk().Expect(Hex(status_okay));
    EXPECT_EQ(talk.Seen(),
              (std::vector<std::string>{"CloseDisk disk=0x601", "PowerOnVaioVM path=\"vm\" credentials=0x701",
                                        "CloseDisk disk=null"}));
    talk.Finish();
}

TEST(MachinesCreateVM, PassesThePairsOfTheSecondGeneration)
{
    AdapterTalk talk(Scripted({machines::credentials}, "CreateVM result=1"));
    talk.Command(59, Be64(3) + Values({Text("1"), Text("2"), Text("3"), Text("os"), Text("x"), Text("cpus"), Text("4"),
                                       Text("os"), Text("y")}));
    talk.Talk().Expect(Hex(status_okay));
    EXPECT_EQ(talk.Seen(), std::vector<std::string>{"CreateVM first=\"1\" second=\"2\" third=\"3\" credentials=0x701 "
                                                    "pairs=\"cpus=4;os=x;\""});
    talk.Finish();
}

TEST(MachinesCreateVM, OfTheFirstGenerationLeavesItsLogToTheNextAnswer)
{
    AdapterTalk talk(Scripted({}, "CreateVM result=1 log=late level=9\nGetHostCpus result=1"));
    talk.CallWithSection("CreateVM", "SIGNATURE_VADPCreateVM",
                         Narrow("1") + Narrow("2") + Narrow("3") + Be32(1) + Narrow("k") + Narrow("v"));
    talk.Talk().Expect(SuccessFrame());
    talk.CallWithSection("GetHostCpus", "SIGNATURE_VADPGetHostCpus", Narrow("host") + Repeat(0, 16));
    talk.Talk().Expect(Hex("4D 0000000E 00000009 6C00610074006500 0000") + SuccessFrame());
    talk.Finish();
}

TEST(MachinesReconfigVM, IsNotAnsweredInEitherGeneration)
{
    AdapterTalk talk(Scripted({}, "PowerOffVaioVM result=1"));
    talk.CallWithSection("ReconfigVM", "SIGNATURE_VADPReconfigVM", Repeat(0xEE, 16));
    talk.Command(60, {});
    talk.Command(63, Values({Text("vm")}));
    talk.Talk().Expect(Hex(status_okay));
    EXPECT_EQ(talk.Seen(), std::vector<std::string>{"PowerOffVaioVM path=\"vm\" credentials=null"});
    talk.Finish();
}

TEST(MachinesSignature, OfOneGenerationIsRefusedByTheOther)
{
    AdapterTalk talk(Scripted({}, "DeleteVaioVM result=1"));
    for (const std::string function : {"DeleteVaioVM", "CloneVM"}) {
        talk.CallWithSection(function, "SIGNATURE_VADP" + function, Repeat(0, 16));
        talk.Talk().Expect(FailureFrame(u"Invalid signature"));
    }
    EXPECT_EQ(talk.Seen(), std::vector<std::string>());
    talk.Finish();
}

} // namespace
} // namespace kessil::test
