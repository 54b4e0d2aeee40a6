#pragma once

#include "failure.h"

#include <filesystem>
#include <kessil/adapter_interface.h>
#include <string>

namespace image_adapter {

/// The directory that is served as an inventory. Every call throws Failure.
///
/// Paths are names with `/` between them, below the root; the empty one is the root. A name that leads out of its
/// directory is refused: an empty one, `.` and `..`, on Windows any with a separator, a colon, or a dot or space at the
/// end. Links are neither followed nor listed. (Each name is checked before it is used. That confines a parent, but not
/// somebody who renames things in the root at the same time.)
class ServedRoot
{
public:
    explicit ServedRoot(const std::string &directory);

    const std::string &Name() const { return m_name; }

    /// Where `path` is in the file system.
    std::filesystem::path Place(const std::string &path) const;

    /// The directories in `path`, ordered by their names' bytes. An item's directory contains `item_number` files, of
    /// `item_value` bytes in all, and `item_extra` directories.
    AdapterListing Directories(const std::string &path) const;

    /// As Directories, with the files as well: for a file `item_number` is 1, `item_value` its size, `item_extra` -1.
    AdapterListing Everything(const std::string &path) const;

private:
    std::string m_name;
    std::filesystem::path m_directory;
};

/// `name` below `path`, either of which may be empty.
std::string Below(const std::string &path, const std::string &name);

} // namespace image_adapter
