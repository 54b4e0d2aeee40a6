#include "target.h"

#include <chrono>
#include <cstdlib>
#include <semaphore>

static std::binary_semaphore g_never(0);

/// Answers 2 after as many milliseconds as the environment variable KESSIL_DELAY says.
static std::uint32_t AnswerLate()
{
    const char *delay = std::getenv("KESSIL_DELAY");
    (void)g_never.try_acquire_for(std::chrono::milliseconds(delay ? std::strtol(delay, nullptr, 10) : 0));
    return 2;
}

TARGET_ANSWERS_WITH(AnswerLate)
