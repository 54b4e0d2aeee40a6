#include "leave_last_error.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <cerrno>
#endif

void LeaveLastError(std::uint32_t code)
{
#ifdef _WIN32
    SetLastError(code);
#else
    errno = static_cast<int>(code);
#endif
}
