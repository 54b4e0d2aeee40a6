#pragma once

#include <filesystem>

namespace kessil::test {

/// Replaces platform/program_path.h: what ProgramPath returns.
extern std::filesystem::path fake_program_path;

} // namespace kessil::test
