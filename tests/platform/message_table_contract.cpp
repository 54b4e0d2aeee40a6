#include "platform/message_table.h"

#include "platform/last_error.h"
#include "surroundings.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kessil::test {

using platform::MessageTable;

namespace {

const WideString line_end = on_windows ? u"\r\n" : u"\n";

/// The table of the suite's file, open.
class OpenTable
{
public:
    OpenTable() : m_table(platform::OpenMessageTable(MessageFile())) { EXPECT_NE(m_table, nullptr); }
    ~OpenTable() { platform::CloseMessageTable(m_table); }
    OpenTable(const OpenTable &) = delete;
    OpenTable &operator=(const OpenTable &) = delete;

    bool Read(std::uint32_t number, WideString &text) const { return platform::ReadMessage(m_table, number, text); }

private:
    MessageTable m_table;
};

} // namespace

TEST(MessageTable, HasItsMessagesWithLineEndAndInserts)
{
    const OpenTable table;
    WideString text;
    EXPECT_TRUE(table.Read(1, text));
    EXPECT_EQ(text, u"Tape %1 is missing in drive %2." + line_end);
}

TEST(MessageTable, HasTextOutsideAscii)
{
    const OpenTable table;
    WideString text;
    EXPECT_TRUE(table.Read(1234, text));
    EXPECT_EQ(text, u"Kein Zugriff f\u00FCr \u20AC." + line_end);
}

TEST(MessageTable, LeavesTheTextUnchangedForAMissingNumber)
{
    const OpenTable table;
    for (const std::uint32_t number : {0u, 2u, 5u, 0x7FFFFFFFu, 0x80000001u, 0xFFFFFFFFu}) {
        WideString text = u"before";
        EXPECT_FALSE(table.Read(number, text)) << number;
        EXPECT_EQ(text, u"before");
    }
}

TEST(MessageTable, CanBeOpenedTwiceAndAgain)
{
    WideString text;
    {
        const OpenTable first;
        const OpenTable second;
        EXPECT_TRUE(first.Read(1, text));
        EXPECT_TRUE(second.Read(1, text));
    }
    const OpenTable third;
    EXPECT_TRUE(third.Read(1, text));
}

TEST(MessageTable, IsNotFoundForAFileThatDoesNotExist)
{
    platform::SetLastError(0);
    EXPECT_EQ(platform::OpenMessageTable(MessageFile() + u"-not"), nullptr);
    EXPECT_EQ(platform::LastError(), on_windows ? 126u : 2u);
}

TEST(MessageTable, IsNotInAFileOfAnotherKind)
{
    const TemporaryDirectory directory;
    const std::string file = (directory.Path() / "text.dll").string();
    std::ofstream(file) << "no table, and no library either";
    platform::SetLastError(0);
    EXPECT_EQ(platform::OpenMessageTable(platform::FromUtf8(file)), nullptr);
    EXPECT_NE(platform::LastError(), 0u);
}

TEST(MessageTable, KeepsTheLastErrorWhenItIsClosed)
{
    MessageTable const table = platform::OpenMessageTable(MessageFile());
    ASSERT_NE(table, nullptr);
    platform::SetLastError(1234);
    platform::CloseMessageTable(table);
    EXPECT_EQ(platform::LastError(), 1234u);
}

} // namespace kessil::test
