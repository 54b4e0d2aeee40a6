#include "target.h"

static volatile int *volatile g_nowhere = nullptr;

static std::uint32_t WriteNull()
{
    *g_nowhere = 1;
    return 1;
}

TARGET_ANSWERS_WITH(WriteNull)
