#pragma once

#include "fakes/fake_module.h"

#include <cstdint>

namespace kessil::test {

/// A library with the fifteen exports. It trusts no length that it is given, as the parent could have given any, and
/// so it touches no data; everything else it answers from `seed`.
FakeModule::Exports VornStandIn(std::uint8_t seed);

} // namespace kessil::test
