#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace kessil::test {

/// Replaces platform/guard.h: no signal, no watchdog; EndWithin only records its arguments. `fake_guard = FakeGuard()`
/// resets it.
struct FakeGuard
{
    /// How a process that doesn't end by itself would be ended.
    struct Ending
    {
        std::uint32_t milliseconds;
        int exit_code;
    };

    bool can_prepare = true;      ///< what PrepareGuard returns
    std::size_t running = 0;      ///< guarded runs under way
    std::size_t faults = 0;       ///< guarded runs that a fault ended
    std::optional<Ending> ending; ///< since the first EndWithin
};

extern FakeGuard fake_guard;

/// Simulates a hardware fault inside GuardedRun: no frame up to the guard is unwound. Aborts outside of it.
[[noreturn]] void RaiseFakeFault();

} // namespace kessil::test
