#include "platform/process.h"

#include "child.h"
#include "platform/last_error.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace kessil::test {

using platform::PipeStatus;

namespace {

constexpr std::uint32_t killed = 137;

/// The arguments that the child receives when it is started with these.
std::vector<WideString> SentThroughAChild(const std::vector<WideString> &arguments)
{
    ServedPipe pipe;
    std::vector<WideString> all = {u"arguments", pipe.Name()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    Child child(all);
    EXPECT_EQ(pipe.Accept(child.Id()), PipeStatus::Done);
    std::vector<WideString> received;
    received.reserve(arguments.size());
    for (std::size_t i = 0; i < arguments.size(); ++i)
        received.push_back(pipe.ReadText());
    EXPECT_EQ(pipe.ReadAll(), "");
    EXPECT_EQ(child.ExitCode(), 0u);
    return received;
}

void ExpectExact(const std::vector<WideString> &arguments)
{
    const std::vector<WideString> received = SentThroughAChild(arguments);
    for (std::size_t i = 0; i < arguments.size(); ++i)
        EXPECT_EQ(received[i], arguments[i]) << platform::ToUtf8(arguments[i]);
}

} // namespace

TEST(Process, PassesPlainArguments)
{
    ExpectExact({u"one", u"--two", u"/three", u"C:\\four"});
}

TEST(Process, PassesEmptyArguments)
{
    ExpectExact({u"", u"between", u"", u""});
}

TEST(Process, PassesSpaces)
{
    ExpectExact({u"a b", u" ", u"  leading", u"trailing  ", u"tab\there", u"line\nend\r\n"});
}

TEST(Process, PassesQuotes)
{
    ExpectExact({u"\"", u"\"\"", u"\"quoted\"", u"a\"b", u"a \"b\" c", u"'single'", u"`"});
}

TEST(Process, PassesBackslashes)
{
    ExpectExact({u"\\", u"\\\\", u"a\\", u"a b\\", u"a b\\\\", u"\\\"", u"\\\\\"", u"a\\\\\\\"b", u"C:\\x y\\"});
}

TEST(Process, PassesShellCharacters)
{
    ExpectExact({u"*", u"?", u"*.cpp", u"%PATH%", u"$PATH", u"^", u"&", u"|", u"<>", u"!", u"#", u"~", u"@file"});
}

TEST(Process, PassesTextOutsideAscii)
{
    ExpectExact({u"\u00E9t\u00E9", u"\u65E5\u672C", u"\U0001F33E", u"\u0301", u"\uFEFF"});
}

TEST(Process, PassesUnitsThatFormNoCharacter)
{
    ExpectExact({{u'a', 0xDCFF, u'b'}, {0xDC80}, {0xDCC3, u'('}});
}

TEST(Process, PassesLongArguments)
{
    ExpectExact({WideString(12000, u'x'), WideString(300, u'"')});
}

TEST(Process, ReportsTheExitCode)
{
    for (const int code : {0, 1, 7, 255}) {
        Child child({u"exit", platform::FromUtf8(std::to_string(code))});
        EXPECT_EQ(child.ExitCode(), static_cast<std::uint32_t>(code));
        EXPECT_EQ(child.ExitCode(), static_cast<std::uint32_t>(code)) << "when asked again";
    }
}

TEST(Process, HasNoExitCodeWhileItRuns)
{
    ServedPipe pipe;
    Child child({u"hang", pipe.Name()});
    ASSERT_EQ(pipe.Accept(child.Id()), PipeStatus::Done);
    std::uint32_t exit_code = 99;
    EXPECT_FALSE(platform::WaitForProcess(child.Process(),
                                          std::chrono::steady_clock::now() + std::chrono::milliseconds(20), exit_code));
    EXPECT_EQ(exit_code, 99u);
}

TEST(Process, EndsWhenItIsKilled)
{
    ServedPipe pipe;
    Child child({u"hang", pipe.Name()});
    ASSERT_EQ(pipe.Accept(child.Id()), PipeStatus::Done);
    platform::KillProcess(child.Process());
    EXPECT_EQ(child.ExitCode(), killed);
    EXPECT_EQ(pipe.ReadAll(), "");
    platform::KillProcess(child.Process());
    EXPECT_EQ(child.ExitCode(), killed);
}

TEST(Process, KeepsItsExitCodeWhenItIsKilledTooLate)
{
    Child child({u"exit", u"3"});
    EXPECT_EQ(child.ExitCode(), 3u);
    platform::KillProcess(child.Process());
    EXPECT_EQ(child.ExitCode(), 3u);
}

TEST(Process, IsKilledWhenItIsReleased)
{
    ServedPipe pipe;
    Child child({u"hang", pipe.Name()});
    ASSERT_EQ(pipe.Accept(child.Id()), PipeStatus::Done);
    child.Release();
    EXPECT_EQ(pipe.ReadAll(), "");
}

TEST(Process, StartsInTheGivenDirectory)
{
    const TemporaryDirectory directory;
    const std::filesystem::path inner = directory.Path() / "in here";
    std::filesystem::create_directory(inner);
    ServedPipe pipe;
    Child child({u"directory", pipe.Name()}, platform::FromUtf8(inner.string()));
    ASSERT_EQ(pipe.Accept(child.Id()), PipeStatus::Done);
    EXPECT_TRUE(std::filesystem::equivalent(platform::ToUtf8(pipe.ReadText()), inner));
    EXPECT_EQ(child.ExitCode(), 0u);
}

TEST(Process, StartsInTheParentsDirectoryOtherwise)
{
    ServedPipe pipe;
    Child child({u"directory", pipe.Name()});
    ASSERT_EQ(pipe.Accept(child.Id()), PipeStatus::Done);
    EXPECT_TRUE(std::filesystem::equivalent(platform::ToUtf8(pipe.ReadText()), std::filesystem::current_path()));
}

TEST(Process, DoesNotStartFromAPathThatDoesNotExist)
{
    EXPECT_EQ(platform::StartProcess(ChildProgram() + u"-not", {}, {}), nullptr);
    EXPECT_EQ(platform::LastError(), 2u);
}

TEST(Process, DoesNotStartInADirectoryThatDoesNotExist)
{
    const TemporaryDirectory directory;
    EXPECT_EQ(platform::StartProcess(ChildProgram(), {u"exit", u"0"},
                                     platform::FromUtf8((directory.Path() / "not").string())),
              nullptr);
    EXPECT_NE(platform::LastError(), 0u);
}

TEST(Process, CanBeReleasedAsNull)
{
    platform::SetLastError(1234);
    platform::ReleaseProcess(nullptr);
    EXPECT_EQ(platform::LastError(), 1234u);
}

} // namespace kessil::test
