#pragma once

#include "fakes/fake_module.h"

#include <cstddef>
#include <cstdint>

namespace kessil::test {

/// The functions of the stand-in libraries of tests/targets, by name. They read every argument to its end, and write
/// nothing into a parent's block, as the parent could have given any length.
const FakeModule::Exports &Recorders();

/// What they answer from now on: everything from `seed`, and nothing at all for every fourth one. A pointer that they
/// hand out has `readable` bytes behind it.
void ScriptRecorders(std::uint8_t seed, std::size_t readable);

/// The same for the stand-in adapter, which logs now and then. Where `listings` it hands out true ones, that the caller
/// deletes; else addresses that nobody looks behind.
void ScriptAdapter(std::uint8_t seed, bool listings);

} // namespace kessil::test
