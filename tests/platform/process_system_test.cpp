#include "platform/process.h"

#include "child.h"
#include "native.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace kessil::test {

using platform::PipeStatus;

namespace {

constexpr std::uint32_t killed = 137;

/// A child that has started one of its own, which waits at `child_pipe`.
struct Family
{
    explicit Family(const WideString &task = u"start_another") : parent({task, parent_pipe.Name(), child_pipe.Name()})
    {
        EXPECT_EQ(parent_pipe.Accept(parent.Id()), PipeStatus::Done);
        const std::string child_id = platform::ToUtf8(parent_pipe.ReadText());
        EXPECT_EQ(child_pipe.Accept(static_cast<std::uint32_t>(std::stoul(child_id))), PipeStatus::Done);
    }

    ServedPipe parent_pipe;
    ServedPipe child_pipe;
    Child parent;
};

} // namespace

TEST(ProcessSystem, DoesNotOutliveAParentThatIsKilled)
{
    Family family;
    platform::KillProcess(family.parent.Process());
    EXPECT_EQ(family.parent.ExitCode(), killed);
    EXPECT_EQ(family.child_pipe.ReadAll(), "");
}

TEST(ProcessSystem, DoesNotOutliveAParentThatEndsByItself)
{
    Family family;
    family.parent_pipe.Close();
    EXPECT_EQ(family.parent.ExitCode(), 0u);
    EXPECT_EQ(family.child_pipe.ReadAll(), "");
}

TEST(ProcessSystem, IsNotInterruptedWithItsParent)
{
    Family family(u"start_another_and_be_interrupted");
    ASSERT_EQ(family.parent_pipe.Write("!"), PipeStatus::Done);
    ASSERT_EQ(family.parent_pipe.Read(1), "!") << "the parent could not be interrupted";
    EXPECT_EQ(family.child_pipe.Write("?"), PipeStatus::Done);
    EXPECT_EQ(family.child_pipe.Read(1), "?");
}

TEST(ProcessSystem, InheritsStandardOutput)
{
    const TemporaryDirectory directory;
    const std::string file = (directory.Path() / "output.txt").string();
    {
        const RedirectedOutput redirected(file);
        EXPECT_EQ(Child({u"print"}).ExitCode(), 0u);
    }
    std::ifstream output(file);
    std::string line;
    std::getline(output, line);
    EXPECT_EQ(line.substr(0, 7), "printed");
}

TEST(ProcessSystem, FindsAnEndedInputWhereTheParentHasNone)
{
    const NoInput no_input;
    EXPECT_EQ(Child({u"read_input"}).ExitCode(), 0u);
}

TEST(ProcessSystem, InheritsNothingElse)
{
    const InheritableHandle handle;
    ASSERT_TRUE(IsOpen(handle.Number()));
    Child child({u"probe", platform::FromUtf8(std::to_string(handle.Number()))});
    EXPECT_EQ(child.ExitCode(), child_no);
}

} // namespace kessil::test
