#include "kessilctl/tree/comparison.h"

#include "kessilctl/tree/item_path.h"

#include <map>
#include <utility>

namespace kessil::kessilctl {
namespace {

using Listed = std::map<std::string, Entry>;

void ListInto(Listed &listed, const std::string &directory, Subtree &subtree, TreeReport &report)
{
    try {
        for (Entry &entry : subtree.List(directory))
            listed.emplace(Join(directory, entry.name), std::move(entry));
    } catch (const LibraryError &error) {
        subtree.Note(report.failures, directory, error.what());
    }
}

/// The difference between an item of the backup and that of the library, empty if there is none.
std::string DifferenceOf(const Found &found, const Listed &listed)
{
    const auto there = listed.find(found.path);
    if (there == listed.end())
        return "was written, but the library doesn't list it";
    const Entry &now = there->second;
    if (now.kind != found.entry.kind)
        return std::string("is listed as: ") + NameOf(now.kind);
    if (now.bytes != found.entry.bytes)
        return "its size is " + std::to_string(now.bytes) + ", not " + std::to_string(found.entry.bytes);
    return now.modified != found.entry.modified ? "its time is not the one that was written" : "";
}

} // namespace

void CompareManifest(const StoredBackup &backup, Subtree &subtree, TreeReport &report)
{
    std::set<std::string> present;
    for (const Found &found : backup.tree)
        present.insert(found.path);
    for (const auto &[path, digest] : backup.manifest)
        if (!present.contains(path))
            subtree.Note(report.differences, path, "missing from the backup");
}

void CompareListings(const std::vector<Found> &tree, const std::set<std::string> &written, Subtree &subtree,
                     TreeReport &report)
{
    std::set<std::string> directories = {""};
    for (const Found &found : tree)
        if (found.entry.kind == Kind::Directory && written.contains(found.path))
            directories.insert(found.path);
    Listed listed;
    for (const std::string &directory : directories)
        ListInto(listed, directory, subtree, report);
    for (const Found &found : tree) {
        const std::string difference = written.contains(found.path) ? DifferenceOf(found, listed) : "";
        if (!difference.empty())
            subtree.Note(report.differences, found.path, difference);
    }
}

} // namespace kessil::kessilctl
