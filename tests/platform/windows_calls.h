#pragma once

#include "recorded_calls.h"

#include <string>

namespace kessil::test {

/// What the fakes return.
extern void *const fake_pipe;
extern void *const fake_section;
extern void *const fake_view;
extern void *const fake_module;
extern void *const fake_process;
extern void *const fake_user;
extern void *const fake_token;

/// What the fakes tell about this process: no dialogs about alignment faults.
inline constexpr unsigned error_mode_before = 0x4;

/// What is typed at the console from now on. When nothing is left, reading the console fails.
void TypeAtConsole(const std::u16string &units);

/// Tells the routine that was registered last of an event at the console, and returns whether it took it.
bool TellOfConsoleEvent(unsigned long event);

/// What the console is told to be like before anybody changes it.
inline constexpr unsigned long console_mode_before = 0x1F7;

/// What every faked closer leaves as the last error.
inline constexpr unsigned long left_by_closer = 999;

} // namespace kessil::test
