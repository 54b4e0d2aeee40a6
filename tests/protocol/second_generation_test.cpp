#include "protocol/conversation.h"
#include "protocol/recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace kessil::test {
namespace {

namespace fs = std::filesystem;

// What 'l' is answered with, and what a call of the helper's own is.
const Bytes loaded = Hex("00000001");
const Bytes refused = Hex("FFFFFFFF");

// Commands: a call without arguments or results, and one that only the first generation can make.
const Bytes exit_disk_library = Hex("66 18");
const Bytes read_block_signature = Hex("66 43");

// What an answer without results consists of: no line of the adapter's, and the end of its lines, -999.
const Bytes end_of_lines = Hex("FFFFFC19");

// Each unit of the name as one byte.
std::string Narrowed(const WideString &name)
{
    return {name.begin(), name.end()};
}

void LoadAlt(Conversation &talk, const WideString &name, Place place = Place::Here())
{
    talk.Send(LoadAltFrame(Narrowed(name)), place);
    talk.Expect(loaded, place);
}

void LoadAlt(Conversation &talk, const char *library, Place place = Place::Here())
{
    LoadAlt(talk, TargetLibrary(library), place);
}

std::string LoadLine(const std::string &name)
{
    return "kessil debug: Working Alt with LoadLib:  load_lib_cmd==" + name + "\n";
}

const std::string no_library = "LibraryCaller error: Failed to find library...\n";
const std::string no_function = "LibraryCaller error: func_ptr==NULL\n";
const std::string no_signature = "LibraryCaller error: Invalid signature\n";

TEST(LoadAlt, IsAnsweredWithABareOneAndLogged)
{
    Conversation talk(0);
    const WideString plain = TargetLibrary("plain");
    talk.Send(LoadAltFrame(Narrowed(plain)));
    talk.Expect(Hex("00000001"));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_NE(talk.Helper().PlainLog().find(LoadLine(platform::ToUtf8(plain))), std::string::npos);
}

TEST(LoadAlt, ThatFailsIsAnsweredWithABareMinusOneAndTheReasonIsInTheLog)
{
    Conversation talk(0, {});
    const WideString absent = TargetLibrary("absent");
    talk.Send(LoadAltFrame(Narrowed(absent)));
    talk.Expect(Hex("FFFFFFFF"));
    talk.Send(OrderlyStop());
    talk.End();
    const WideString reason = SystemText(absent + u": cannot open shared object file: No such file or directory", 126);
    std::string narrow = "LibraryCaller error: Load library failure:  " + platform::ToUtf8(reason) + "\n";
    std::erase(narrow, '\r');
    EXPECT_EQ(talk.Helper().PlainLog(), narrow);
}

TEST(LoadAlt, OfWhatIsNoLibraryIsRefusedAndTheRunGoesOn)
{
    Conversation talk(0, {});
    for (const WideString &name : {WideString(), NativePath(__FILE__), NativePath("/"), WideString(4000, u'x')}) {
        talk.Send(LoadAltFrame(Narrowed(name)));
        talk.Expect(refused);
    }
    LoadAlt(talk, "plain");
    talk.Send(OrderlyStop());
}

TEST(LoadAlt, MakesAUnitOfEachByte)
{
    const TestDirectory directory;
    // U+00E9 in one byte, which is no UTF-8.
    const fs::path file = directory.Path() / u"\u00E9.so";
    fs::copy_file(fs::path(TargetLibrary("plain")), file);
    Conversation talk(0);
    LoadAlt(talk, file.u16string());
    talk.Send(read_block_signature);
    talk.Expect(refused);
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_NE(talk.Helper().Log().find("\xE9.so\n"), std::string::npos);
}

TEST(LoadAlt, EndsTheNameAtAZeroByte)
{
    Conversation talk(0);
    const WideString plain = TargetLibrary("plain");
    LoadAlt(talk, plain + WideString(u"\0more", 5));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_NE(talk.Helper().PlainLog().find(LoadLine(platform::ToUtf8(plain))), std::string::npos);
}

TEST(LoadAlt, OfTheSameNameReleasesTheOldModuleFirst)
{
    const Recorder recorder;
    Conversation talk(0);
    LoadAlt(talk, "records_lifetime");
    LoadAlt(talk, "records_lifetime");
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(recorder.Lines(), "records_lifetime attach\nrecords_lifetime detach\n"
                                "records_lifetime attach\nrecords_lifetime detach\n");
}

TEST(Command, BeforeAnyLoad)
{
    Conversation talk(0, {});
    talk.Send(exit_disk_library);
    talk.Expect(Hex("FFFFFFFF"));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), no_library);
}

TEST(Command, OfAnExportThatIsNotThere)
{
    Conversation talk(0, {});
    LoadAlt(talk, "first_answer");
    talk.Send(exit_disk_library);
    talk.Expect(Hex("FFFFFFFF"));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), no_function);
}

// The command is known and the export is there, but this generation has no such signature.
TEST(Command, ReadBlockSignatureIsRefusedAndCallsNothing)
{
    const Recorder recorder;
    Conversation talk(0, {});
    LoadAlt(talk, "records_lifetime");
    talk.Send(read_block_signature);
    talk.Expect(Hex("FFFFFFFF"));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), no_signature);
    EXPECT_EQ(recorder.Lines(), "records_lifetime attach\nrecords_lifetime detach\n");
}

TEST(Command, CallsTheLibrary)
{
    const Recorder recorder;
    Conversation talk(0, {});
    LoadAlt(talk, "records_lifetime");
    talk.Send(exit_disk_library + exit_disk_library);
    talk.Expect(end_of_lines + end_of_lines);
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), "");
    EXPECT_EQ(recorder.Lines(), "records_lifetime attach\nrecords_lifetime call\nrecords_lifetime call\n"
                                "records_lifetime detach\n");
}

TEST(Command, WithoutAMeaningLeavesTheNextOneToBeServed)
{
    Conversation talk(0, {});
    LoadAlt(talk, "records_lifetime");
    talk.Send(Hex("66 32") + exit_disk_library);
    talk.Expect(end_of_lines);
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), "");
}

TEST(Command, ByteByByte)
{
    Conversation talk(0, {});
    talk.SendEachByte(LoadAltFrame(Narrowed(TargetLibrary("records_lifetime"))));
    talk.Expect(loaded);
    talk.SendEachByte(exit_disk_library);
    talk.Expect(end_of_lines);
    talk.SendEachByte(OrderlyStop());
}

TEST(Command, GoesToTheLowestNameWhicheverWasLoadedLast)
{
    const std::vector<std::vector<const char *>> orders = {
        {"records_lifetime", "records_lifetime_b", "records_lifetime_c"},
        {"records_lifetime_c", "records_lifetime_b", "records_lifetime"}};
    for (const std::vector<const char *> &order : orders) {
        const Recorder recorder;
        Conversation talk(0, {});
        for (const char *name : order)
            LoadAlt(talk, name);
        talk.Send(exit_disk_library);
        talk.Expect(end_of_lines);
        EXPECT_TRUE(recorder.Lines().ends_with("attach\nrecords_lifetime call\n")) << recorder.Lines();
        talk.Send(OrderlyStop());
    }
}

TEST(Generations, DontSeeEachOthersLibraries)
{
    Conversation talk(0, {});
    const Section section = Announce(talk, 16);
    const Bytes missing = ErrorFrame(0, 0, u"Failed to find library...");
    talk.Load(TargetLibrary("plain"));
    talk.Send(read_block_signature);
    talk.Expect(refused);
    LoadAlt(talk, "first_answer");
    talk.Send(CallFrame(TargetLibrary("first_answer"), "GetBackupType", "SIGNATURE_GetBackupType"));
    talk.Expect(missing);
    talk.Send(read_block_signature);
    talk.Expect(refused);
    talk.Call("GetBackupType");
    section.Expect(0, Hex("00000007"));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), no_library + no_library + no_function);
}

TEST(Generations, ReleaseTheSecondBeforeTheFirst)
{
    const Recorder recorder;
    Conversation talk(0);
    talk.Load(TargetLibrary("records_lifetime"));
    LoadAlt(talk, "records_lifetime_c");
    LoadAlt(talk, "records_lifetime_b");
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(recorder.Lines(), "records_lifetime attach\nrecords_lifetime_c attach\nrecords_lifetime_b attach\n"
                                "records_lifetime_b detach\nrecords_lifetime_c detach\nrecords_lifetime detach\n");
}

// A library that goes wrong in a command: no answer, the pipe closes, the exit code is 0, and the libraries of the
// first generation are released too.
class MisbehavingInACommand : public testing::TestWithParam<const char *>
{};

TEST_P(MisbehavingInACommand, EndsTheRunInOrder)
{
    const Recorder recorder;
    Conversation talk(0, {});
    talk.Load(TargetLibrary("records_lifetime_b"));
    talk.Load(TargetLibrary("records_lifetime"));
    LoadAlt(talk, GetParam());
    talk.Send(exit_disk_library + exit_disk_library);
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().Log(), "");
    EXPECT_EQ(recorder.Lines(), "records_lifetime_b attach\nrecords_lifetime attach\n"
                                "records_lifetime detach\nrecords_lifetime_b detach\n");
}

INSTANTIATE_TEST_SUITE_P(Libraries, MisbehavingInACommand,
                         testing::Values("throws_own", "throws_own_static", "throws_bad_alloc", "throws_foreign",
                                         "null_write", "null_call", "divides_by_zero", "illegal_instruction",
                                         "overflows_stack"),
                         [](const auto &each) { return std::string(each.param); });

} // namespace
} // namespace kessil::test
