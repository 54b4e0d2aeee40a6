#include "tests/kessilctl/scripted_run.h"

#include "platform/secret.h"
#include "platform/text.h"
#include "tests/support/under_wine.h"

namespace kessil::test {
namespace {

class LogonTest : public ScriptedRun
{};

/// The user `u` of the domain `d`, the password `pw`, the local system, and an interactive logon.
const std::string logon_of_u = "expect 41 00000014 7500 0000 6400 0000 7000 7700 0000 0000 00000001\n";

/// Message 5 of the file `m`; the text is "too".
const std::string message_5 = "expect 58 00000008 00000005 6D00 0000\n"
                              "send 45 00000010 FFFFFFFF 00000005 7400 6F00 6F00 0000\n";

#ifdef _WIN32
const std::string separator = "3B00 ";
#else
const std::string separator = "3A00 ";
#endif

TEST_F(LogonTest, ComesBeforeTheSearchPathAndThatBeforeTheWork)
{
    SetInput("pw\nthe rest\n");
    const Outcome outcome =
        RunScripted(logon_of_u + success + "expect 50 00000004 7800 0000\n" + success + message_5 + stop, "errtext",
                    {"m", "5", "--path", "x", "--logon", "d\\u", "--password-fd", "0"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "too\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(NextLine(), "the rest");
}

TEST_F(LogonTest, ComesBeforeTheLibrary)
{
    SetInput("pw");
    const Outcome outcome =
        RunScripted(logon_of_u + success + "expect 50 00000004 7800 0000\n" + success +
                        "expect 4C 00000004 6C00 0000\n" + "send 45 0000000E 00000000 00000002 6E00 6F00 0000\n" + stop,
                    "ls", {"-l", "l", "--path", "x", "--logon", "d\\u", "--password-fd", "0"});
    EXPECT_EQ(outcome.exit_code, 3) << outcome.err;
    EXPECT_NE(outcome.err.find("the helper refused loading l: no"), std::string::npos) << outcome.err;
}

TEST_F(LogonTest, MayBeForOutgoingConnectionsAloneAndWithoutADomain)
{
    SetInput("\r\n");
    const Outcome outcome =
        RunScripted("expect 41 0000000E 7500 0000 0000 0000 0000 00000000\n" + success + message_5 + stop, "errtext",
                    {"m", "5", "--logon", "u", "--credentials-only", "--password-fd", "0"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
}

TEST_F(LogonTest, EndsTheRunWhenItIsRefused)
{
    SetInput("pw\r\n");
    const Outcome outcome = RunScripted(logon_of_u + "send 45 0000000E FFFFFFFF FFFFFFFF 6E00 6F00 0000\n" + stop, "ls",
                                        {"-l", "x", "--path", "x", "--logon", "d\\u", "--password-fd", "0"});
    EXPECT_EQ(outcome.exit_code, 3);
    EXPECT_EQ(outcome.err, "kessilctl: the helper refused logging on u: no (return code -1, system error -1)\n");
}

TEST_F(LogonTest, TakesThePasswordAsUtf8)
{
    SetInput("\xC3\xA9\xF0\x9F\x8C\xBE\n");
    const Outcome outcome = RunScripted("expect 41 00000014 7500 0000 0000 E900 3CD8 3EDF 0000 0000 00000001\n" +
                                            success + message_5 + stop,
                                        "errtext", {"m", "5", "--logon", "u", "--password-fd", "0"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
}

TEST_F(LogonTest, RequiresAPasswordThatCanBeRead)
{
    SetInput("");
    const Outcome empty = RunScripted("", "errtext", {"m", "5", "--logon", "u", "--password-fd", "0"});
    EXPECT_EQ(empty.exit_code, 7);
    EXPECT_EQ(empty.err, "kessilctl: no password could be read\n");
}

TEST_F(LogonTest, TakesAPasswordOf1024BytesAndNoLongerOne)
{
    WideString line;
    SetInput(std::string(1024, 'x') + "\r\n");
    EXPECT_EQ(platform::ReadSecretLine(0, line), platform::SecretStatus::Read);
    EXPECT_EQ(line, WideString(1024, u'x'));
    for (const char *end : {"\n", "\r\n", "xxxxxxxxxx\n"}) {
        SetInput(std::string(1025, 'x') + end + "next\n");
        EXPECT_EQ(platform::ReadSecretLine(0, line), platform::SecretStatus::TooLong);
        EXPECT_EQ(NextLine(), "next");
    }
    SetInput(std::string(1025, 'x') + "\n");
    EXPECT_EQ(RunScripted("", "errtext", {"m", "5", "--logon", "u", "--password-fd", "0"}).exit_code, 7);
}

TEST_F(LogonTest, OfCredentialsAloneIsServedByTheHelper)
{
    SetInput("no password\n");
    WriteFile(source / "file", "x");
    const Outcome outcome =
        RunKessilctl("ls", "vorn_fs", {"--logon", "eve", "--password-fd", "0", "--credentials-only"});
    // Wine gives everybody a token, and then no way to use it.
    EXPECT_EQ(outcome.exit_code, UnderWine() ? 3 : 0) << outcome.err;
    EXPECT_NE((outcome.out + outcome.err).find(UnderWine() ? "(ImpersonateLoggedOnUser)" : " file\n"),
              std::string::npos);
}

TEST_F(LogonTest, SearchPathsAreSearchedInTheOrderInWhichTheyAreGiven)
{
    const Outcome outcome =
        RunScripted("expect 50 00000008 7800 " + separator + "7900 0000\n" + success + message_5 + stop, "errtext",
                    {"--path", "x", "m", "--path", "y", "5"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
}

TEST_F(LogonTest, ARefusedSearchPathIsAnExitCodeOf3)
{
    const Outcome outcome =
        RunScripted("expect 50 00000004 7800 0000\nsend 45 0000000E FFFFFFFF FFFFFFFF 6E00 6F00 0000\n" + stop,
                    "errtext", {"m", "5", "--path", "x"});
    EXPECT_EQ(outcome.exit_code, 3);
    EXPECT_NE(outcome.err.find("the helper refused adding to the search path: x: no"), std::string::npos)
        << outcome.err;
}

TEST_F(LogonTest, FindsALibraryOfThatSearchPath)
{
    std::filesystem::create_directory(base / "libraries");
    const std::filesystem::path library = LibraryPath("vorn_fs");
    std::filesystem::path renamed = base / "libraries" / "found_by_name";
    renamed += library.extension();
    std::filesystem::copy_file(library, renamed);
    WriteFile(source / "file", "x");
    const std::vector<std::string> arguments = {"ls", "--helper", KESSIL_TEST_HELPER, "--library",
                                                renamed.filename().string()};
    EXPECT_EQ(RunKessilctlPlain(arguments).exit_code, 3);
    std::vector<std::string> with_path = arguments;
    with_path.insert(with_path.end(), {"--path", (base / "libraries").string()});
    const Outcome outcome = RunKessilctlPlain(with_path);
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_NE(outcome.out.find(" file\n"), std::string::npos) << outcome.out;
}

} // namespace
} // namespace kessil::test
