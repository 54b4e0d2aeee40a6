#include "protocol/conversation.h"
#include "protocol/recorder.h"
#include "support/set_variable.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kessil::test {
namespace {

namespace fs = std::filesystem;

const Bytes no_library = Hex("45 0000003C 00000000 00000000"
                             "4600 6100 6900 6C00 6500 6400 2000 7400 6F00 2000 6600 6900 6E00 6400 2000"
                             "6C00 6900 6200 7200 6100 7200 7900 2E00 2E00 2E00 0000");
const Bytes no_function = ErrorFrame(0, 0, u"Failed to get function address...");
const Bytes no_signature = Hex("45 0000002C FFFFFFFF FFFFFFFF"
                               "4900 6E00 7600 6100 6C00 6900 6400 2000 7300 6900 6700 6E00 6100 7400 7500 7200 6500"
                               "0000");

// The answer to a load of a file that isn't there.
Bytes NotLoaded(const WideString &name)
{
    return ErrorFrame(0, on_windows ? 126 : 2,
                      SystemText(name + u": cannot open shared object file: No such file or directory", 126));
}

TEST(Load, IsAnsweredAndLogged)
{
    Conversation talk(0);
    const WideString plain = TargetLibrary("plain");
    talk.Send(LoadFrame(plain));
    talk.Expect(Hex("53 00000000"));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_NE(talk.Helper().PlainLog().find(
                  "kessil debug: Working with LoadLib:  load_lib_cmd==" + platform::ToUtf8(plain) + "\n"),
              std::string::npos);
}

TEST(Load, OfNoSuchFileIsRefusedAndTheRunGoesOn)
{
    Conversation talk(0, {});
    const Section section = Announce(talk, 16);
    const WideString absent = TargetLibrary("absent");
    talk.Send(LoadFrame(absent));
    talk.Expect(NotLoaded(absent));
    talk.Send(LoadFrame(u"no_such_library_anywhere.so"));
    talk.Expect(NotLoaded(u"no_such_library_anywhere.so"));
    talk.Send(CallFrame(absent, "Answer", "SIGNATURE_GetBackupType"));
    talk.Expect(no_library);
    talk.Load(TargetLibrary("plain"));
    talk.Call("GetBackupType");
    section.Expect(0, Hex("00000007"));
    talk.Send(OrderlyStop());
}

// Code and text for these are the system's.
TEST(Load, OfWhatIsNoLibraryIsRefusedAndTheRunGoesOn)
{
    Conversation talk(0, {});
    for (const WideString &name :
         {WideString(), NativePath(KESSIL_TEST_PROGRAM "/x"), NativePath(__FILE__), NativePath("/")}) {
        talk.Send(LoadFrame(name));
        const Bytes answer = talk.ReadFrame();
        EXPECT_TRUE(answer.at(0) == 'E' && First(4, Behind(5, answer)) == Be32(0) &&
                    First(4, Behind(9, answer)) != Be32(0) && Behind(answer.size() - 2, answer) == Hex("0000"))
            << platform::ToUtf8(name) << ": " << Show(answer);
    }
    talk.Send(OrderlyStop());
}

TEST(Load, AlongThePathTakesABareName)
{
    const char separator = on_windows ? ';' : ':';
    const char *const old = std::getenv("PATH");
    SetVariable("PATH", platform::ToUtf8(NativePath(KESSIL_TEST_LIBRARIES)) + separator + old);
    Conversation talk(0, {});
    const Section section = Announce(talk, 16);
    const WideString name = on_windows ? u"plain.dll" : u"plain.so";
    talk.Load(name);
    talk.Send(CallFrame(name, "Answer", "SIGNATURE_GetBackupType"));
    talk.Expect(SuccessFrame());
    section.Expect(0, Hex("0000002A"));
    talk.Send(OrderlyStop());
}

TEST(Load, OfANameBeyondAsciiAndAsLongAsAPathMayBe)
{
    const TestDirectory directory;
    // U+00E9, U+4E2D, and U+1F600, which takes two units.
    const fs::path file = directory.Path() / u"\u00E9\u4E2D\U0001F600.so";
    fs::copy_file(fs::path(TargetLibrary("plain")), file);
    Conversation talk(0);
    const Section section = Announce(talk, 16);
    talk.Load(file.u16string());
    talk.Send(CallFrame(file.u16string(), "Answer", "SIGNATURE_GetBackupType"));
    talk.Expect(SuccessFrame());
    section.Expect(0, Hex("0000002A"));
    const WideString too_long = u"/" + WideString(40000, u'x');
    talk.Send(LoadFrame(too_long));
    EXPECT_EQ(talk.ReadFrame().at(0), 'E');
    talk.Send(OrderlyStop());
    talk.End();
    // The log is in UTF-8.
    EXPECT_NE(talk.Helper().Log().find("\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80.so\n"), std::string::npos);
}

TEST(Reload, ReleasesTheOldModuleFirst)
{
    const Recorder recorder;
    Conversation talk(0);
    const Section section = Announce(talk, 16);
    const WideString library = TargetLibrary("records_lifetime");
    talk.Load(library);
    talk.Call("GetBackupType");
    talk.Load(library);
    talk.Call("GetBackupType");
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(recorder.Lines(), "records_lifetime attach\nrecords_lifetime call\nrecords_lifetime detach\n"
                                "records_lifetime attach\nrecords_lifetime call\nrecords_lifetime detach\n");
}

TEST(Reload, OfAnotherVersionRunsItsCode)
{
    const Recorder recorder;
    const TestDirectory directory;
    const fs::path file = directory.Path() / "library.so";
    fs::copy_file(fs::path(TargetLibrary("inline_code_old")), file);
    Conversation talk(0);
    const Section section = Announce(talk, 16);
    talk.Load(file.u16string());
    talk.Call("GetBackupType");
    section.Expect(0, Hex("00000001"));
    fs::rename(file, directory.Path() / "aside.so");
    fs::copy_file(fs::path(TargetLibrary("inline_code_new")), file);
    talk.Load(file.u16string());
    talk.Call("GetBackupType");
    section.Expect(0, Hex("00000002"));
    talk.Send(OrderlyStop());
    // The libraries are released ahead of the end of the pipe.
    talk.ExpectClosed();
    EXPECT_EQ(recorder.Lines(), "old attach\nold call\nold detach\nnew attach\nnew call\nnew detach\n");
}

TEST(Reload, ThatFailsLeavesNothing)
{
    const Recorder recorder;
    const TestDirectory directory;
    const fs::path file = directory.Path() / "library.so";
    fs::copy_file(fs::path(TargetLibrary("records_lifetime")), file);
    Conversation talk(0, {});
    talk.Load(file.u16string());
    const fs::path aside = directory.Path() / "aside.so";
    fs::rename(file, aside);
    talk.Send(LoadFrame(file.u16string()));
    talk.Expect(NotLoaded(file.u16string()));
    EXPECT_EQ(recorder.Lines(), "records_lifetime attach\nrecords_lifetime detach\n");
    talk.Send(CallFrame(file.u16string(), "Answer", "SIGNATURE_GetBackupType"));
    talk.Expect(no_library);
    talk.Send(CallFrame(u"", "Answer", "SIGNATURE_GetBackupType"));
    talk.Expect(no_library);
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), "LibraryCaller error: Failed to find library...\n"
                                        "LibraryCaller error: Failed to find library...\n");
}

TEST(Reload, UnderANameThatDiffersInCaseIsAnotherEntry)
{
    Conversation talk(0, {});
    const Section section = Announce(talk, 16);
    const WideString plain = TargetLibrary("plain");
    WideString twice = plain;
    twice.insert(twice.rfind(on_windows ? u'\\' : u'/'), on_windows ? u"\\." : u"/.");
    talk.Load(plain);
    talk.Load(twice);
    talk.Send(CallFrame(twice, "Answer", "SIGNATURE_GetBackupType"));
    talk.Expect(SuccessFrame());
    WideString capital = plain;
    capital[capital.rfind(u'p')] = u'P';
    talk.Send(CallFrame(capital, "Answer", "SIGNATURE_GetBackupType"));
    talk.Expect(no_library);
    talk.Send(OrderlyStop());
}

TEST(Release, FollowsTheNames)
{
    const Recorder recorder;
    Conversation talk(0);
    for (const char *name : {"records_lifetime_c", "records_lifetime", "records_lifetime_b"})
        talk.Load(TargetLibrary(name));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(recorder.Lines(), "records_lifetime_c attach\nrecords_lifetime attach\nrecords_lifetime_b attach\n"
                                "records_lifetime detach\nrecords_lifetime_b detach\nrecords_lifetime_c detach\n");
}

TEST(Release, HappensHoweverTheRunEnds)
{
    const auto lines = [](std::uint32_t exit_code, const auto &leave) {
        const Recorder recorder;
        Conversation talk(exit_code);
        talk.Load(TargetLibrary("records_lifetime"));
        leave(talk);
        talk.End();
        return recorder.Lines();
    };
    const std::string whole = "records_lifetime attach\nrecords_lifetime detach\n";
    EXPECT_EQ(lines(0, [](Conversation &talk) { talk.EndStream(); }), whole);
    EXPECT_EQ(lines(1, [](Conversation &talk) { talk.Close(); }), whole);
    EXPECT_EQ(lines(1, [](Conversation &talk) { talk.Send(Hex("5A 00000000")); }), whole);
    EXPECT_EQ(lines(1, [](Conversation &talk) { talk.Send(Hex("46 00000000")); }), whole);
    EXPECT_EQ(lines(1, [](Conversation &talk) { talk.Send(Hex("4C FFFFFFFF")); }), whole);
}

TEST(Call, BeforeAnyLoad)
{
    Conversation talk(0, {});
    for (const char16_t *name : {u"", u"plain"}) {
        talk.Send(CallFrame(name, "Answer", "SIGNATURE_GetBackupType"));
        talk.Expect(no_library);
    }
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), "LibraryCaller error: Failed to find library...\n"
                                        "LibraryCaller error: Failed to find library...\n");
}

TEST(Call, WithoutALibraryNameGoesToTheLowest)
{
    const std::vector<std::vector<const char *>> orders = {{"first_answer", "second_answer"},
                                                           {"second_answer", "first_answer"}};
    for (const std::vector<const char *> &order : orders) {
        Conversation talk(0);
        const Section section = Announce(talk, 16);
        for (const char *name : order)
            talk.Load(TargetLibrary(name));
        talk.Send(CallFrame(u"", "GetBackupType", "SIGNATURE_GetBackupType"));
        talk.Expect(SuccessFrame());
        section.Expect(0, Hex("00000001"));
        talk.Send(CallFrame(TargetLibrary("second_answer"), "GetBackupType", "SIGNATURE_GetBackupType"));
        talk.Expect(SuccessFrame());
        section.Expect(0, Hex("00000002"));
        talk.Send(OrderlyStop());
    }
}

TEST(Call, OfAnExportThatIsNotThere)
{
    Conversation talk(0, {});
    talk.Load(TargetLibrary("plain"));
    for (const char *function : {"", "answer", "Answer ", "Answe", "GetBackupTypes"}) {
        talk.Send(CallFrame(u"", function, "SIGNATURE_GetBackupType"));
        talk.Expect(no_function);
    }
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), "");
}

TEST(Call, WithBothFunctionAndSignatureUnknownReportsTheFunction)
{
    Conversation talk(0, {});
    talk.Load(TargetLibrary("plain"));
    talk.Send(CallFrame(u"", "NoSuchExport", "NoSuchSignature"));
    talk.Expect(no_function);
    talk.Send(CallFrame(u"elsewhere", "NoSuchExport", "NoSuchSignature"));
    talk.Expect(no_library);
    talk.Send(OrderlyStop());
}

TEST(Call, WithASignatureUnknownCallsNothingAndReadsNothing)
{
    const Recorder recorder;
    Conversation talk(0, {});
    Section section = Announce(talk, 16);
    section.Put(0, Repeat(0x55, 16));
    talk.Load(TargetLibrary("vorn_recorder"));
    std::string log;
    for (const char *signature : {"", "SIGNATURE_GETBACKUPTYPE", "signature_GetBackupType", "SIGNATURE_GetBackupType ",
                                  "SIGNATURE_GetBackupTyp", "GetBackupType", "SIGNATURE_VornCreatesession"}) {
        talk.Send(CallFrame(u"", "GetBackupType", signature));
        talk.Expect(no_signature);
        log += std::string("LibraryCaller error: Invalid signature:") + signature + "\n";
    }
    section.Expect(0, Repeat(0x55, 16));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), log);
    EXPECT_EQ(recorder.Lines(), "");
}

TEST(Call, WithASignatureOfTheSecondGenerationAlone)
{
    Conversation talk(0, {});
    talk.Load(TargetLibrary("plain"));
    std::string log;
    for (const char *signature : {"SIGNATURE_VADPDeleteVaioVM", "SIGNATURE_VADPCloneVM"}) {
        talk.Send(CallFrame(u"", "Answer", signature));
        talk.Expect(no_signature);
        log += std::string("LibraryCaller error: Invalid signature:") + signature + "\n";
    }
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog(), log);
}

TEST(Call, OfAnyExportUnderAnySignature)
{
    Conversation talk(0, {});
    const Section section = Announce(talk, 16);
    talk.Load(TargetLibrary("plain"));
    talk.Send(CallFrame(u"", "Answer", "SIGNATURE_GetLibApiVersion"));
    talk.Expect(SuccessFrame());
    section.Expect(0, Hex("FFFFFFFF"));
    talk.Send(CallFrame(u"", "GetLibApiVersion", "SIGNATURE_GetBackupType"));
    talk.Expect(SuccessFrame());
    section.Expect(0, Hex("00000002"));
    talk.Send(OrderlyStop());
}

} // namespace
} // namespace kessil::test
