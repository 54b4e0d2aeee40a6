#pragma once

#include <cstdint>
#include <map>
#include <vector>

namespace kessil::test {

/// In the place of platform/measurement.h: a machine of four cores, and the processes on it that the test tells of.
/// `fake_measurement = FakeMeasurement()` begins anew.
struct FakeMeasurement
{
    struct Process
    {
        std::uint64_t private_bytes = 0;    ///< 0: the system doesn't tell
        std::vector<std::uint32_t> cores{}; ///< that it was placed on
    };

    std::vector<std::uint32_t> cores = {0, 1, 2, 3}; ///< that this process may use
    std::map<std::uint32_t, Process> processes;      ///< by their numbers; this one need not be among them
};

extern FakeMeasurement fake_measurement;

} // namespace kessil::test
