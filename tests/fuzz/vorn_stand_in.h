#pragma once

#include "fakes/fake_module.h"
#include "marshal/signature_row.h"

#include <cstdint>
#include <span>

namespace kessil::test {

/// A library with the fifteen exports. It trusts no length that it is given, as the parent could have given any, and
/// so it touches no data; everything else it answers from `seed`.
FakeModule::Exports VornStandIn(std::uint8_t seed);

/// The rows of its fifteen signatures, the same for both generations. A parent may name any function beside any
/// signature, and what comes of that depends on the library; here the handler calls the signature's own function all
/// the same.
std::span<const SignatureRow> VornStandInRows();

} // namespace kessil::test
