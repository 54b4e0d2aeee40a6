#pragma once

#include "recorded_calls.h"

namespace kessil::test {

/// What the fakes return.
inline constexpr int fake_descriptor = 77;
extern unsigned char fake_view[1];
extern bool has_users_group;
extern std::uint32_t fake_section_size;

/// What one call moves.
extern int bytes_per_call;

/// What poll finds.
extern short fake_poll_events;

/// What every faked closer leaves as the last error.
inline constexpr int left_by_closer = 999;

} // namespace kessil::test
