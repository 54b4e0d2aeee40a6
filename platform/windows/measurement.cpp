#include "platform/measurement.h"

#include "platform/windows/handle.h"

#include <psapi.h>

namespace kessil::platform {
namespace {

bool Place(HANDLE process, std::uint32_t core)
{
    return SetProcessAffinityMask(process, DWORD_PTR{1} << core) != 0;
}

} // namespace

std::vector<std::uint32_t> UsableCores()
{
    std::vector<std::uint32_t> usable;
    DWORD_PTR own = 0;
    DWORD_PTR of_system = 0;
    if (!GetProcessAffinityMask(GetCurrentProcess(), &own, &of_system))
        return usable;
    for (std::uint32_t core = 0; core < 8 * sizeof own; ++core) {
        if ((own >> core & 1) != 0)
            usable.push_back(core);
    }
    return usable;
}

bool PlaceSelf(std::uint32_t core)
{
    return Place(GetCurrentProcess(), core);
}

bool PlaceProcess(std::uint32_t process_id, std::uint32_t core)
{
    const Handle process(OpenProcess(PROCESS_SET_INFORMATION | PROCESS_QUERY_INFORMATION, FALSE, process_id));
    return process && Place(process.Get(), core);
}

bool ReadPrivateMemory(std::uint32_t process_id, std::uint64_t &bytes)
{
    const Handle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, process_id));
    PROCESS_MEMORY_COUNTERS_EX counters = {};
    counters.cb = sizeof counters;
    if (!process ||
        !GetProcessMemoryInfo(process.Get(), reinterpret_cast<PROCESS_MEMORY_COUNTERS *>(&counters), sizeof counters))
        return false;
    bytes = counters.PrivateUsage;
    // Wine reports 0 for other processes.
    return bytes != 0;
}

} // namespace kessil::platform
