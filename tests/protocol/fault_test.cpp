#include "protocol/conversation.h"
#include "protocol/recorder.h"
#include "support/set_variable.h"

#include <gtest/gtest.h>

#include <ostream>

namespace kessil::test {
namespace {

// The parent's view of a library that goes wrong in a call: no reply, the pipe closes, the exit code is 0, nothing is
// printed, and the libraries are released in the order of their names.
class Misbehaving : public testing::TestWithParam<const char *>
{};

TEST_P(Misbehaving, EndsTheRunInOrder)
{
    const Recorder recorder;
    Conversation talk(0, {});
    const Section section = Announce(talk, 16);
    talk.Load(TargetLibrary("records_lifetime_b"));
    talk.Load(TargetLibrary(GetParam()));
    talk.Load(TargetLibrary("records_lifetime"));
    talk.Send(CallFrame(TargetLibrary(GetParam()), "GetBackupType", "SIGNATURE_GetBackupType"));
    talk.ExpectClosed();
    talk.End();
    EXPECT_EQ(talk.Helper().Log(), "");
    EXPECT_EQ(recorder.Lines(), "records_lifetime_b attach\nrecords_lifetime attach\n"
                                "records_lifetime detach\nrecords_lifetime_b detach\n");
    section.Expect(0, Repeat(0, 16));
}

TEST_P(Misbehaving, LogsItsClosingAtTheDebugLevel)
{
    Conversation talk(0);
    const Section section = Announce(talk, 16);
    talk.Load(TargetLibrary(GetParam()));
    talk.Send(CallFrame(u"", "Answer", "SIGNATURE_GetLibApiVersion"));
    talk.ExpectClosed();
    talk.End();
    EXPECT_TRUE(talk.Helper().PlainLog().ends_with("commfunc debug: Closing handle m_hSharedMemory #\n"
                                                   "commfunc debug: Closing handle m_hNamedPipe #\n"))
        << talk.Helper().PlainLog();
}

INSTANTIATE_TEST_SUITE_P(Libraries, Misbehaving,
                         testing::Values("throws_own", "throws_own_static", "throws_bad_alloc", "throws_foreign",
                                         "null_write", "null_call", "divides_by_zero", "illegal_instruction",
                                         "overflows_stack"),
                         [](const auto &each) { return std::string(each.param); });

// The release of the library blocks on a lock that the fault left held; the run ends nevertheless, within two seconds.
class HoldingALock : public testing::TestWithParam<const char *>
{};

TEST_P(HoldingALock, EndsTheRunWithinSeconds)
{
    // The thread sanitizer keeps the signal that ends the run from a thread that waits where it doesn't see it.
    const bool kept_from_ending = sanitizers == "thread" && GetParam() == std::string_view("faults_holding_lock");
    // What a library leaves behind in a fault is not a leak of the helper.
    SetVariable("ASAN_OPTIONS", "detect_leaks=0");
    const auto before = std::chrono::steady_clock::now();
    Conversation talk(kept_from_ending ? 128 + 9 : 0, {});
    const Section section = Announce(talk, 16);
    talk.Load(TargetLibrary(GetParam()));
    talk.Send(CallFrame(u"", "GetBackupType", "SIGNATURE_GetBackupType"));
    if (kept_from_ending)
        platform::KillProcess(talk.Helper().Process());
    talk.ExpectClosed();
    talk.End();
    EXPECT_LE(std::chrono::steady_clock::now() - before, std::chrono::seconds(10));
}

INSTANTIATE_TEST_SUITE_P(Libraries, HoldingALock, testing::Values("faults_holding_lock", "faults_in_allocator"),
                         [](const auto &each) { return std::string(each.param); });

// A fault on another thread, or an end that the library asks for, ends the process as the system does it.
struct Ending
{
    const char *library;
    std::uint32_t on_linux;
    std::uint32_t on_windows;
};

void PrintTo(const Ending &ending, std::ostream *out)
{
    *out << ending.library;
}

class KeepingTheDefault : public testing::TestWithParam<Ending>
{};

TEST_P(KeepingTheDefault, EndsTheRunAsTheSystemHasIt)
{
    const Ending &ending = GetParam();
    Conversation talk(on_windows ? ending.on_windows : ending.on_linux, {});
    const Section section = Announce(talk, 16);
    talk.Load(TargetLibrary(ending.library));
    talk.Send(CallFrame(u"", "GetBackupType", "SIGNATURE_GetBackupType"));
    talk.ExpectClosed();
}

// A signal shows as its number plus 128.
INSTANTIATE_TEST_SUITE_P(Libraries, KeepingTheDefault,
                         testing::Values(Ending{"faults_on_thread", 128 + 11, 0xC0000005}, Ending{"aborts", 128 + 6, 3},
                                         Ending{"exits", 7, 7}),
                         [](const auto &each) { return std::string(each.param.library); });

// A fault ends its own run and no other.
TEST(Fault, LeavesOtherHelpersAlone)
{
    Conversation other(0, {});
    const Section section = Announce(other, 16);
    other.Load(TargetLibrary("plain"));
    {
        Conversation talk(0, {});
        const Section its_own = Announce(talk, 16);
        talk.Load(TargetLibrary("null_write"));
        talk.Send(CallFrame(u"", "GetBackupType", "SIGNATURE_GetBackupType"));
        talk.ExpectClosed();
    }
    other.Call("GetBackupType");
    section.Expect(0, Hex("00000007"));
    other.Send(OrderlyStop());
}

// Requests that follow on the one that went wrong are never read.
TEST(Fault, LeavesLaterRequestsUnread)
{
    Conversation talk(0, {});
    const Section section = Announce(talk, 16);
    talk.Load(TargetLibrary("null_write"));
    const Bytes call = CallFrame(u"", "GetBackupType", "SIGNATURE_GetBackupType");
    talk.Send(call + call + OrderlyStop());
    talk.ExpectClosed();
}

// A section that a helper made itself goes with it, also when it ends in a fault before the parent has answered.
TEST(Fault, LeavesNoNameBehind)
{
    Conversation talk(0, {});
    const Section section = Announce(talk, 3);
    talk.Load(TargetLibrary("plain"));
    talk.Load(TargetLibrary("null_write"));
    talk.Send(CallFrame(TargetLibrary("plain"), "GetBackupType", "SIGNATURE_GetBackupType"));
    talk.Expect(ResizeFrame(talk.SectionName(u'0'), 4));
    talk.Send(SuccessFrame());
    talk.Expect(SuccessFrame());
    talk.Send(CallFrame(TargetLibrary("null_write"), "GetBackupType", "SIGNATURE_GetBackupType"));
    talk.ExpectClosed();
}

// Nothing is read while a target runs, so it is the parent that has to end one that never returns.
TEST(Fault, HungTargetIsKilled)
{
    Conversation talk(128 + 9, {});
    const Section section = Announce(talk, 16);
    talk.Load(TargetLibrary("hangs"));
    talk.Send(CallFrame(u"", "GetBackupType", "SIGNATURE_GetBackupType"));
    platform::KillProcess(talk.Helper().Process());
    talk.ExpectClosed();
}

} // namespace
} // namespace kessil::test
