#include "platform/measurement.h"

#include <fstream>
#include <sched.h>
#include <string>

namespace kessil::platform {
namespace {

bool Place(pid_t thread, std::uint32_t core)
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(core, &cores);
    return sched_setaffinity(thread, sizeof cores, &cores) == 0;
}

} // namespace

std::vector<std::uint32_t> UsableCores()
{
    std::vector<std::uint32_t> usable;
    cpu_set_t cores;
    CPU_ZERO(&cores);
    if (sched_getaffinity(0, sizeof cores, &cores) != 0)
        return usable;
    for (std::uint32_t core = 0; core < CPU_SETSIZE; ++core) {
        if (CPU_ISSET(core, &cores))
            usable.push_back(core);
    }
    return usable;
}

bool PlaceSelf(std::uint32_t core)
{
    return Place(0, core);
}

bool PlaceProcess(std::uint32_t process_id, std::uint32_t core)
{
    return Place(static_cast<pid_t>(process_id), core);
}

// The lines look like "Private_Dirty:       128 kB".
bool ReadPrivateMemory(std::uint32_t process_id, std::uint64_t &bytes)
{
    std::ifstream rollup("/proc/" + std::to_string(process_id) + "/smaps_rollup");
    bool found = false;
    bytes = 0;
    for (std::string line; std::getline(rollup, line);) {
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos || line.compare(0, 8, "Private_") != 0)
            continue;
        bytes += std::stoull(line.substr(colon + 1)) * 1024;
        found = true;
    }
    return found;
}

} // namespace kessil::platform
