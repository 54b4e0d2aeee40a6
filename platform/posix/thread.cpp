#include "platform/thread.h"

#include <unistd.h>

namespace kessil::platform {

std::uint32_t CurrentThreadId()
{
    return static_cast<std::uint32_t>(gettid());
}

} // namespace kessil::platform
