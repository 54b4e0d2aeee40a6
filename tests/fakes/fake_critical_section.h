#pragma once

#include <cstdint>
#include <vector>

namespace kessil::test {

/// Replaces platform/critical_section.h: locks that also count. Leaving a lock that isn't held aborts.
/// `fake_critical_section = FakeCriticalSection()` resets it; existing locks go on counting here.
struct FakeCriticalSection
{
    bool usable = true;                     ///< whether locks created from now on are usable
    std::vector<std::uint32_t> spin_counts; ///< of every lock created
    int held = 0;                           ///< locks held now
    int entered = 0;                        ///< how often any usable lock was entered
};

extern FakeCriticalSection fake_critical_section;

} // namespace kessil::test
