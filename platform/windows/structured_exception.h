#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// Runs `body(argument)` and returns 1 when it returned. A structured exception on this thread, except the compiler's
/// own throws and notifications to a debugger, abandons the run and returns 0. After a stack overflow the stack's guard
/// page is restored.
int KessilRunStructured(void (*body)(void *), void *argument);

#ifdef __cplusplus
}
#endif
