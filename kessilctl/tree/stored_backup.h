#pragma once

#include "kessilctl/run.h"
#include "kessilctl/tree/manifest.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kessil::kessilctl {

/// A backup that is there, to be restored.
struct StoredBackup
{
    std::filesystem::path files; ///< where its files lie
    Manifest manifest;           ///< without files/ in front of the paths
    std::vector<Found> tree;     ///< every directory ahead of what is in it, in the order of the names

    std::filesystem::path Place(const std::string &path) const;
};

/// Reads a backup's manifest and tree. Throws Failure(LocalFailed) when there is no whole backup in the directory.
StoredBackup ReadBackup(const std::filesystem::path &directory);

} // namespace kessil::kessilctl
