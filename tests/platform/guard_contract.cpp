#include "platform/guard.h"

#include "platform/module.h"
#include "surroundings.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <stdexcept>

namespace kessil::test {

namespace {

bool RunGuarded(std::function<void()> body)
{
    static const bool prepared = platform::PrepareGuard();
    EXPECT_TRUE(prepared);
    return platform::GuardedRun([](void *work) { (*static_cast<std::function<void()> *>(work))(); }, &body);
}

class SetsOnDestruction
{
public:
    explicit SetsOnDestruction(bool &flag) : m_flag(flag) {}
    ~SetsOnDestruction() { m_flag = true; }
    SetsOnDestruction(const SetsOnDestruction &) = delete;
    SetsOnDestruction &operator=(const SetsOnDestruction &) = delete;

private:
    bool &m_flag;
};

/// A library's function that returns a number, or doesn't.
class Answer
{
public:
    explicit Answer(const std::string &library) : m_module(platform::LoadModule(TargetLibrary(library)))
    {
        EXPECT_NE(m_module, nullptr);
        void *const found = platform::FindExport(m_module, "Answer");
        EXPECT_NE(found, nullptr);
        m_function = reinterpret_cast<std::uint32_t (*)()>(found);
    }
    ~Answer() { platform::FreeModule(m_module); }
    Answer(const Answer &) = delete;
    Answer &operator=(const Answer &) = delete;

    std::uint32_t operator()() const { return m_function(); }

private:
    platform::ModuleHandle m_module;
    std::uint32_t (*m_function)() = nullptr;
};

} // namespace

TEST(Guard, ReportsThatTheCallReturned)
{
    const Answer plain("plain");
    std::uint32_t answer = 0;
    EXPECT_TRUE(RunGuarded([&] { answer = plain(); }));
    EXPECT_EQ(answer, 42u);
}

TEST(Guard, AbandonsAFault)
{
    const Answer null_write("null_write");
    bool before = false;
    bool after = false;
    EXPECT_FALSE(RunGuarded([&] {
        before = true;
        null_write();
        after = true;
    }));
    EXPECT_TRUE(before);
    EXPECT_FALSE(after);
}

TEST(Guard, StaysUsableAfterAFault)
{
    const Answer null_write("null_write");
    for (int round = 0; round < 3; ++round)
        EXPECT_FALSE(RunGuarded([&] { null_write(); }));
    EXPECT_TRUE(RunGuarded([] {}));
}

TEST(Guard, LetsAnExceptionThroughAndUnwindsForIt)
{
    bool destroyed = false;
    EXPECT_THROW(RunGuarded([&] {
                     const SetsOnDestruction object(destroyed);
                     throw std::runtime_error("thrown inside the guard");
                 }),
                 std::runtime_error);
    EXPECT_TRUE(destroyed);
    EXPECT_TRUE(RunGuarded([] {}));
}

TEST(Guard, LeavesAnExceptionAloneThatStaysInside)
{
    bool caught = false;
    EXPECT_TRUE(RunGuarded([&] {
        try {
            throw std::runtime_error("thrown inside the guard");
        } catch (const std::runtime_error &) {
            caught = true;
        }
    }));
    EXPECT_TRUE(caught);
}

TEST(Guard, LetsALibrarysExceptionThrough)
{
    const Answer throws_own("throws_own");
    bool caught = false;
    try {
        RunGuarded([&] { throws_own(); });
    } catch (...) {
        caught = true;
    }
    EXPECT_TRUE(caught);
}

TEST(EndWithin, EndsAProcessThatHangs)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ExitCodeOfAHangingProcess({{300, 7}}), 7u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST(EndWithin, HonoursOnlyItsFirstCall)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ExitCodeOfAHangingProcess({{300, 7}, {1, 8}, {50000, 9}}), 7u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

} // namespace kessil::test
