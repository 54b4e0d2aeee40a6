#pragma once

#include <cstddef>

namespace kessil::test {

/// In the place of platform/guard.h: no signal, no watchdog; EndWithin is only written down in the call log.
/// `fake_guard = FakeGuard()` begins anew.
struct FakeGuard
{
    bool can_prepare = true; ///< what PrepareGuard says
    std::size_t running = 0; ///< guarded runs under way
    std::size_t faults = 0;  ///< guarded runs that a fault ended
};

extern FakeGuard fake_guard;

/// Plays a hardware fault inside GuardedRun: no frame up to the guard is unwound. Aborts outside of it.
[[noreturn]] void RaiseFakeFault();

} // namespace kessil::test
