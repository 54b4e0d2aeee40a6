#include "platform/guard.h"

#include <array>
#include <csetjmp>
#include <csignal>
#include <sys/time.h>
#include <unistd.h>
#include <unwind.h>
#include <utility>

namespace kessil::platform {
namespace {

constexpr std::array fault_signals = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};

// After a stack overflow the thread's own stack has no room for the handler.
alignas(16) std::array<unsigned char, 65536> g_faultStack;

sigjmp_buf g_return;
pid_t g_guardedThread = 0;
volatile std::sig_atomic_t g_inGuard = 0;
int g_endCode = 0;
bool g_ending = false;

void OnFault(int signal, siginfo_t *info, void * /*context*/)
{
    const bool raisedByKernel = info->si_code > 0;
    if (raisedByKernel && g_inGuard != 0 && gettid() == g_guardedThread) {
        g_inGuard = 0;
        siglongjmp(g_return, 1);
    }
    // Not for the guard: the default action applies, when the instruction faults again or when the signal is raised
    // here.
    struct sigaction defaultAction = {};
    defaultAction.sa_handler = SIG_DFL;
    sigaction(signal, &defaultAction, nullptr);
    if (!raisedByKernel)
        raise(signal);
}

void OnTimeUp(int /*signal*/)
{
    _exit(g_endCode);
}

// The exceptions of a library with an unwinder of its own pass into this program's frames, and from there into this
// program's unwinder, which works only after a first use.
void InitialiseUnwinder()
{
    _Unwind_Backtrace([](_Unwind_Context *, void *) { return _URC_END_OF_STACK; }, nullptr);
}

} // namespace

bool PrepareGuard()
{
    InitialiseUnwinder();
    stack_t stack = {};
    stack.ss_sp = g_faultStack.data();
    stack.ss_size = g_faultStack.size();
    bool prepared = sigaltstack(&stack, nullptr) == 0;

    struct sigaction action = {};
    action.sa_sigaction = OnFault;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (const int signal : fault_signals)
        prepared = sigaction(signal, &action, nullptr) == 0 && prepared;
    return prepared;
}

bool GuardedRun(void (*body)(void *), void *argument)
{
    if (sigsetjmp(g_return, 1) != 0)
        return false;
    g_guardedThread = gettid();
    g_inGuard = 1;
    try {
        body(argument);
    } catch (...) {
        g_inGuard = 0;
        throw;
    }
    g_inGuard = 0;
    return true;
}

void EndWithin(std::uint32_t milliseconds, int exit_code)
{
    if (std::exchange(g_ending, true))
        return;
    g_endCode = exit_code;
    struct sigaction action = {};
    action.sa_handler = OnTimeUp;
    sigaction(SIGALRM, &action, nullptr);
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);

    itimerval time = {};
    time.it_value.tv_sec = milliseconds / 1000;
    time.it_value.tv_usec = static_cast<suseconds_t>(milliseconds % 1000) * 1000;
    setitimer(ITIMER_REAL, &time, nullptr);
}

} // namespace kessil::platform
