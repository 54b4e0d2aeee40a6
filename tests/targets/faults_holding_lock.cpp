#include "target.h"

#include <semaphore>

/// Faults while it holds a lock that its own end-of-life code waits for: whoever unloads it waits for ever.
namespace {

std::binary_semaphore lock(1);
volatile int *volatile g_nowhere = nullptr;

struct TakesLockAtEnd
{
    ~TakesLockAtEnd()
    {
        lock.acquire();
        lock.release();
    }
};

const TakesLockAtEnd takes_lock_at_end;

std::uint32_t FaultHoldingLock()
{
    lock.acquire();
    *g_nowhere = 1;
    lock.release();
    return 1;
}

} // namespace

TARGET_ANSWERS_WITH(FaultHoldingLock)
