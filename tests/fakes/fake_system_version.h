#pragma once

#include <cstdint>

namespace kessil::test {

/// Replaces platform/system_version.h: the version that the system reports. `fake_system_version = {}` resets it.
struct FakeSystemVersion
{
    bool fails = false; ///< whether the system reports none
    std::uint32_t major = 10;
};

extern FakeSystemVersion fake_system_version;

} // namespace kessil::test
