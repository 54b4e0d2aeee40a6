#pragma once

#include <cstdint>
#include <vector>

namespace kessil::platform {

// What a measurement asks of the system: where processes run and how much memory they hold.

/// The processor cores that this process may use, by the system's numbers.
std::vector<std::uint32_t> UsableCores();

/// Keeps this program on one core, and the processes that it starts from now on. On Linux that holds for the calling
/// thread and for what it starts; on Windows for the whole process.
bool PlaceSelf(std::uint32_t core);

/// Keeps another process of one thread on one core.
bool PlaceProcess(std::uint32_t process_id, std::uint32_t core);

/// The bytes of memory that belong to a process alone. False when the system doesn't tell.
bool ReadPrivateMemory(std::uint32_t process_id, std::uint64_t &bytes);

} // namespace kessil::platform
