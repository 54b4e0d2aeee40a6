#include "platform/local_time.h"

#include "platform/windows/native.h"

namespace kessil::platform {

LocalTime Now()
{
    SYSTEMTIME time;
    GetLocalTime(&time);
    return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds};
}

} // namespace kessil::platform
