#include "child.h"

#include <gtest/gtest.h>

namespace kessil::test {

namespace {

/// Each in a process of its own: a fault that the guard lets through ends it.
std::uint32_t CallInGuard(const std::string &library, int times = 1)
{
    Child child({u"call", TargetLibrary(library), platform::FromUtf8(std::to_string(times))});
    return child.ExitCode();
}

} // namespace

TEST(GuardSystem, AbandonsACallThroughNull)
{
    EXPECT_EQ(CallInGuard("null_call"), child_abandoned);
}

TEST(GuardSystem, AbandonsADivisionByZero)
{
    EXPECT_EQ(CallInGuard("divides_by_zero"), child_abandoned);
}

TEST(GuardSystem, AbandonsAnIllegalInstruction)
{
    EXPECT_EQ(CallInGuard("illegal_instruction"), child_abandoned);
}

TEST(GuardSystem, AbandonsAStackOverflow)
{
    EXPECT_EQ(CallInGuard("overflows_stack"), child_abandoned);
}

TEST(GuardSystem, AbandonsOneStackOverflowAfterAnother)
{
    EXPECT_EQ(CallInGuard("overflows_stack", 3), child_abandoned);
}

TEST(GuardSystem, LeavesAFaultOnAnotherThreadToTheSystem)
{
    const std::uint32_t exit_code = CallInGuard("faults_on_thread");
    EXPECT_NE(exit_code, child_returned);
    EXPECT_NE(exit_code, child_abandoned);
    EXPECT_NE(exit_code, 0u);
}

TEST(GuardSystem, StopsWhatAnotherCompilerThrows)
{
    const std::uint32_t exit_code = Child({u"call_and_catch", TargetLibrary("throws_foreign")}).ExitCode();
    EXPECT_EQ(exit_code, on_windows ? child_abandoned : child_caught);
}

TEST(EndWithinSystem, EndsAProcessThatHangsAfterAFault)
{
    ServedPipe pipe;
    Child child({u"end_after_fault", TargetLibrary("null_write"), pipe.Name()});
    ASSERT_EQ(pipe.Accept(child.Id()), platform::PipeStatus::Done);
    EXPECT_EQ(child.ExitCode(), 7u);
}

TEST(EndWithinSystem, LeavesTheExitCodeToAProcessThatEndsInTime)
{
    EXPECT_EQ(Child({u"end_in_time"}).ExitCode(), 5u);
}

#ifdef _WIN32
// Only on Windows does a thread keep the time.
TEST(EndWithinSystem, DoesNotKeepAProcessAliveWhoseMainThreadIsGone)
{
    EXPECT_EQ(Child({u"end_main_thread"}).ExitCode(), 9u);
}
#endif

} // namespace kessil::test
