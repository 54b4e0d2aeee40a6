#pragma once

#include "failure.h"

#include <filesystem>
#include <kessil/adapter_interface.h>
#include <string>

namespace image_adapter {

/// The directory that is served as an inventory, and the walls around it. Every call throws Failure.
///
/// Paths are names with `/` between them, below the root; the empty one is the root. A name that leads elsewhere is
/// refused: an empty one, `.` and `..`, on Windows everything with a separator, a colon or a dot or space at the end.
/// Links are neither followed nor listed. (Each name is looked at ahead of its use. That keeps a parent in, but not
/// someone who may rename things within the root meanwhile.)
class ServedRoot
{
public:
    explicit ServedRoot(const std::string &directory);

    const std::string &Name() const { return m_name; }

    /// Where `path` is in the file system.
    std::filesystem::path Place(const std::string &path) const;

    /// The directories in `path`, ordered by their names' bytes. Numbers of an item: `item_number` files lie in the
    /// directory, of `item_value` bytes, and `item_extra` directories.
    AdapterListing Directories(const std::string &path) const;

    /// As Directories, and the files, too: of a file, `item_number` is 1, `item_value` its size and `item_extra` -1.
    AdapterListing Everything(const std::string &path) const;

private:
    std::string m_name;
    std::filesystem::path m_directory;
};

/// `name` below `path`, either of which may be empty.
std::string Below(const std::string &path, const std::string &name);

} // namespace image_adapter
