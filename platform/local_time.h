#pragma once

namespace kessil::platform {

/// A point in local time as calendar fields. Months and days count from 1.
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

/// The current local time.
LocalTime Now();

} // namespace kessil::platform
