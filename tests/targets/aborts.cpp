#include "target.h"

#include <cstdlib>

static std::uint32_t Abort()
{
    std::abort();
}

TARGET_ANSWERS_WITH(Abort)
