#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// Runs `body(argument)` and returns 1 when it returned. A structured exception on this thread, other than the
/// compiler's own throw and notes to a debugger, abandons it and returns 0. After a stack overflow the stack's guard
/// page is back in place.
int KessilRunStructured(void (*body)(void *), void *argument);

#ifdef __cplusplus
}
#endif
