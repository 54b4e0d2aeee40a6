#include "target.h"

static volatile std::uint32_t g_seven = 7;
static volatile std::uint32_t g_zero = 0;

static std::uint32_t Divide()
{
    return g_seven / g_zero;
}

TARGET_ANSWERS_WITH(Divide)
