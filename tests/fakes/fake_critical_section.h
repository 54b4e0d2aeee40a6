#pragma once

#include <cstdint>
#include <vector>

namespace kessil::test {

/// In the place of platform/critical_section.h: locks that also count. Leaving a lock that isn't held aborts.
/// `fake_critical_section = FakeCriticalSection()` begins anew; locks made before go on counting here.
struct FakeCriticalSection
{
    bool usable = true;                     ///< whether locks made from now on could be set up
    std::vector<std::uint32_t> spin_counts; ///< of every lock made
    int held = 0;                           ///< locks held now
    int entered = 0;                        ///< how often any usable lock was entered
};

extern FakeCriticalSection fake_critical_section;

} // namespace kessil::test
