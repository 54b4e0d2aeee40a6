#include "target.h"

static std::uint32_t (*volatile g_nothing)() = nullptr;

static std::uint32_t CallNull()
{
    return g_nothing() + 1;
}

TARGET_ANSWERS_WITH(CallNull)
