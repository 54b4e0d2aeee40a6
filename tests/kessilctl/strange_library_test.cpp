#include "tests/kessilctl/scripted_library.h"

#include <nlohmann/json.hpp>

namespace kessil::test {
namespace {

using Lines = std::vector<std::string>;
using Tree = std::map<std::string, std::string>;

class StrangeLibraryTest : public ScriptedLibrary
{
protected:
    Outcome BackUpScripted() { return RunKessilctl("backup", "vorn_recorder", {"--to", backup.string(), "--json"}); }
};

TEST_F(StrangeLibraryTest, IsCalledInOrderWithItsOwnHandles)
{
    Script(OneFile("name") + "VornReadFile out=3 fill=616263\nVornReadFile out=0\n");
    EXPECT_EQ(BackUpScripted().exit_code, 0);
    EXPECT_EQ(ReadFile(backup / "files" / "name"), "abc");
    EXPECT_EQ(Recorded("VornOpenDir"), Lines{"VornOpenDir session=0x51 dir=0xd1 path=\"\""});
    EXPECT_EQ(Recorded("VornCloseDir"), Lines{"VornCloseDir session=0x51 dir=0xd1"});
    EXPECT_EQ(Recorded("VornOpenFile"), Lines{"VornOpenFile session=0x51 file=0xf1 path=\"name\" mode=1"});
    EXPECT_EQ(Recorded("VornReadFile").size(), 2u);
    EXPECT_EQ(Recorded("VornCloseFile"), Lines{"VornCloseFile session=0x51 file=0xf1"});
    EXPECT_EQ(Recorded("VornCloseSession"), Lines{"VornCloseSession session=0x51"});
}

TEST_F(StrangeLibraryTest, OfAnotherVersionIsNotUsed)
{
    Script("GetLibApiVersion result=1\n");
    const Outcome outcome = BackUpScripted();
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_NE(outcome.err.find("version 2"), std::string::npos) << outcome.err;
}

TEST_F(StrangeLibraryTest, MayFailInTheMiddleOfAFile)
{
    Script(OneFile("name") + "VornReadFile out=3 fill=616263\nVornReadFile result=77 out=0\n"
                             "VornGetErrorText text=the tape has torn\n");
    const Outcome outcome = BackUpScripted();
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_NE(outcome.err.find("kessilctl: name: the tape has torn (code 77)\n"), std::string::npos) << outcome.err;
    const auto result = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(result["files"], 0);
    EXPECT_EQ(result["bytes"], 0);
    ASSERT_EQ(result["failures"].size(), 1u);
    EXPECT_EQ(result["failures"][0]["file"], "name");
    EXPECT_EQ(result["failures"][0]["text"], "the tape has torn (code 77)");
    EXPECT_EQ(ReadTree(backup), (Tree{{"MANIFEST.sha256", ""}, {"files", "/"}}));
    EXPECT_EQ(Recorded("VornGetErrorText"), Lines{"VornGetErrorText session=0x51 object=0xf1 code=77"});
    EXPECT_EQ(Recorded("VornCloseFile").size(), 1u);
}

TEST_F(StrangeLibraryTest, MayHaveNoTextForItsFailure)
{
    Script(OneFile("name") + "VornOpenFile result=5\n");
    EXPECT_NE(BackUpScripted().err.find("kessilctl: name: no text (code 5)\n"), std::string::npos);
    EXPECT_EQ(Recorded("VornCloseFile").size(), 1u);
}

TEST_F(StrangeLibraryTest, CanNotLeadOutOfTheBackup)
{
    const std::string handles = "VornCreateSession out=0x51\nVornCreateDir out=0xD1\nVornCreateFile out=0xF1\n";
    Script(handles + ItemLine(1, "../evil", 3) + ItemLine(2, "..", 0) + ItemLine(1, "/evil", 3) + ItemLine(2, "", 0) +
           "VornGetNextDirItem result=1\nVornReadFile out=3 fill=616263\nVornReadFile out=0\n");
    const Outcome outcome = BackUpScripted();
    EXPECT_EQ(outcome.exit_code, 7);
    EXPECT_EQ(nlohmann::json::parse(outcome.out)["unusable"].size(), 4u);
    EXPECT_EQ(ReadTree(backup), (Tree{{"MANIFEST.sha256", ""}, {"files", "/"}}));
    EXPECT_FALSE(std::filesystem::exists(base / "evil"));
}

TEST_F(StrangeLibraryTest, MayListANameTwice)
{
    const std::string handles = "VornCreateSession out=0x51\nVornCreateDir out=0xD1\nVornCreateFile out=0xF1\n";
    Script(handles + ItemLine(1, "name", 3) + ItemLine(1, "name", 3) +
           "VornGetNextDirItem result=1\nVornReadFile out=3 fill=616263\nVornReadFile out=0\n"
           "VornReadFile out=3 fill=646566\nVornReadFile out=0\n");
    const Outcome outcome = BackUpScripted();
    EXPECT_EQ(outcome.exit_code, 7);
    EXPECT_EQ(ReadFile(backup / "files" / "name"), "abc");
}

TEST_F(StrangeLibraryTest, MayFailForOneItemOfADirectory)
{
    const std::string handles = "VornCreateSession out=0x51\nVornCreateDir out=0xD1\n";
    std::string failing = ItemLine(4, "broken", 0);
    failing.insert(failing.size() - 1, " result=9");
    Script(handles + failing + ItemLine(2, "fine", 0) + "VornGetNextDirItem result=1\n" +
           "VornGetErrorText text=out of order\n");
    const Outcome outcome = RunKessilctl("ls", "vorn_recorder", {});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_EQ(outcome.out, "directory              0 1970-01-01 00:00:00Z fine\n");
    EXPECT_NE(outcome.err.find("kessilctl: broken: out of order (code 9)\n"), std::string::npos) << outcome.err;
}

TEST_F(StrangeLibraryTest, IsNotBelievedWhenItCountsMoreThanFits)
{
    Script(OneFile("name") + "VornReadFile out=1048577\n");
    const Outcome outcome = BackUpScripted();
    EXPECT_EQ(outcome.exit_code, 4);
    EXPECT_FALSE(std::filesystem::exists(backup / "MANIFEST.sha256"));
    EXPECT_FALSE(std::filesystem::exists(backup / "partial"));
}

TEST_F(StrangeLibraryTest, IsReportedWhenItTakesLessThanItWasGiven)
{
    WriteFile(source / "file", "abc");
    BackUp();
    Script(OneFile("file") + "VornWriteFile out=16\nVornWriteFile out=2\n");
    const Outcome outcome = RunKessilctl("restore", "vorn_recorder", {"--from", backup.string()});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_NE(outcome.err.find("kessilctl: file: only 2 of 3 bytes were taken"), std::string::npos) << outcome.err;
    EXPECT_EQ(Recorded("VornRestoreFile"), Lines{});
}

TEST_F(StrangeLibraryTest, IsFoundOutWhenItReadsBackSomethingElse)
{
    WriteFile(source / "file", "abc");
    BackUp();
    Script(OneFile("file") + "VornWriteFile out=16\nVornWriteFile out=3\nVornReadFile out=3 fill=616264\n"
                             "VornReadFile out=0\n");
    const Outcome outcome = RunKessilctl("restore", "vorn_recorder", {"--from", backup.string()});
    EXPECT_EQ(outcome.exit_code, 8);
    EXPECT_NE(outcome.err.find("kessilctl: file: what was read back differs from what was written"), std::string::npos)
        << outcome.err;
    EXPECT_NE(outcome.err.find("kessilctl: file: its time is not the one that was written"), std::string::npos)
        << outcome.err;
    ASSERT_FALSE(Recorded("VornOpenFile").empty());
    ASSERT_FALSE(Recorded("VornWriteFile").empty());
    EXPECT_EQ(Recorded("VornOpenFile").front(), "VornOpenFile session=0x51 file=0xf1 path=\"file\" mode=10");
    EXPECT_EQ(Recorded("VornWriteFile").back(), "VornWriteFile session=0x51 file=0xf1 size=3 data=616263");
}

} // namespace
} // namespace kessil::test
