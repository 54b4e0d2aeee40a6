#include "target.h"

#include <new>

static std::uint32_t Throw()
{
    throw std::bad_alloc();
}

TARGET_ANSWERS_WITH(Throw)
