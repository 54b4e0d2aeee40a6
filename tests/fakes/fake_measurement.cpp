#include "fakes/fake_measurement.h"

#include "platform/measurement.h"

#include <algorithm>

namespace kessil {

test::FakeMeasurement test::fake_measurement;

namespace platform {
namespace {

using test::fake_measurement;

bool IsUsable(std::uint32_t core)
{
    return std::ranges::find(fake_measurement.cores, core) != fake_measurement.cores.end();
}

} // namespace

std::vector<std::uint32_t> UsableCores()
{
    return fake_measurement.cores;
}

bool PlaceSelf(std::uint32_t core)
{
    if (!IsUsable(core))
        return false;
    fake_measurement.cores = {core};
    return true;
}

bool PlaceProcess(std::uint32_t process_id, std::uint32_t core)
{
    const auto process = fake_measurement.processes.find(process_id);
    if (process == fake_measurement.processes.end() || !IsUsable(core))
        return false;
    process->second.cores = {core};
    return true;
}

bool ReadPrivateMemory(std::uint32_t process_id, std::uint64_t &bytes)
{
    const auto process = fake_measurement.processes.find(process_id);
    if (process == fake_measurement.processes.end() || process->second.private_bytes == 0)
        return false;
    bytes = process->second.private_bytes;
    return true;
}

} // namespace platform
} // namespace kessil
