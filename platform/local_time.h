#pragma once

namespace kessil::platform {

/// A moment in local time, as a calendar shows it. Months and days count from 1.
struct LocalTime
{
    int year;
    int month;
    int day;
    int hour;
    int minute;
    int second;
    int millisecond;
};

/// Now, in local time.
LocalTime Now();

} // namespace kessil::platform
