#pragma once

#include <cstdint>

namespace kessil::test {

/// In the place of platform/thread.h: every thread has this number.
extern std::uint32_t fake_thread_id;

} // namespace kessil::test
