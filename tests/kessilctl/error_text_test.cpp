#include "tests/kessilctl/scripted_run.h"

#include <nlohmann/json.hpp>

namespace kessil::test {
namespace {

class ErrorTextTest : public ScriptedRun
{};

TEST_F(ErrorTextTest, AsksForTheNumberAndTheFileAlone)
{
    const Outcome outcome = RunScripted("expect 58 00000008 80070005 6D00 0000\n"
                                        "send 45 00000018 FFFFFFFF 80070005 6100 0D00 0A00 6200 1B00 0D00 0A00 0000\n" +
                                            stop,
                                        "errtext", {"m", "0x80070005"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "a\nb\\x1B\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(ErrorTextTest, TakesTheLargestNumber)
{
    const Outcome outcome = RunScripted("expect 58 00000008 FFFFFFFF 6D00 0000\n"
                                        "send 45 0000000C FFFFFFFF FFFFFFFF 6100 0000\n" +
                                            stop,
                                        "errtext", {"m", "4294967295"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "a\n");
}

TEST_F(ErrorTextTest, HasItAllInJson)
{
    const Outcome outcome = RunScripted("expect 58 00000008 00000010 6D00 0000\n"
                                        "send 45 0000000E FFFFFFFF 00000010 6100 0A00 0000\n" +
                                            stop,
                                        "errtext", {"m", "16", "--json"});
    const auto result = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(result["task"], "errtext");
    EXPECT_EQ(result["exit_code"], 0);
    EXPECT_EQ(result["number"], 16);
    EXPECT_EQ(result["file"], "m");
    EXPECT_EQ(result["text"], "a\n");
    EXPECT_TRUE(result.contains("seconds"));
    EXPECT_FALSE(result.contains("files"));
}

TEST_F(ErrorTextTest, HasNoTextWhenTheHelperDies)
{
    const Outcome outcome =
        RunScripted("expect 58 00000008 00000010 6D00 0000\nexit 3\n", "errtext", {"m", "16", "--json"});
    EXPECT_EQ(outcome.exit_code, 4);
    const auto result = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(result["exit_code"], 4);
    EXPECT_FALSE(result.contains("text"));
}

TEST_F(ErrorTextTest, NamesAFileThatIsThereByItsFullPath)
{
    // A library without messages: the answer is the system's error text, with the file's name in brackets.
    const std::filesystem::path library = LibraryPath("plain");
    std::filesystem::copy_file(library, base / "a file");
    const Outcome outcome = RunKessilctlPlain({"errtext", "--helper", KESSIL_TEST_HELPER, "a file", "5"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    const std::string end = " (" + std::filesystem::absolute(base / "a file").string() + ")\n";
    EXPECT_TRUE(outcome.out.ends_with(end)) << outcome.out;
}

TEST_F(ErrorTextTest, RequiresAFileAndANumberOf32Bits)
{
    for (const std::vector<std::string> &arguments : {std::vector<std::string>{},
                                                      {"m"},
                                                      {"m", ""},
                                                      {"m", "-1"},
                                                      {"m", "4294967296"},
                                                      {"m", "0x"},
                                                      {"m", "0x100000000"},
                                                      {"m", "5x"},
                                                      {"m", "5", "6"},
                                                      {"m", "5", "--library", "l"}}) {
        const Outcome outcome = RunScripted("", "errtext", arguments);
        EXPECT_EQ(outcome.exit_code, 2) << testing::PrintToString(arguments);
        EXPECT_NE(outcome.err, "");
    }
}

} // namespace
} // namespace kessil::test
