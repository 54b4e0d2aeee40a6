#include "target.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <unwind.h>
#endif

/// Raises an exception as another compiler's code would: on Windows with the code that the system's own compiler
/// throws under, elsewhere with an exception class that no C++ run-time library here knows.
static std::uint32_t ThrowForeign()
{
#ifdef _WIN32
    RaiseException(0xE06D7363, EXCEPTION_NONCONTINUABLE, 0, nullptr);
#else
    static _Unwind_Exception exception = {};
    exception.exception_class = 0x4b45535354455354;
    _Unwind_RaiseException(&exception);
#endif
    return 1;
}

TARGET_ANSWERS_WITH(ThrowForeign)
