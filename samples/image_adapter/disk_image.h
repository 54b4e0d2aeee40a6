#pragma once

#include "failure.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace image_adapter {

/// A disk: a regular file, whose size is a multiple of a sector's and doesn't change. Every call throws Failure.
class DiskImage
{
public:
    static constexpr std::uint64_t sector_size = 512;

    /// `name` is used in error texts. A file that nobody may write is opened for reading only.
    DiskImage(const std::filesystem::path &file, std::string name, bool read_only);

    const std::string &Name() const { return m_name; }
    std::uint64_t Sectors() const { return m_sectors; }

    /// Both move all of `count` sectors, or fail. Sectors beyond the end are refused.
    void Read(std::uint64_t start, std::uint64_t count, void *data);
    void Write(std::uint64_t start, std::uint64_t count, const void *data);

    /// Closes the file, also when it throws.
    void Close();

private:
    void CheckRange(std::uint64_t start, std::uint64_t count) const;

    std::string m_name;
    bool m_read_only;
    std::fstream m_file;
    std::uint64_t m_sectors = 0;
};

} // namespace image_adapter
