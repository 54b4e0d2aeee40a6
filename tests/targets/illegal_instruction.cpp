#include "target.h"

static std::uint32_t Execute()
{
    __builtin_trap();
}

TARGET_ANSWERS_WITH(Execute)
