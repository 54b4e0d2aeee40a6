#pragma once

#include "kessilctl/console/report.h"
#include "kessilctl/tree/stored_backup.h"
#include "kessilctl/tree/subtree.h"

#include <set>
#include <string>
#include <vector>

/// What is compared after a restore. Each difference is noted in the report.
namespace kessil::kessilctl {

/// Notes the manifest's files that aren't in the backup.
void CompareManifest(const StoredBackup &backup, Subtree &subtree, TreeReport &report);

/// Lists the directories that were written, and compares kind, size and time of the items whose paths are in `written`
/// with those of the backup's tree.
void CompareListings(const std::vector<Found> &tree, const std::set<std::string> &written, Subtree &subtree,
                     TreeReport &report);

} // namespace kessil::kessilctl
