#include "protocol/adapter_talk.h"
#include "rows/adapter_restore_rows.h"

namespace kessil::test {
namespace {

// A helper with the adapter, for several calls in a row. The script has a line for each call, with the function's name
// first.
struct RestoreScript
{
    std::vector<Step> before;
    std::string function;
    std::string script;
    std::string error_text;
};

using Lines = std::vector<std::string>;

TEST(RestoreByCommand, OfAWholeMachine)
{
    AdapterTalk talk(RestoreScript{{restore_credentials},
                                   "PrepareVMRestoreIncremental",
                                   "result=1 session=0x501\n"
                                   "SetOverrideValue result=1\n"
                                   "AddFolder result=1 cache=0x202\n"
                                   "OpenRestoreFileIncremental result=1 file=0x601\n"
                                   "WriteRestoreFileIncremental result=1\n"
                                   "WriteRestoreFileIncremental result=0 error=0x99\n"
                                   "WriteFileACL result=1\n"
                                   "CloseRestoreFile result=1\n"
                                   "RenameMachine result=1\n"
                                   "PowerOnVDR result=1\n"
                                   "EndVMRestore result=1\n",
                                   "disk is full"});
    talk.Command(32, Hex("00000001 76 00000002 00000003 73616E"));
    talk.Talk().Expect(Hex("FFFFFC19 00000000"));
    talk.Command(16, Hex("00000000 00000001 6B 00000001 76"));
    talk.Talk().Expect(Hex("FFFFFC19 00000000"));
    talk.Command(26, Hex("00000001 00000001 66"));
    talk.Talk().Expect(Hex("FFFFFC19 00000001"));
    talk.Command(40, Hex("00000000 00000001 64 00000003"));
    talk.Talk().Expect(Hex("FFFFFC19 00000000"));
    talk.Command(41, Hex("00000000 0000000100000000 00000002 AABB"));
    talk.Talk().Expect(Hex("FFFFFC19 00000001"));
    talk.Command(41, Hex("00000000 0000000100000002 00000001 CC"));
    talk.Talk().Expect(Hex("FFFFFC19 FFFFFFFF 0000000C 6469736B2069732066756C6C"));
    talk.Command(20, Hex("00000000 00000001 DD"));
    talk.Talk().Expect(Hex("FFFFFC19 00000001"));
    talk.Command(22, Hex("00000000"));
    talk.Talk().Expect(Hex("FFFFFC19 00000001"));
    talk.Command(43, Hex("00000000 00000000 00000001 6E"));
    talk.Talk().Expect(Hex("FFFFFC19 00000001"));
    talk.Command(34, Hex("00000000"));
    talk.Talk().Expect(Hex("FFFFFC19 00000001"));
    talk.Command(17, Hex("00000000 00000001"));
    talk.Talk().Expect(Hex("FFFFFC19 00000001"));
    EXPECT_EQ(
        talk.Seen(),
        Lines({"PrepareVMRestoreIncremental path=\"v\" credentials=0x101 opt_flags=2 transport_mode=\"san\" "
               "session=null",
               "SetOverrideValue session=0x501 key=\"k\" value=\"v\"",
               "AddFolder path=\"f\" credentials=0x101 cache=null",
               "OpenRestoreFileIncremental session=0x501 path=\"d\" third=3 file=null",
               "WriteRestoreFileIncremental file=0x601 data=AABB length=2 offset=4294967296",
               "WriteRestoreFileIncremental file=0x601 data=CC length=1 offset=4294967298",
               "GetErrorMessage error=0x99", "FreeErrorInfo error=0x99", "WriteFileACL file=0x601 data=DD length=1",
               "CloseRestoreFile file=0x601", "RenameMachine session=0x501 name=\"n\"", "PowerOnVDR session=0x501",
               "EndVMRestore session=0x501 flag=1"}));
    talk.Finish();
}

// These commands have no bare values: their arguments lie in the section, and frames come back.
TEST(RestoreByCommand, TakesACLInfosAndReconfigurationFromTheSectionAndAnswersInFrames)
{
    AdapterTalk talk(RestoreScript{{RestoreSession("0x501")},
                                   "CreateACLInfo",
                                   "result=1 aclinfo=0x700 log=hello level=7\n"
                                   "GetACLInfo result=1 listing=0x301\n"
                                   "ReconfigureMachine result=0 error=0x99\n"
                                   "NextItem result=1 name=a\n",
                                   "boom"});
    Section section = Announce(talk.Talk(), 64, u'5');
    const Bytes acl = Hex("00000002 00000000 AABB 6B00 7300");

    section.Put(0, acl);
    talk.Command(18, {});
    talk.Talk().Expect(Hex(restore_frame) + SuccessFrame());
    section.Expect(0, Hex("00000000 00"));

    section.Put(0, acl);
    talk.Command(18, {});
    talk.Talk().Expect(Hex(restore_frame) + SuccessFrame());
    section.Expect(0, Hex("FFFFFFFF 00"));

    section.Put(0, Hex("00000000"));
    talk.Command(25, {});
    talk.Talk().Expect(SuccessFrame());
    section.Expect(0, Hex("00000000 00"));

    section.Put(0, Hex("00000000 01"));
    talk.Command(48, {});
    talk.Talk().Expect(SuccessFrame());
    section.Expect(0, Hex("626F6F6D 00"));

    talk.CallWithSection("NextItem", "SIGNATURE_VADPNextItem", Hex("00000000") + Repeat(0, 60));
    talk.Talk().Expect(SuccessFrame());
    EXPECT_EQ(talk.Seen(), Lines({"CreateACLInfo length=2 data=AABB key=\"k\" second=\"s\" aclinfo=null",
                                  "CreateACLInfo length=2 data=AABB key=\"k\" second=\"s\" aclinfo=0x700",
                                  "GetACLInfo aclinfo=0x700 listing=null", "ReconfigureMachine session=0x501 flag=1",
                                  "GetErrorMessage error=0x99", "FreeErrorInfo error=0x99",
                                  "NextItem listing=0x301 name=\"\" number=0 value=0 extra=0"}));
    talk.Finish();
}

TEST(RestoreByCommand, RefusesAReconfigurationWithoutASectionByItsDoubledName)
{
    AdapterTalk talk(RestoreScript{{}, "ReconfigureMachine", "result=1", ""});
    talk.Command(48, {});
    talk.Talk().Expect(FailureFrame(u"Failed to serialise input (Process_VADPVADPReconfigureMachine)"));
    EXPECT_EQ(talk.Seen(), Lines());
    talk.Finish();
}

// More than a pipe takes at once.
TEST(RestoreByCommand, WritesALargeBlockWhole)
{
    constexpr std::size_t size = 300000;
    AdapterTalk talk(RestoreScript{{RestoreFile("0x600"), RestoreFile("0x601")}, "WriteRestoreFile", "result=1", ""});
    talk.Command(21, Hex("00000001 000493E0") + Repeat(0x5A, size));
    talk.Talk().Expect(Hex("FFFFFC19 00000001"));
    std::string digits;
    for (std::size_t at = 0; at < size; ++at)
        digits += "5A";
    const Lines seen = {"WriteRestoreFile file=0x601 data=" + digits + " length=300000"};
    EXPECT_TRUE(talk.Seen() == seen);
    talk.ForgetSeen();
    const Section &section = talk.CallWithSection("WriteRestoreFile", "SIGNATURE_VADPWriteRestoreFile",
                                                  Hex("00000001 000493E0") + Repeat(0x5A, size));
    talk.Talk().Expect(SuccessFrame());
    section.Expect(0, Hex("00"));
    EXPECT_TRUE(talk.Seen() == seen);
    talk.Finish();
}

TEST(RestoreByCommand, PassesOnALineThatAThreadOfTheAdaptersLogsInTheMiddleOfAWrite)
{
    AdapterTalk talk(RestoreScript{{RestoreFile("0x600")},
                                   "WriteRestoreFile",
                                   "result=1 thread_log=\\xE9\\x00x level=255\n"
                                   "WriteRestoreFile result=1 thread_log=line level=3",
                                   ""});
    talk.Command(21, Hex("00000000 00000001 AA"));
    talk.Talk().Expect(Hex("FFFFFF9D 00000001 E9 000000FF FFFFFC19 00000001"));
    talk.CallWithSection("WriteRestoreFile", "SIGNATURE_VADPWriteRestoreFile", Hex("00000000 00000001 AA"));
    talk.Talk().Expect(Hex("4D 0000000E 00000003 6C0069006E0065000000") + SuccessFrame());
    talk.Finish();
}

} // namespace
} // namespace kessil::test
