#pragma once

#include <cstdint>

namespace kessil::test {

/// In the place of platform/system_version.h: what the system tells of itself. `fake_system_version = {}` begins anew.
struct FakeSystemVersion
{
    bool tells = true;
    std::uint32_t major = 10;
};

extern FakeSystemVersion fake_system_version;

} // namespace kessil::test
