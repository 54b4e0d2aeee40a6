#pragma once

#include "platform/local_time.h"

namespace kessil::test {

/// Replaces platform/local_time.h: what Now returns.
extern platform::LocalTime fake_now;

} // namespace kessil::test
