#pragma once

#include "surroundings.h"

#include <filesystem>
#include <random>
#include <string>

namespace kessil::test {

/// A new, empty directory, removed with its content.
class TemporaryDirectory
{
public:
    TemporaryDirectory()
        : m_path(std::filesystem::temp_directory_path() /
                 ("kessil-test-" + std::to_string(OwnProcessId()) + "-" + std::to_string(std::random_device()())))
    {
        std::filesystem::create_directory(m_path);
    }
    ~TemporaryDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

    const std::filesystem::path &Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

} // namespace kessil::test
