#include "target.h"

static volatile bool g_for_ever = true;

static std::uint32_t Descend(std::uint32_t depth)
{
    volatile unsigned char frame[512];
    frame[depth % sizeof frame] = 1;
    const std::uint32_t below = g_for_ever ? Descend(depth + 1) : 0;
    return below + frame[depth % sizeof frame];
}

static std::uint32_t Overflow()
{
    return Descend(0);
}

TARGET_ANSWERS_WITH(Overflow)
