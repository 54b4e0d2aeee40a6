#include "kessilctl/console/progress.h"

#include <sstream>

#include <gtest/gtest.h>

namespace kessil::kessilctl {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const Progress::Clock::time_point start{};

TEST(Progress, WritesALineEveryTwoSeconds)
{
    std::ostringstream stream;
    Console console(stream, stream, 0);
    Progress progress(console, "backup", 4, 1000000, start);
    progress.Advance(0, 0, start);
    progress.Advance(1, 250000, start + milliseconds(1999));
    progress.Advance(1, 250000, start + seconds(2));
    progress.Advance(2, 500000, start + milliseconds(3999));
    progress.Finish(4, 1000000, start + seconds(4));
    EXPECT_EQ(stream.str(), "backup 0%, 0 of 4 files, 0 B\n"
                            "backup 25%, 1 of 4 files, 250 kB, 125 kB/s, 0:06 left\n"
                            "backup 100%, 4 of 4 files, 1.0 MB, 250 kB/s\n");
}

TEST(Progress, DrawsABarThatStaysInItsLine)
{
    std::ostringstream stream;
    Console console(stream, stream, 70);
    Progress progress(console, "backup", 2, 100, start);
    progress.Advance(1, 50, start);
    progress.Advance(1, 60, start + milliseconds(99));
    progress.Finish(2, 100, start + seconds(1));
    EXPECT_EQ(stream.str(), "\r[##################..................] backup 50%, 1 of 2 files, 50 B"
                            "\r[#########################] backup 100%, 2 of 2 files, 100 B, 100 B/s\n");
}

TEST(Progress, ClearsTheBarForAMessage)
{
    std::ostringstream stream;
    Console console(stream, stream, 12);
    Progress progress(console, "backup", 2, 100, start);
    progress.ClearBar();
    EXPECT_EQ(stream.str(), "");
    progress.Advance(1, 50, start);
    progress.ClearBar();
    console.WriteLine("a message");
    EXPECT_EQ(stream.str(), "\rbackup 50%,\r           \ra message\n");
}

TEST(Progress, ClearsTheBarAheadOfALineAndAtAnEarlyEnd)
{
    std::ostringstream stream;
    Console console(stream, stream, 12);
    {
        Progress progress(console, "backup", 2, 100, start);
        progress.Advance(1, 50, start);
        console.WriteMessage("one");
        progress.Advance(1, 60, start + seconds(1));
    }
    console.WriteLine("two");
    EXPECT_EQ(stream.str(), "\rbackup 50%,\r           \rkessilctl: one\n"
                            "\rbackup 60%,\r           \rtwo\n");
}

TEST(Progress, CountsFilesWhereThereAreNoBytes)
{
    std::ostringstream stream;
    Console console(stream, stream, 0);
    Progress progress(console, "restore", 4, 0, start);
    progress.Advance(1, 0, start + seconds(3));
    EXPECT_EQ(stream.str(), "restore 25%, 1 of 4 files, 0 B, 0:09 left\n");
}

TEST(Progress, IsCompleteWhereThereIsNothing)
{
    std::ostringstream stream;
    Console console(stream, stream, 0);
    Progress progress(console, "backup", 0, 0, start);
    progress.Finish(0, 0, start);
    EXPECT_EQ(stream.str(), "backup 100%, 0 of 0 files, 0 B\n");
}

TEST(Progress, ShowsSizesAndTimes)
{
    EXPECT_EQ(ReadableSize(0), "0 B");
    EXPECT_EQ(ReadableSize(999), "999 B");
    EXPECT_EQ(ReadableSize(1000), "1.0 kB");
    EXPECT_EQ(ReadableSize(99900), "99.9 kB");
    EXPECT_EQ(ReadableSize(99960), "100 kB");
    EXPECT_EQ(ReadableSize(999499), "999 kB");
    EXPECT_EQ(ReadableSize(999500), "1.0 MB");
    EXPECT_EQ(ReadableSize(5e18), "5000 PB");
    EXPECT_EQ(ReadableTime(seconds(0)), "0:00");
    EXPECT_EQ(ReadableTime(seconds(65)), "1:05");
    EXPECT_EQ(ReadableTime(seconds(3599)), "59:59");
    EXPECT_EQ(ReadableTime(seconds(7384)), "2:03:04");
}

} // namespace
} // namespace kessil::kessilctl
