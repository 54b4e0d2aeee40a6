#pragma once

#include "recorded_calls.h"

namespace kessil::test {

/// What the fakes return.
inline constexpr int fake_descriptor = 77;
extern unsigned char fake_view[1];
extern bool has_users_group;
extern std::uint32_t fake_section_size;

/// The number of bytes that one call transfers.
extern int bytes_per_call;

/// The events that poll returns.
extern short fake_poll_events;

/// The last error that every fake closer leaves.
inline constexpr int left_by_closer = 999;

} // namespace kessil::test
