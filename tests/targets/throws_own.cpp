#include "target.h"

#include <stdexcept>

static std::uint32_t Throw()
{
    throw std::runtime_error("thrown by a hosted library");
}

TARGET_ANSWERS_WITH(Throw)
