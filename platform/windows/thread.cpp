#include "platform/thread.h"

#include "platform/windows/native.h"

namespace kessil::platform {

std::uint32_t CurrentThreadId()
{
    return GetCurrentThreadId();
}

} // namespace kessil::platform
