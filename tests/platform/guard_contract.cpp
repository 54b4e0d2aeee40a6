#include "child.h"

#include "platform/guard.h"

#include <gtest/gtest.h>

#include <chrono>

namespace kessil::test {

namespace {

std::uint32_t CallInGuard(const std::string &library, int times = 1)
{
    Child child({u"call", TargetLibrary(library), platform::FromUtf8(std::to_string(times))});
    return child.ExitCode();
}

} // namespace

TEST(Guard, TellsThatTheCallReturned)
{
    EXPECT_EQ(CallInGuard("plain"), child_returned);
}

TEST(Guard, AbandonsAWriteThroughNull)
{
    EXPECT_EQ(CallInGuard("null_write"), child_abandoned);
}

TEST(Guard, AbandonsACallThroughNull)
{
    EXPECT_EQ(CallInGuard("null_call"), child_abandoned);
}

TEST(Guard, AbandonsADivisionByZero)
{
    EXPECT_EQ(CallInGuard("divides_by_zero"), child_abandoned);
}

TEST(Guard, AbandonsAnIllegalInstruction)
{
    EXPECT_EQ(CallInGuard("illegal_instruction"), child_abandoned);
}

TEST(Guard, AbandonsAStackOverflow)
{
    EXPECT_EQ(CallInGuard("overflows_stack"), child_abandoned);
}

TEST(Guard, AbandonsOneFaultAfterAnother)
{
    EXPECT_EQ(CallInGuard("null_write", 3), child_abandoned);
}

TEST(Guard, AbandonsOneStackOverflowAfterAnother)
{
    EXPECT_EQ(CallInGuard("overflows_stack", 3), child_abandoned);
}

TEST(Guard, LeavesAFaultOnAnotherThreadToTheSystem)
{
    const std::uint32_t exit_code = CallInGuard("faults_on_thread");
    EXPECT_NE(exit_code, child_returned);
    EXPECT_NE(exit_code, child_abandoned);
    EXPECT_NE(exit_code, 0u);
}

TEST(Guard, LetsAnExceptionThroughAndUnwindsForIt)
{
    EXPECT_EQ(Child({u"throw_through"}).ExitCode(), child_caught);
}

TEST(Guard, LeavesAnExceptionAloneThatStaysInside)
{
    EXPECT_EQ(Child({u"throw_inside"}).ExitCode(), child_returned);
}

TEST(Guard, LetsALibrarysExceptionThrough)
{
    EXPECT_EQ(Child({u"call_and_catch", TargetLibrary("throws_own")}).ExitCode(), child_caught);
}

TEST(Guard, StopsWhatAnotherCompilerThrows)
{
    const std::uint32_t exit_code = Child({u"call_and_catch", TargetLibrary("throws_foreign")}).ExitCode();
    EXPECT_EQ(exit_code, on_windows ? child_abandoned : child_caught);
}

TEST(EndWithin, EndsAProcessThatHangs)
{
    ServedPipe pipe;
    Child child({u"end_hanging", pipe.Name()});
    ASSERT_EQ(pipe.Accept(child.Id()), platform::PipeStatus::Done);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(child.ExitCode(), 7u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST(EndWithin, EndsAProcessThatHangsAfterAFault)
{
    ServedPipe pipe;
    Child child({u"end_after_fault", TargetLibrary("null_write"), pipe.Name()});
    ASSERT_EQ(pipe.Accept(child.Id()), platform::PipeStatus::Done);
    EXPECT_EQ(child.ExitCode(), 7u);
}

TEST(EndWithin, LeavesTheExitCodeToAProcessThatEndsInTime)
{
    EXPECT_EQ(Child({u"end_in_time"}).ExitCode(), 5u);
}

#ifdef _WIN32
// Only there is it a thread that keeps the time.
TEST(EndWithin, DoesNotKeepAProcessAliveWhoseMainThreadIsGone)
{
    EXPECT_EQ(Child({u"end_main_thread"}).ExitCode(), 9u);
}
#endif

} // namespace kessil::test
