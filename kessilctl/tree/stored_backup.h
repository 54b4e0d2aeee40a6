#pragma once

#include "kessilctl/tree/manifest.h"
#include "kessilctl/tree/subtree.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kessil::kessilctl {

/// A complete backup, to be restored.
struct StoredBackup
{
    std::filesystem::path files; ///< the directory of its tree
    Manifest manifest;           ///< without files/ in front of the paths
    std::vector<Found> tree;     ///< every directory ahead of what is in it, in the order of the names

    /// Where the file with this path is stored.
    std::filesystem::path Place(const std::string &path) const;
};

/// Reads a backup's manifest and tree. Throws Failure(LocalFailed) when it can't, or the backup has no manifest.
StoredBackup ReadBackup(const std::filesystem::path &directory);

} // namespace kessil::kessilctl
