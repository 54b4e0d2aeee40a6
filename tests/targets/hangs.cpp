#include "target.h"

#include <semaphore>

static std::binary_semaphore g_never(0);

static std::uint32_t Hang()
{
    g_never.acquire();
    return 1;
}

TARGET_ANSWERS_WITH(Hang)
