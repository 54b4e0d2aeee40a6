#pragma once

#include <cstdint>
#include <map>
#include <vector>

namespace kessil::test {

/// Replaces platform/measurement.h: a machine of four cores, with the processes that the test defines.
/// `fake_measurement = FakeMeasurement()` resets it.
struct FakeMeasurement
{
    struct Process
    {
        std::uint64_t private_bytes = 0;    ///< 0: the system doesn't report it
        std::vector<std::uint32_t> cores{}; ///< the cores that it was bound to
    };

    std::vector<std::uint32_t> cores = {0, 1, 2, 3}; ///< the cores that this process may use
    std::map<std::uint32_t, Process> processes;      ///< by id; this process need not be among them
};

extern FakeMeasurement fake_measurement;

} // namespace kessil::test
