#include "target.h"

#include <cstdlib>

static std::uint32_t Exit()
{
    std::exit(7);
}

TARGET_ANSWERS_WITH(Exit)
