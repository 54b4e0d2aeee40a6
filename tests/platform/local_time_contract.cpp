#include "platform/local_time.h"

#include <gtest/gtest.h>

#include <array>

namespace kessil::test {

TEST(LocalTime, IsADayOfTheCalendarAndATimeOfTheDay)
{
    const platform::LocalTime now = platform::Now();
    const bool leap_year = now.year % 4 == 0 && (now.year % 100 != 0 || now.year % 400 == 0);
    const std::array days = {31, leap_year ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    EXPECT_GE(now.year, 2019);
    ASSERT_GE(now.month, 1);
    ASSERT_LE(now.month, 12);
    EXPECT_GE(now.day, 1);
    EXPECT_LE(now.day, days.at(static_cast<std::size_t>(now.month - 1)));
    EXPECT_GE(now.hour, 0);
    EXPECT_LE(now.hour, 23);
    EXPECT_GE(now.minute, 0);
    EXPECT_LE(now.minute, 59);
    EXPECT_GE(now.second, 0);
    EXPECT_LE(now.second, 60);
    EXPECT_GE(now.millisecond, 0);
    EXPECT_LE(now.millisecond, 999);
}

} // namespace kessil::test
