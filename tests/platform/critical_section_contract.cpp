#include "platform/critical_section.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace kessil::test {

using platform::CriticalSection;

namespace {

constexpr int thread_count = 4;
constexpr int rounds = 20000;

void OnAllThreads(const std::function<void()> &work)
{
    std::vector<std::thread> threads;
    threads.reserve(thread_count);
    for (int i = 0; i < thread_count; ++i)
        threads.emplace_back(work);
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace

TEST(CriticalSection, LetsOneThreadInAtATime)
{
    CriticalSection section(1024);
    std::atomic<int> inside = 0;
    std::atomic<int> most_inside = 0;
    int plain_count = 0;

    OnAllThreads([&] {
        for (int i = 0; i < rounds; ++i) {
            const std::lock_guard lock(section);
            const int now = ++inside;
            if (now > most_inside)
                most_inside = now;
            ++plain_count;
            --inside;
        }
    });

    EXPECT_EQ(most_inside, 1);
    EXPECT_EQ(plain_count, thread_count * rounds);
}

TEST(CriticalSection, KeepsAThreadOutUntilItIsLeft)
{
    CriticalSection section(0);
    std::atomic<bool> left = false;
    bool left_before_entry = false;

    section.lock();
    std::thread waiting([&] {
        const std::lock_guard lock(section);
        left_before_entry = left;
    });
    left = true;
    section.unlock();
    waiting.join();

    EXPECT_TRUE(left_before_entry);
}

TEST(CriticalSection, IsIndependentOfAnother)
{
    CriticalSection first(1024);
    CriticalSection second(1024);
    const std::lock_guard holding(first);
    bool entered = false;
    std::thread([&] {
        const std::lock_guard lock(second);
        entered = true;
    }).join();
    EXPECT_TRUE(entered);
}

} // namespace kessil::test
