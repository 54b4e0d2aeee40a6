#include "platform/guard.h"

#include "platform/windows/ending.h"
#include "platform/windows/native.h"
#include "platform/windows/structured_exception.h"

#include <cstdlib>
#include <malloc.h>
#include <process.h>

namespace kessil::platform {

namespace {

/// The stack space that the filter and the functions that it calls may use after a stack overflow.
constexpr ULONG overflow_stack_size = 64 * 1024;
constexpr SIZE_T watchdog_stack_size = 64 * 1024;

/// Ends the process a given time after EndWithin was called, or when the main thread has ended: otherwise the
/// watchdog's own thread would keep an idle process alive.
struct Watchdog
{
    HANDLE requested;
    HANDLE awake;
    HANDLE main_thread;
    DWORD milliseconds;
    UINT exit_code;
    bool ready;
    bool running;
};

Watchdog g_watchdog;

[[noreturn]] void EndNow(UINT exit_code)
{
    TerminateProcess(GetCurrentProcess(), exit_code);
    std::abort();
}

// Takes no lock and allocates nothing: the fault may have left both in any state.
DWORD WINAPI Watch(void *)
{
    const HANDLE events[] = {g_watchdog.requested, g_watchdog.main_thread};
    if (WaitForMultipleObjects(2, events, FALSE, INFINITE) != WAIT_OBJECT_0) {
        DWORD exit_code = EXIT_FAILURE;
        GetExitCodeThread(g_watchdog.main_thread, &exit_code);
        EndNow(exit_code);
    }
    SetEvent(g_watchdog.awake);
    Sleep(g_watchdog.milliseconds);
    EndNow(g_watchdog.exit_code);
}

bool OpenMainThread()
{
    const HANDLE process = GetCurrentProcess();
    return DuplicateHandle(process, GetCurrentThread(), process, &g_watchdog.main_thread, 0, FALSE,
                           DUPLICATE_SAME_ACCESS) != 0;
}

bool StartWatchdog()
{
    g_watchdog.requested = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    g_watchdog.awake = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (!g_watchdog.requested || !g_watchdog.awake || !OpenMainThread())
        return false;
    const HANDLE thread =
        CreateThread(nullptr, watchdog_stack_size, Watch, nullptr, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (thread)
        CloseHandle(thread);
    return thread != nullptr;
}

/// Lets GuardedRun handle a stack overflow, where the system supports that.
void ReserveOverflowStack()
{
    ULONG size = overflow_stack_size;
    SetThreadStackGuarantee(&size);
    // Adds a guard page if there is none: Wine commits the main thread's whole stack, and without a guard page above it
    // the reserve has no effect.
    _resetstkoflw();
}

} // namespace

bool PrepareGuard()
{
    ReserveOverflowStack();
    g_watchdog.ready = StartWatchdog();
    return g_watchdog.ready;
}

bool GuardedRun(void (*body)(void *), void *argument)
{
    if (g_watchdog.ready)
        return KessilRunStructured(body, argument) != 0;
    body(argument);
    return true;
}

void EndWithin(std::uint32_t milliseconds, int exit_code)
{
    if (g_watchdog.running)
        return;
    g_watchdog.milliseconds = milliseconds;
    g_watchdog.exit_code = static_cast<UINT>(exit_code);
    g_watchdog.running = true;
    SetEvent(g_watchdog.requested);
    // A fault in a library's start-up code leaves a lock held that a thread needs in order to start. If the watchdog
    // doesn't respond, this thread keeps the time.
    if (WaitForSingleObject(g_watchdog.awake, milliseconds) != WAIT_OBJECT_0)
        EndNow(g_watchdog.exit_code);
}

void EndBounded(int exit_code)
{
    if (!g_watchdog.running)
        return;
    _cexit();
    EndNow(static_cast<UINT>(exit_code));
}

} // namespace kessil::platform
