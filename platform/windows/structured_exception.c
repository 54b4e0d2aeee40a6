#include "platform/windows/structured_exception.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <excpt.h>
#include <malloc.h>

static DWORD abandoned_with;

/* The codes that the compiler's run-time library throws and unwinds with: 0x20, 0x21 or 0x22 before "GCC". */
static int IsOwnThrow(DWORD code)
{
    return code == 0x20474343 || code == 0x21474343 || code == 0x22474343;
}

/* Notifications to a debugger, such as a thread's name or a line of output; they have no other effect. */
static int IsDebuggerNotification(const EXCEPTION_RECORD *record)
{
    const DWORD informational = 1;
    return record->ExceptionCode >> 30 == informational && !(record->ExceptionFlags & EXCEPTION_NONCONTINUABLE);
}

/* Referenced only in assembler text, so the compiler doesn't see the reference. */
__attribute__((used)) long KessilStructuredFilter(EXCEPTION_POINTERS *exception, void *frame);

long KessilStructuredFilter(EXCEPTION_POINTERS *exception, void *frame)
{
    const EXCEPTION_RECORD *record = exception->ExceptionRecord;
    (void)frame;
    if (IsOwnThrow(record->ExceptionCode))
        return EXCEPTION_CONTINUE_SEARCH;
    if (IsDebuggerNotification(record))
        return EXCEPTION_CONTINUE_EXECUTION;
    abandoned_with = record->ExceptionCode;
    return EXCEPTION_EXECUTE_HANDLER;
}

/* The two macros define assembler labels, which must be unique in a file: the compiler must not copy this function. An
   abandoned call continues at the second macro, where no register is valid, only memory. */
__attribute__((noinline, noclone)) int KessilRunStructured(void (*body)(void *), void *argument)
{
    volatile int returned = 0;
    __try1(KessilStructuredFilter);
    body(argument);
    returned = 1;
    __except1;
    if (!returned && abandoned_with == EXCEPTION_STACK_OVERFLOW)
        _resetstkoflw();
    return returned;
}
