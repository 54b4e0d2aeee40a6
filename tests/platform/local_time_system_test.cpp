#include "platform/local_time.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>

namespace kessil::test {

namespace {

std::time_t Seconds(const platform::LocalTime &time)
{
    std::tm calendar = {};
    calendar.tm_year = time.year - 1900;
    calendar.tm_mon = time.month - 1;
    calendar.tm_mday = time.day;
    calendar.tm_hour = time.hour;
    calendar.tm_min = time.minute;
    calendar.tm_sec = time.second;
    calendar.tm_isdst = -1;
    return std::mktime(&calendar);
}

std::int64_t Milliseconds(const platform::LocalTime &time)
{
    return std::int64_t{Seconds(time)} * 1000 + time.millisecond;
}

std::tm Calendar()
{
    const std::time_t now = std::time(nullptr);
    return *std::localtime(&now);
}

std::int64_t SystemMilliseconds()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace

TEST(LocalTimeSystem, IsNow)
{
    // The two clocks of a system may be a tick apart.
    constexpr std::int64_t tick = 20;
    const std::int64_t before = SystemMilliseconds();
    const platform::LocalTime now = platform::Now();
    const std::int64_t after = SystemMilliseconds();

    EXPECT_GE(Milliseconds(now), before - tick);
    EXPECT_LE(Milliseconds(now), after + tick);
}

TEST(LocalTimeSystem, ShowsTheCalendarsDay)
{
    std::tm before = {};
    std::tm after = {};
    platform::LocalTime now = {};
    // Once more where a midnight came in between.
    do {
        before = Calendar();
        now = platform::Now();
        after = Calendar();
    } while (before.tm_mday != after.tm_mday);

    EXPECT_EQ(now.year, after.tm_year + 1900);
    EXPECT_EQ(now.month, after.tm_mon + 1);
    EXPECT_EQ(now.day, after.tm_mday);
}

TEST(LocalTimeSystem, HasMillisecondsThatMove)
{
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    const int first = platform::Now().millisecond;
    int next = first;
    while (next == first && std::chrono::steady_clock::now() < limit)
        next = platform::Now().millisecond;
    EXPECT_NE(next, first);
    EXPECT_GE(next, 0);
    EXPECT_LE(next, 999);
}

} // namespace kessil::test
