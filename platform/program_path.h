#pragma once

#include <filesystem>

namespace kessil::platform {

/// The file that this process runs. Empty when the system doesn't report it.
std::filesystem::path ProgramPath();

} // namespace kessil::platform
