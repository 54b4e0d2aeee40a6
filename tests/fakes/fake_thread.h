#pragma once

#include <cstdint>

namespace kessil::test {

/// Replaces platform/thread.h: every thread has this id.
extern std::uint32_t fake_thread_id;

} // namespace kessil::test
