#include "tests/kessilctl/adapter_run.h"

#include <nlohmann/json.hpp>

namespace kessil::test {
namespace {

using nlohmann::json;

class AdapterInventoryTest : public AdapterTest
{};

bool Contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

TEST_F(AdapterInventoryTest, ListsHostsWithTheirNumbersAligned)
{
    WriteFile(root / "hosts" / "first" / "notes", "12345");
    WriteFile(root / "hosts" / "first" / "more notes", std::string(1000, 'x'));
    std::filesystem::create_directory(root / "hosts" / "second");
    WriteFile(root / "hosts" / "no host", "a file");
    const Outcome outcome = RunAdapter("hosts", {});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.out, "2 1005 first\n"
                           "0    0 second\n");
    EXPECT_EQ(outcome.err, serving);
}

TEST_F(AdapterInventoryTest, ListsFoldersWithTheirThirdNumber)
{
    for (int at = 0; at < 11; ++at)
        std::filesystem::create_directories(root / "folders" / "many" / std::to_string(at));
    std::filesystem::create_directory(root / "folders" / "none");
    EXPECT_EQ(RunAdapter("folders", {}).out, "0 0 11 many\n"
                                             "0 0  0 none\n");
    EXPECT_EQ(RunAdapter("folders", {"many/3"}).out, "");
}

TEST_F(AdapterInventoryTest, ListsDataStoresAndMachinesBelowAPath)
{
    WriteFile(root / "datastores" / "fast" / "part" / "x", "1");
    WriteFile(root / "machines" / "alpha" / "disk.img", std::string(512, 'd'));
    EXPECT_EQ(RunAdapter("datastores", {}).out, "0 0 fast\n");
    EXPECT_EQ(RunAdapter("datastores", {"fast", "whatever"}).out, "1 1 part\n");
    EXPECT_EQ(RunAdapter("machines", {}).out, "1 512 alpha\n");
    EXPECT_EQ(RunAdapter("machines", {"alpha"}).out, "");
}

TEST_F(AdapterInventoryTest, GivesTheResultToScripts)
{
    WriteFile(root / "folders" / "a" / "b", "123");
    std::filesystem::create_directory(root / "machines" / "m");
    json folders = json::parse(RunAdapter("folders", {"--json"}).out);
    EXPECT_GT(folders["seconds"], 0);
    folders.erase("seconds");
    const std::string text = serving.substr(serving.find("serving"), serving.size() - serving.find("serving") - 1);
    EXPECT_EQ(folders, (json{{"task", "adapter folders"},
                             {"exit_code", 0},
                             {"items", {{{"name", "a"}, {"number", 1}, {"value", 3}, {"extra", 0}}}},
                             {"log", {{{"level", 2}, {"text", text}}}}}));
    const json machines = json::parse(RunAdapter("machines", {"--json"}).out);
    EXPECT_EQ(machines["items"], (json{{{"name", "m"}, {"number", 0}, {"value", 0}}}));
}

TEST_F(AdapterInventoryTest, PassesTheAdaptersTextOn)
{
    const Outcome outcome = RunAdapter("hosts", {"../machines", "--json"});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_TRUE(Contains(outcome.err, "kessilctl: ListHosts")) << outcome.err;
    EXPECT_TRUE(Contains(outcome.err, "failed: the path hosts/../machines does not keep to the root\n"));
    EXPECT_TRUE(Contains(outcome.err, "adapter, level 1: the path hosts/../machines does not keep to the root\n"));
    const json result = json::parse(outcome.out);
    EXPECT_EQ(result["exit_code"], 1);
    EXPECT_TRUE(Contains(result["end"].get<std::string>(), "does not keep to the root"));
    EXPECT_EQ(result["items"], json::array());
    EXPECT_EQ(result["log"][1]["level"], 1);
}

TEST_F(AdapterInventoryTest, ReportsThatCredentialsAreMissing)
{
    root = base / "nowhere";
    const Outcome refused = RunAdapter("hosts", {});
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_TRUE(Contains(refused.err, "is not a directory\n")) << refused.err;
    EXPECT_TRUE(Contains(refused.err, "failed: there are no credentials")) << refused.err;
    const Outcome none =
        RunKessilctlPlain({"adapter", "hosts", "--helper", KESSIL_TEST_HELPER, "--library", KESSIL_TEST_ADAPTER});
    EXPECT_EQ(none.exit_code, 1);
    EXPECT_TRUE(Contains(none.err, "failed: there are no credentials")) << none.err;
}

TEST_F(AdapterInventoryTest, KeepsControlCharactersFromTheTerminal)
{
    const Outcome outcome = RunStrangeAdapter("hosts", {});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.out, "-2147483648 18446744073709551615 \\x1B[31m\n"
                           "          7                    0 \xFFx\n");
    EXPECT_EQ(outcome.err, "adapter, level 255: two\\x0D\\x1B[2Jlines\n");
    const json result = json::parse(RunStrangeAdapter("hosts", {"--json"}).out);
    EXPECT_EQ(result["items"][0], (json{{"name", "\x1B[31m"}, {"number", -2147483648}, {"value", UINT64_MAX}}));
    EXPECT_EQ(result["items"][1]["name"], "\xEF\xBF\xBDx");
    EXPECT_EQ(result["items"][1]["name_bytes"], (json{255, 'x'}));
    EXPECT_EQ(result["log"], (json{{{"level", 255}, {"text", "two\r\x1B[2Jlines"}}}));
}

TEST_F(AdapterInventoryTest, ReportsAFailureWithoutAText)
{
    const Outcome outcome = RunStrangeAdapter("machines", {});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_TRUE(Contains(outcome.err, "Failed to get error message")) << outcome.err;
}

TEST_F(AdapterInventoryTest, IsRefusedWithoutTheFunctionAndWithoutTheLibrary)
{
    EXPECT_EQ(RunStrangeAdapter("folders", {}).exit_code, 3);
    const auto run = [&](const std::string &library) {
        return RunKessilctlPlain({"adapter", "hosts", "--helper", KESSIL_TEST_HELPER, "--library", library});
    };
    EXPECT_EQ(run(LibraryPath("plain")).exit_code, 3);
    EXPECT_EQ(run("no such library").exit_code, 3);
}

TEST_F(AdapterInventoryTest, SendsThePasswordsInTheirOrder)
{
    SetInput("pw\ns\xC3\xA9\nthe rest\n");
    const std::string no_lines = "send FFFFFC19 ";
    const Outcome outcome = RunScripted(
        "expect 41 00000014 7500 0000 6400 0000 7000 7700 0000 0000 00000001\n" + success +
            "expect 6C 00000001 61\nsend 00000001\n"
            "expect 66 03 00000001 63 00000003 73 C3 A9\n" +
            no_lines + "00000001\nexpect 66 25 00000001 78\n" + no_lines + "00000000\n" + stop,
        "adapter", {"hosts", "-l", "a", "--logon", "d\\u", "--credentials", "c", "--password-fd", "0", "x"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(NextLine(), "the rest");
}

TEST_F(AdapterInventoryTest, RequiresAPasswordThatCanBeRead)
{
    SetInput("pw\n");
    const std::vector<std::string> both = {"--logon", "u", "--credentials", "c", "--password-fd", "0"};
    std::vector<std::string> arguments = {"adapter", "hosts", "--helper", KESSIL_TEST_HELPER, "-l", "a", "--json"};
    arguments.insert(arguments.end(), both.begin(), both.end());
    const Outcome outcome = RunKessilctlPlain(arguments);
    EXPECT_EQ(outcome.exit_code, 7);
    EXPECT_EQ(outcome.err, "kessilctl: no password could be read\n");
    json result = json::parse(outcome.out);
    result.erase("seconds");
    EXPECT_EQ(result, (json{{"task", "adapter hosts"},
                            {"exit_code", 7},
                            {"end", "no password could be read"},
                            {"items", json::array()},
                            {"log", json::array()}}));
}

TEST_F(AdapterInventoryTest, ExplainsItself)
{
    EXPECT_EQ(RunKessilctlPlain({"adapter", "--help"}).exit_code, 0);
    const std::vector<std::vector<std::string>> wrong = {
        {"adapter"},
        {"adapter", "disks", "-l", "x"},
        {"adapter", "hosts"},
        {"adapter", "hosts", "-l", "x", "a", "b"},
        {"adapter", "hosts", "-l", "x", "--password-fd", "0"},
        {"adapter", "read-disk", "-l", "x", "-m", "m", "-d", "d", "--to", "f"},
        {"adapter", "read-disk", "-l", "x", "-m", "m", "-d", "d", "--sectors", "-1", "--to", "f"},
        {"adapter", "read-disk", "-l", "x", "-m", "m", "-d", "d", "--sectors", "1"},
        {"adapter", "read-disk", "-l", "x", "-m", "m", "--sectors", "1", "--to", "f"},
        {"adapter", "read-disk", "-l", "x", "-d", "d", "--sectors", "1", "--to", "f"},
        {"adapter", "read-disk", "-l", "x", "-m", "m", "-d", "d", "--sectors", "99999999999999999", "--to", "f"},
        {"adapter", "write-disk", "-l", "x", "-m", "m", "-d", "d"},
        {"adapter", "write-disk", "-l", "x", "-m", "m", "-d", "d", "--from", "f", "--start", "99999999999999999"}};
    for (const auto &arguments : wrong) {
        const Outcome outcome = RunKessilctlPlain(arguments);
        EXPECT_EQ(outcome.exit_code, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
}

} // namespace
} // namespace kessil::test
