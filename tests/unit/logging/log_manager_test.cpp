#include "logging/log_manager.h"

#include "fakes/fake_critical_section.h"
#include "fakes/fake_local_time.h"
#include "fakes/fake_thread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

class LogTest : public ::testing::Test
{
protected:
    LogTest()
    {
        fake_critical_section = FakeCriticalSection();
        fake_now = {2019, 6, 19, 12, 16, 44, 120};
        fake_thread_id = 0xA2C;
    }
};

// A sink that formats, whose every raw write is kept.
class RawSink final : public FormattedSink
{
public:
    bool WriteRaw(const std::string &text) override
    {
        locks_held = fake_critical_section.held;
        written.push_back(text);
        return written.size() != failing_write;
    }

    std::vector<std::string> written;
    std::size_t failing_write = 0; // counted from 1
    int locks_held = 0;
};

// A sink that doesn't format.
class PlainSink final : public ILogSink
{
public:
    bool WriteRaw(const std::string &text) override
    {
        locks_held = fake_critical_section.held;
        written.push_back(text);
        return written.size() != failing_write;
    }
    using ILogSink::WriteEol;

    std::vector<std::string> written;
    std::size_t failing_write = 0;
    int locks_held = 0;
};

LogRecordInfo Info(const char *file, std::int32_t line)
{
    return {file, line, "void f()", "Jun 19 2019", "12:15:28", 0xA2C};
}

TEST_F(LogTest, LevelNames)
{
    EXPECT_STREQ(LevelName(0), "none");
    EXPECT_STREQ(LevelName(1), "error");
    EXPECT_STREQ(LevelName(2), "debug");
    EXPECT_STREQ(LevelName(3), "warning");
    EXPECT_STREQ(LevelName(4), "info");
    EXPECT_STREQ(LevelName(5), "trace");
    EXPECT_STREQ(LevelName(6), "invalid");
    EXPECT_STREQ(LevelName(-1), "invalid");
}

TEST_F(LogTest, TimeStamp)
{
    EXPECT_STREQ(FormatTimeStamp(), "2019-06-19T12:16:44.120");
    fake_now = {5, 1, 2, 3, 4, 5, 6};
    EXPECT_STREQ(FormatTimeStamp(), "0005-01-02T03:04:05.006");
}

TEST_F(LogTest, WholeLine)
{
    EXPECT_EQ(FormatLine(log_debug, "Ready for logging:  log_file==kessil_log.out, log_level==2", Info("kessil", 151)),
              "T00000a2c 2019-06-19T12:16:44.120 kessil:151 debug: "
              "Ready for logging:  log_file==kessil_log.out, log_level==2");
}

TEST_F(LogTest, ThreadPartIsTenCharacters)
{
    LogRecordInfo info = Info("x", 1);
    info.thread_id = 0;
    EXPECT_THAT(FormatLine(1, "", info), StartsWith("T00000000 2019"));
    info.thread_id = 0xFFFFFFFF;
    EXPECT_THAT(FormatLine(1, "", info), StartsWith("Tffffffff 2019"));
}

TEST_F(LogTest, EmptyMessageStillGivesALine)
{
    EXPECT_EQ(FormatLine(log_error, "", Info("commfunc", 7)), "T00000a2c 2019-06-19T12:16:44.120 commfunc:7 error: ");
}

TEST_F(LogTest, LineNumberIsSignedDecimal)
{
    EXPECT_THAT(FormatLine(9, "m", Info("x", -3)), EndsWith(" x:-3 invalid: m"));
}

TEST_F(LogTest, LocksSpin1024Rounds)
{
    const LogManager manager;
    // The manager's own and its console sink's.
    EXPECT_THAT(fake_critical_section.spin_counts, ElementsAre(1024u, 1024u));
}

TEST_F(LogTest, BeforeTheLevelIsSetOnlyLevelZeroPasses)
{
    LogManager manager;
    EXPECT_EQ(manager.Config().level, 0);
    EXPECT_FALSE(manager.IsDisabled(0));
    EXPECT_TRUE(manager.IsDisabled(1));
    EXPECT_TRUE(manager.IsDisabled(2));
}

TEST_F(LogTest, RecordPassesWhenItsLevelIsAtMostTheConfiguredOne)
{
    LogManager manager;
    manager.Config().level = log_error;
    EXPECT_FALSE(manager.IsDisabled(log_error));
    EXPECT_TRUE(manager.IsDisabled(log_debug));
    manager.Config().level = log_debug;
    EXPECT_FALSE(manager.IsDisabled(log_debug));
    EXPECT_TRUE(manager.IsDisabled(3));
}

TEST_F(LogTest, LogJudgesTheLevelAfresh)
{
    LogManager manager;
    const auto sink = std::make_shared<RawSink>();
    manager.AddSink(sink);
    manager.Config().level = log_error;
    std::ostringstream text;
    text << "m";
    manager.Log(log_debug, text, Info("x", 1));
    EXPECT_THAT(sink->written, IsEmpty());
}

TEST_F(LogTest, LineAndItsEndAreTwoWrites)
{
    LogManager manager;
    const auto sink = std::make_shared<RawSink>();
    manager.AddSink(sink);
    manager.Config().level = log_debug;
    std::ostringstream text;
    text << "number " << 12 << " and " << reinterpret_cast<void *>(std::uintptr_t{0x71});
    manager.Log(log_debug, text, Info("commfunc", 3));
    EXPECT_THAT(sink->written,
                ElementsAre("T00000a2c 2019-06-19T12:16:44.120 commfunc:3 debug: number 12 and 0x71", "\n"));
}

TEST_F(LogTest, LineThatCantBeWrittenGetsNoEnd)
{
    RawSink sink;
    sink.failing_write = 1;
    std::ostringstream text;
    EXPECT_FALSE(sink.WriteRecord(1, text, Info("x", 1)));
    EXPECT_THAT(sink.written, SizeIs(1));
}

TEST_F(LogTest, FailureToWriteTheEndIsNotLookedAt)
{
    RawSink sink;
    sink.failing_write = 2;
    std::ostringstream text;
    EXPECT_TRUE(sink.WriteRecord(1, text, Info("x", 1)));
}

TEST_F(LogTest, EverySinkGetsTheRecordUnderTheManagersLock)
{
    LogManager manager;
    const auto first = std::make_shared<RawSink>();
    const auto second = std::make_shared<RawSink>();
    first->failing_write = 1;
    manager.AddSink(first);
    manager.AddSink(second);
    manager.AddSink(second);
    manager.AddSink(nullptr);
    manager.Config().level = log_error;
    std::ostringstream text;
    manager.Log(log_error, text, Info("x", 1));
    EXPECT_THAT(first->written, SizeIs(1));
    EXPECT_THAT(second->written, SizeIs(2));
    EXPECT_EQ(second->locks_held, 1);
    EXPECT_EQ(fake_critical_section.held, 0);
}

TEST_F(LogTest, SinkIsAddedUnderTheLock)
{
    LogManager manager;
    const int before = fake_critical_section.entered;
    manager.AddSink(std::make_shared<RawSink>());
    EXPECT_EQ(fake_critical_section.entered, before + 1);
    EXPECT_EQ(fake_critical_section.held, 0);
}

TEST_F(LogTest, LockThatCouldNotBeSetUpIsDoneWithout)
{
    fake_critical_section.usable = false;
    LogManager manager;
    const auto sink = std::make_shared<RawSink>();
    manager.AddSink(sink);
    manager.Config().level = log_error;
    std::ostringstream text;
    manager.Log(log_error, text, Info("x", 1));
    EXPECT_THAT(sink->written, SizeIs(2));
    EXPECT_EQ(fake_critical_section.entered, 0);
}

TEST_F(LogTest, SinkThatDoesNotFormatWritesAnEmptyLineUnderItsOwnLock)
{
    PlainSink sink;
    std::ostringstream text;
    text << "message";
    EXPECT_TRUE(sink.WriteRecord(1, text, Info("x", 1)));
    EXPECT_THAT(sink.written, ElementsAre("", "\n"));
    EXPECT_EQ(sink.locks_held, 1);
    EXPECT_EQ(fake_critical_section.held, 0);
}

TEST_F(LogTest, SinkThatFailsWritesNoLineEnd)
{
    PlainSink sink;
    sink.failing_write = 1;
    std::ostringstream text;
    EXPECT_FALSE(sink.WriteRecord(1, text, Info("x", 1)));
    EXPECT_THAT(sink.written, ElementsAre(""));
}

TEST_F(LogTest, WriteEolSucceedsWhateverCameOfIt)
{
    PlainSink sink;
    sink.failing_write = 1;
    EXPECT_TRUE(sink.WriteEol());
    EXPECT_THAT(sink.written, ElementsAre("\n"));
}

TEST_F(LogTest, ConsoleSinkWritesToStandardOutputAtOnce)
{
    ConsoleLogSink sink;
    ::testing::internal::CaptureStdout();
    const bool written = sink.WriteRaw("a line") && sink.WriteRaw("\n");
    const std::string output = ::testing::internal::GetCapturedStdout();
    EXPECT_TRUE(written);
    EXPECT_EQ(output, "a line\n");
}

TEST_F(LogTest, ManagerStartsWithAConsoleSink)
{
    LogManager manager;
    manager.Config().level = log_error;
    std::ostringstream text;
    text << "message";
    ::testing::internal::CaptureStdout();
    manager.Log(log_error, text, Info("x", 1));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "T00000a2c 2019-06-19T12:16:44.120 x:1 error: message\n");
}

TEST_F(LogTest, ThereIsOneManager)
{
    EXPECT_EQ(GetLogManager(), GetLogManager());
    EXPECT_NE(GetLogManager(), nullptr);
}

// What a log site does.

int built = 0;

const char *Build()
{
    ++built;
    return "built";
}

TEST_F(LogTest, DisabledSiteBuildsNothing)
{
    GetLogManager()->Config().level = log_error;
    built = 0;
    KESSIL_LOG(log_debug, "unit", Build());
    EXPECT_EQ(built, 0);
}

TEST_F(LogTest, SiteGivesItsComponentAndLine)
{
    const auto sink = std::make_shared<RawSink>();
    GetLogManager()->AddSink(sink);
    GetLogManager()->Config().level = log_debug;
    built = 0;
    const int line = __LINE__ + 1;
    KESSIL_LOG(log_debug, "unit", Build() << " " << 7);
    EXPECT_EQ(built, 1);
    ASSERT_THAT(sink->written, SizeIs(2));
    EXPECT_EQ(sink->written[0], "T00000a2c 2019-06-19T12:16:44.120 unit:" + std::to_string(line) + " debug: built 7");
    GetLogManager()->Config().level = log_none;
}

} // namespace
} // namespace kessil::test
