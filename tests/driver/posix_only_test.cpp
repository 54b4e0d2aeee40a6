#include "driver_run.h"

#include "local_path.h"

#include <cstdlib>

#include <nlohmann/json.hpp>

namespace kessil::test {
namespace {

class PosixOnly : public DriverTest
{};

const std::vector<std::string> strange_names = {
    "new\nline", "back\\slash", "carriage\rreturn", "\\nfalse", "\xFF not UTF-8", " space ", "-rf", "*"};

TEST_F(PosixOnly, Sha256sumAcceptsTheManifest)
{
    for (const std::string &name : strange_names)
        WriteFile(source / driver::ToPath(name), "of " + name);
    BackUp();
    const std::string check = "cd '" + backup.string() + "' && sha256sum --check --strict --quiet MANIFEST.sha256";
    EXPECT_EQ(std::system(check.c_str()), 0);
    WriteFile(backup / "files" / "new\nline", "damaged");
    EXPECT_NE(std::system((check + " 2>/dev/null >/dev/null").c_str()), 0);
}

TEST_F(PosixOnly, BringsStrangeNamesBack)
{
    for (const std::string &name : strange_names)
        WriteFile(source / driver::ToPath(name) / driver::ToPath(name), "of " + name);
    BackUp();
    Serve(target);
    const Outcome outcome = RunDriver("restore", "vorn_fs", {"--from", backup.string()});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(ReadTree(target), ReadTree(source));
    EXPECT_EQ(ReadTree(target).size(), 2 * strange_names.size());
}

TEST_F(PosixOnly, GivesNamesThatAreNotUtf8AsBytesToo)
{
    WriteFile(source / driver::ToPath("\xFFx"), "");
    const auto result = nlohmann::json::parse(RunDriver("ls", "vorn_fs", {"--json"}).out);
    EXPECT_EQ(result["entries"][0]["name"], "\xEF\xBF\xBDx");
    EXPECT_EQ(result["entries"][0]["name_bytes"], (nlohmann::json{255, 'x'}));
}

TEST_F(PosixOnly, SkipsLinksAndSaysSo)
{
    WriteFile(source / "file", "x");
    std::filesystem::create_symlink("/etc", source / "link");
    const Outcome outcome = RunDriver("backup", "vorn_fs", {"--to", backup.string(), "--json"});
    EXPECT_EQ(outcome.exit_code, 0);
    const auto result = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(result["skipped"], (nlohmann::json{{{"file", "link"}, {"text", "a link"}}}));
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(backup / "files" / "link")));
}

TEST_F(PosixOnly, PassesTheLibrarysWordsOn)
{
    std::filesystem::create_symlink("nowhere", source / "link");
    const Outcome outcome = RunDriver("ls", "vorn_fs", {"link"});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_NE(outcome.err.find("the path leads to or through a link, and links are not followed (code 4)"),
              std::string::npos)
        << outcome.err;
}

TEST_F(PosixOnly, FollowsNoLinkInABackup)
{
    WriteFile(source / "file", "x");
    BackUp();
    std::filesystem::create_directory_symlink("/etc", backup / "files" / "link");
    Serve(target);
    const Outcome outcome = RunDriver("restore", "vorn_fs", {"--from", backup.string()});
    EXPECT_EQ(outcome.exit_code, 8);
    EXPECT_NE(outcome.err.find("kessilctl: link: neither file nor directory"), std::string::npos) << outcome.err;
    EXPECT_EQ(ReadTree(target), (std::map<std::string, std::string>{{"file", "x"}}));
}

} // namespace
} // namespace kessil::test
