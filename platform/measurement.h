#pragma once

#include <cstdint>
#include <vector>

namespace kessil::platform {

// What a measurement needs from the system: on which cores processes run and how much memory they use.

/// The processor cores that this process may use, by the system's numbers.
std::vector<std::uint32_t> UsableCores();

/// Binds this program to one core, together with the processes that it starts from now on. On Linux this applies to the
/// calling thread and what it starts; on Windows to the whole process.
bool PlaceSelf(std::uint32_t core);

/// Binds another process, of a single thread, to one core.
bool PlaceProcess(std::uint32_t process_id, std::uint32_t core);

/// The number of bytes of memory that are private to a process. False when the system doesn't report it.
bool ReadPrivateMemory(std::uint32_t process_id, std::uint64_t &bytes);

} // namespace kessil::platform
