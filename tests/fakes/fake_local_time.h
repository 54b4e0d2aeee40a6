#pragma once

#include "platform/local_time.h"

namespace kessil::test {

/// In the place of platform/local_time.h: what Now says.
extern platform::LocalTime fake_now;

} // namespace kessil::test
