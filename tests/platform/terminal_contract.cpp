#include "platform/terminal.h"

#include "surroundings.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

namespace kessil::test {

using platform::StandardStream;

TEST(Terminal, IsNoFile)
{
    const TemporaryDirectory directory;
    const RedirectedOutput redirected((directory.Path() / "output.txt").string());
    EXPECT_FALSE(platform::IsTerminal(StandardStream::Output));
    EXPECT_EQ(platform::TerminalColumns(StandardStream::Output), 0u);
}

TEST(Terminal, IsTheOnlyStreamWithColumns)
{
    for (const StandardStream stream : {StandardStream::Output, StandardStream::Error}) {
        if (!platform::IsTerminal(stream)) {
            EXPECT_EQ(platform::TerminalColumns(stream), 0u);
        }
    }
}

TEST(Terminal, StaysWhatItIsWhenItUsesUtf8)
{
    const TemporaryDirectory directory;
    const RedirectedOutput redirected((directory.Path() / "output.txt").string());
    platform::UseUtf8Console();
    EXPECT_FALSE(platform::IsTerminal(StandardStream::Output));
}

} // namespace kessil::test
