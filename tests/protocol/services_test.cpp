#include "protocol/conversation.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kessil::test {
namespace {

namespace fs = std::filesystem;

const WideString library_name = on_windows ? u"kessil_on_the_path.dll" : u"kessil_on_the_path.so";

WideString MessageFile()
{
    const WideString library = TargetLibrary("messages");
    return on_windows ? library : library.substr(0, library.rfind(u'.')) + u".cat";
}

Bytes Message(std::uint32_t number, const WideString &text)
{
    return ErrorFrame(0xFFFFFFFF, number, text);
}

/// A directory with a library of tests/targets under the name that all of these tests search for.
class LibraryDirectory
{
public:
    explicit LibraryDirectory(const std::string &target)
    {
        fs::copy_file(fs::u8path(platform::ToUtf8(TargetLibrary(target))), m_directory.Path() / fs::path(library_name));
    }

    WideString Path() const { return NativePath(m_directory.Path().string()); }

private:
    TestDirectory m_directory;
};

/// What the library of that name answers.
void ExpectAnswer(Conversation &talk, const Section &section, std::uint32_t answer, Place place = Place::Here())
{
    talk.Load(library_name, place);
    talk.Send(CallFrame(library_name, "GetBackupType", "SIGNATURE_GetBackupType"), place);
    talk.Expect(SuccessFrame(), place);
    section.Expect(0, Be32(answer), place);
}

} // namespace

TEST(Path, DecidesWhichLibraryALaterLoadFinds)
{
    const LibraryDirectory first("first_answer");
    const LibraryDirectory second("second_answer");
    Conversation talk(0);
    const Section section = Announce(talk, 16);
    talk.Send(LoadFrame(library_name));
    talk.ReadFrame();

    talk.Send(PathFrame(first.Path()));
    talk.Expect(SuccessFrame());
    ExpectAnswer(talk, section, 1);
    talk.Send(PathFrame(second.Path()));
    talk.Expect(SuccessFrame());
    ExpectAnswer(talk, section, 2);
    talk.Send(PathFrame(first.Path()));
    talk.Expect(SuccessFrame());
    ExpectAnswer(talk, section, 1);
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_NE(talk.Helper().PlainLog().find("kessil debug: Working with AddPath\n"), std::string::npos);
}

TEST(Path, ListIsSearchedInItsOrder)
{
    const LibraryDirectory first("first_answer");
    const LibraryDirectory second("second_answer");
    Conversation talk(0);
    const Section section = Announce(talk, 16);
    const WideString separator = on_windows ? u";" : u":";
    talk.Send(PathFrame(second.Path() + separator + first.Path()));
    talk.Expect(SuccessFrame());
    ExpectAnswer(talk, section, 2);
    talk.Send(OrderlyStop());
}

TEST(Path, EmptyDirectoryIsASuccess)
{
    Conversation talk(0);
    talk.Send(PathFrame(u""));
    talk.Expect(SuccessFrame());
    talk.Load(TargetLibrary("plain"));
    talk.Send(OrderlyStop());
}

TEST(Path, NewPartStandsBeforeTheOldWithASeparator)
{
    const WideString old_path = [] {
        Conversation talk(0);
        Section section = Announce(talk, report_size);
        talk.Load(TargetLibrary("reports_process"));
        WideString path = Report(talk, section, 0);
        talk.Send(OrderlyStop());
        return path;
    }();
    const WideString separator = on_windows ? u";" : u":";
    Conversation talk(0);
    Section section = Announce(talk, report_size);
    talk.Send(PathFrame(u"C:\\a"));
    talk.Expect(SuccessFrame());
    talk.Send(PathFrame(u"C:\\b" + separator + u"C:\\c"));
    talk.Expect(SuccessFrame());
    talk.Send(PathFrame(u""));
    talk.Expect(SuccessFrame());
    talk.Load(TargetLibrary("reports_process"));
    EXPECT_EQ(Report(talk, section, 0),
              separator + u"C:\\b" + separator + u"C:\\c" + separator + u"C:\\a" + separator + old_path);
    talk.Send(OrderlyStop());
}

TEST(Message, IsAlwaysAnError)
{
    Conversation talk(0);
    talk.Send(ErrorTextFrame(1, MessageFile()));
    talk.Expect(Message(1, on_windows ? u"Tape %1 is missing in drive %2.\r\n" : u"Tape %1 is missing in drive %2.\n"));
    talk.Send(ErrorTextFrame(1234, MessageFile()));
    talk.Expect(Message(1234, on_windows ? u"Kein Zugriff f\u00FCr \u20AC.\r\n" : u"Kein Zugriff f\u00FCr \u20AC.\n"));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().PlainLog().find("ERROR"), std::string::npos);
    EXPECT_NE(talk.Helper().PlainLog().find("kessil debug: Working with ReadErrDLL\n"), std::string::npos);
}

TEST(Message, NumberThatTheFileLacksIsTakenForACodeOfTheSystem)
{
    Conversation talk(0);
    talk.Send(ErrorTextFrame(5, MessageFile()));
    talk.Expect(Message(5, SystemText(u"Input/output error", 5) + u" (" + MessageFile() + u")"));
    talk.Send(OrderlyStop());
}

TEST(Message, OfAFileThatCanNotBeLoadedHasTheTextOfThat)
{
    Conversation talk(0);
    const WideString absent = TargetLibrary("absent");
    talk.Send(ErrorTextFrame(1, absent));
    talk.Expect(Message(1, SystemText(u"No such file or directory", 126) + u" (" + absent + u")"));
    talk.Send(OrderlyStop());
}

TEST(Message, FileIsNotKept)
{
    TestDirectory directory;
    const fs::path copy = directory.Path() / (on_windows ? "copy.dll" : "copy.cat");
    fs::copy_file(fs::u8path(platform::ToUtf8(MessageFile())), copy);
    Conversation talk(0);
    talk.Send(ErrorTextFrame(1, NativePath(copy.string())));
    talk.ReadFrame();
    EXPECT_TRUE(fs::remove(copy)) << "Windows refuses it while the file is loaded";
    talk.Send(ErrorTextFrame(1, NativePath(copy.string())));
    talk.Expect(Message(1, SystemText(u"No such file or directory", 126) + u" (" + NativePath(copy.string()) + u")"));
    talk.Send(OrderlyStop());
}

} // namespace kessil::test
