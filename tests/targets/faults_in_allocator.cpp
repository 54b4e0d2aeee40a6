#include "target.h"

#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#else
#include <semaphore>
#include <thread>
#endif

/// Faults while the lock of the process's own heap is held: on Windows plainly, on Linux inside malloc, by way of a
/// link of its free list overwritten after a free. The C library takes that lock only in a process of several threads,
/// hence the thread that waits for ever. A sanitizer's allocator has no such list; the fault then comes all the same,
/// but leaves no lock behind.
static volatile int *volatile g_nowhere = nullptr;

#ifdef _WIN32

static void HoldHeapLock()
{
    HeapLock(GetProcessHeap());
}

#else

static std::binary_semaphore g_never(0);

static void HoldHeapLock()
{
    std::thread([] { g_never.acquire(); }).detach();

    using Link = void *volatile;
    static Link *volatile freed;
    static void *volatile kept [[maybe_unused]];
    const std::size_t too_large_for_a_thread_cache = 4096;

    freed = static_cast<Link *>(std::malloc(too_large_for_a_thread_cache));
    kept = std::malloc(too_large_for_a_thread_cache); // keeps the first block apart from the heap's top
    Link *const links = freed;
    std::free(const_cast<void **>(freed));
    links[1] = nullptr; // NOLINT(clang-analyzer-unix.Malloc): the write after the free is the purpose
    kept = std::malloc(2 * too_large_for_a_thread_cache);
}

#endif

static std::uint32_t FaultInAllocator()
{
    HoldHeapLock();
    *g_nowhere = 1;
    return 1;
}

TARGET_ANSWERS_WITH(FaultInAllocator)
