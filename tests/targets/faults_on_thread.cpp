#include "target.h"

#include <thread>

static volatile int *volatile g_nowhere = nullptr;

static std::uint32_t FaultOnThread()
{
    std::thread([] { *g_nowhere = 1; }).join();
    return 1;
}

TARGET_ANSWERS_WITH(FaultOnThread)
