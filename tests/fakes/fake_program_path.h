#pragma once

#include <filesystem>

namespace kessil::test {

/// In the place of platform/program_path.h: what ProgramPath says.
extern std::filesystem::path fake_program_path;

} // namespace kessil::test
