#pragma once

#include "platform/file_time.h"

#include <cstdint>
#include <filesystem>
#include <map>

namespace kessil::test {

/// Replaces platform/file_time.h: the files are real, their times are kept here. `fake_file_time = FakeFileTime()`
/// resets it.
struct FakeFileTime
{
    std::map<std::filesystem::path, platform::FileTime> times; ///< the times written
    platform::FileTime untouched = {1560946604, 120000000};    ///< of a file whose time was never written
    std::uint32_t missing_code = 2;                            ///< for a file that doesn't exist
    std::uint32_t read_code = 0;                               ///< when not 0, every ReadFileTime fails with it
    std::uint32_t write_code = 0;                              ///< when not 0, every WriteFileTime fails with it
};

extern FakeFileTime fake_file_time;

} // namespace kessil::test
