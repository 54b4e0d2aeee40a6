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

/// What the fakes report about this process: no dialogs about alignment faults.
inline constexpr unsigned error_mode_before = 0x4;

/// Sets what is typed at the console from now on. When nothing is left, reading the console fails.
void TypeAtConsole(const std::u16string &units);

/// Reports an event at the console to the routine that was registered last, and returns whether it handled it.
bool SendConsoleEvent(unsigned long event);

/// The console's mode before anybody changes it.
inline constexpr unsigned long console_mode_before = 0x1F7;

/// The last error that every fake closer leaves.
inline constexpr unsigned long left_by_closer = 999;

} // namespace kessil::test
