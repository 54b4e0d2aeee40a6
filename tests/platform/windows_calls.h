#pragma once

#include "recorded_calls.h"

namespace kessil::test {

/// What the fakes return.
extern void *const fake_pipe;
extern void *const fake_section;
extern void *const fake_view;
extern void *const fake_module;

/// What the fakes tell about this process: no dialogs about alignment faults.
inline constexpr unsigned error_mode_before = 0x4;

/// What every faked closer leaves as the last error.
inline constexpr unsigned long left_by_closer = 999;

} // namespace kessil::test
