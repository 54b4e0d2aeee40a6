#include "platform/local_time.h"

#include <ctime>

namespace kessil::platform {

LocalTime Now()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm calendar = {};
    localtime_r(&now.tv_sec, &calendar);
    return {calendar.tm_year + 1900,
            calendar.tm_mon + 1,
            calendar.tm_mday,
            calendar.tm_hour,
            calendar.tm_min,
            calendar.tm_sec,
            static_cast<int>(now.tv_nsec / 1'000'000)};
}

} // namespace kessil::platform
