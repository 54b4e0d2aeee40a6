#include "tests/kessilctl/adapter_run.h"

#include "kessilctl/console/local_path.h"

#include <csignal>
#include <cstdlib>

#include <sys/resource.h>

#include <nlohmann/json.hpp>

namespace kessil::test {
namespace {

class PosixOnly : public KessilctlTest
{};

const std::vector<std::string> strange_names = {
    "new\nline", "back\\slash", "carriage\rreturn", "\\nfalse", "\xFF not UTF-8", " space ", "-rf", "*"};

TEST_F(PosixOnly, Sha256sumAcceptsTheManifest)
{
    for (const std::string &name : strange_names)
        WriteFile(source / kessilctl::ToPath(name), "of " + name);
    BackUp();
    const std::string check = "cd '" + backup.string() + "' && sha256sum --check --strict --quiet MANIFEST.sha256";
    EXPECT_EQ(std::system(check.c_str()), 0);
    WriteFile(backup / "files" / "new\nline", "damaged");
    EXPECT_NE(std::system((check + " 2>/dev/null >/dev/null").c_str()), 0);
}

TEST_F(PosixOnly, RestoresStrangeNames)
{
    for (const std::string &name : strange_names)
        WriteFile(source / kessilctl::ToPath(name) / kessilctl::ToPath(name), "of " + name);
    BackUp();
    Serve(target);
    const Outcome outcome = RunKessilctl("restore", "vorn_fs", {"--from", backup.string()});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(ReadTree(target), ReadTree(source));
    EXPECT_EQ(ReadTree(target).size(), 2 * strange_names.size());
}

TEST_F(PosixOnly, GivesNamesThatAreNotUtf8AsBytesToo)
{
    WriteFile(source / kessilctl::ToPath("\xFFx"), "");
    const auto result = nlohmann::json::parse(RunKessilctl("ls", "vorn_fs", {"--json"}).out);
    EXPECT_EQ(result["entries"][0]["name"], "\xEF\xBF\xBDx");
    EXPECT_EQ(result["entries"][0]["name_bytes"], (nlohmann::json{255, 'x'}));
}

TEST_F(PosixOnly, SkipsLinksAndReportsThem)
{
    WriteFile(source / "file", "x");
    std::filesystem::create_symlink("/etc", source / "link");
    const Outcome outcome = RunKessilctl("backup", "vorn_fs", {"--to", backup.string(), "--json"});
    EXPECT_EQ(outcome.exit_code, 0);
    const auto result = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(result["skipped"], (nlohmann::json{{{"file", "link"}, {"text", "a link"}}}));
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(backup / "files" / "link")));
}

TEST_F(PosixOnly, PassesTheLibrarysTextOn)
{
    std::filesystem::create_symlink("nowhere", source / "link");
    const Outcome outcome = RunKessilctl("ls", "vorn_fs", {"link"});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_NE(outcome.err.find("the path leads to or through a link, and links are not followed (code 4)"),
              std::string::npos)
        << outcome.err;
}

/// No file that this process or its children write can grow beyond `bytes` while it lives, as if the disk were full.
class LimitedFiles
{
public:
    explicit LimitedFiles(rlim_t bytes) : m_signal_before(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_before), 0);
        const rlimit limit{bytes, m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~LimitedFiles()
    {
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &m_before), 0);
        std::signal(SIGXFSZ, m_signal_before);
    }
    LimitedFiles(const LimitedFiles &) = delete;
    LimitedFiles &operator=(const LimitedFiles &) = delete;

private:
    void (*m_signal_before)(int);
    rlimit m_before{};
};

class PosixOnlyAdapter : public AdapterTest
{};

TEST_F(PosixOnlyAdapter, LeavesNothingWhenTheTargetIsFull)
{
    WriteFile(root / "machines" / "m" / "disk", std::string(3 << 20, 'x'));
    const LimitedFiles limited(1500000);
    const Outcome outcome =
        RunAdapter("read-disk", {"-m", "m", "-d", "disk", "--sectors", "6144", "--to", (base / "file").string()});
    EXPECT_EQ(outcome.exit_code, 7);
    EXPECT_NE(outcome.err.find("file.partial: File too large\n"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("closed m/disk\nadapter, level 2: no more disks\n"), std::string::npos) << outcome.err;
    EXPECT_FALSE(std::filesystem::exists(base / "file"));
    EXPECT_FALSE(std::filesystem::exists(base / "file.partial"));
}

TEST_F(PosixOnly, FollowsNoLinkInABackup)
{
    WriteFile(source / "file", "x");
    BackUp();
    std::filesystem::create_directory_symlink("/etc", backup / "files" / "link");
    Serve(target);
    const Outcome outcome = RunKessilctl("restore", "vorn_fs", {"--from", backup.string()});
    EXPECT_EQ(outcome.exit_code, 8);
    EXPECT_NE(outcome.err.find("kessilctl: link: neither a file nor a directory"), std::string::npos) << outcome.err;
    EXPECT_EQ(ReadTree(target), (std::map<std::string, std::string>{{"file", "x"}}));
}

} // namespace
} // namespace kessil::test
