#include "platform/windows/structured_exception.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <excpt.h>
#include <malloc.h>

static DWORD abandoned_with;

/* The codes with which the compiler's run-time library throws and unwinds: 0x20, 0x21 or 0x22 before "GCC". */
static int IsOwnThrow(DWORD code)
{
    return code == 0x20474343 || code == 0x21474343 || code == 0x22474343;
}

/* A thread's name, a line for a debugger: raised for whoever watches, and meaningless otherwise. */
static int IsNote(const EXCEPTION_RECORD *record)
{
    const DWORD informational = 1;
    return record->ExceptionCode >> 30 == informational && !(record->ExceptionFlags & EXCEPTION_NONCONTINUABLE);
}

/* Named in assembler text only, so the compiler doesn't see its use. */
__attribute__((used)) long KessilStructuredFilter(EXCEPTION_POINTERS *exception, void *frame);

long KessilStructuredFilter(EXCEPTION_POINTERS *exception, void *frame)
{
    const EXCEPTION_RECORD *record = exception->ExceptionRecord;
    (void)frame;
    if (IsOwnThrow(record->ExceptionCode))
        return EXCEPTION_CONTINUE_SEARCH;
    if (IsNote(record))
        return EXCEPTION_CONTINUE_EXECUTION;
    abandoned_with = record->ExceptionCode;
    return EXCEPTION_EXECUTE_HANDLER;
}

/* The assembler labels of the two macros stand once in a file: no copy of this function may arise. An abandoned call
   goes on at the second macro, with nothing but memory to go by. */
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
